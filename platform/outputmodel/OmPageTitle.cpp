#include "platform/outputmodel/OmPageTitle.h"

#include "platform/outputmodel/OmStringCell.h"

OmPageTitle::OmPageTitle(std::string codePage)
    : OmOutputPart(std::make_unique<OmStringCell>("Page Title")), _codePage(std::move(codePage)) {}
