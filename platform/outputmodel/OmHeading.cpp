#include "platform/outputmodel/OmHeading.h"

OmHeading::OmHeading(const OmCellText& label) : OmOutputPart(&label) {}

OmHeading::OmHeading(std::unique_ptr<OmCellText> label) : OmOutputPart(std::move(label)) {}
