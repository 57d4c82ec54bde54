#include "platform/outputmodel/OmOutputPart.h"

OmOutputPart::OmOutputPart(const OmCellText* label) : _label(label ? label->Clone() : nullptr) {}

OmOutputPart::OmOutputPart(std::unique_ptr<OmCellText> label) : _label(std::move(label)) {}

// The builder goes first: it may still refer to the part while it is destroyed.
OmOutputPart::~OmOutputPart() { _builder.reset(); }

std::string OmOutputPart::LabelText() const { return _label ? _label->Text() : std::string(); }
