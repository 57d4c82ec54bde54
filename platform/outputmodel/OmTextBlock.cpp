#include "platform/outputmodel/OmTextBlock.h"

OmTextBlock::OmTextBlock(const OmCellText& label, std::string codePage, bool log)
    : OmOutputPart(&label), _codePage(std::move(codePage)), _log(log) {}
