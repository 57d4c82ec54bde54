#include "platform/outputmodel/OmTextRenderer.h"

OmTextRenderer::OmTextRenderer() = default;
OmTextRenderer::OmTextRenderer(Options options) : _options(options) {}
std::string OmTextRenderer::Render(OmOutputTree&) const { throw OMSException("not yet"); }
std::string OmTextRenderer::RenderPart(const OmOutputPart&, int) const { throw OMSException("not yet"); }
std::string OmTextRenderer::RenderTable(const OmPivotTable&) const { throw OMSException("not yet"); }
std::string OmTextRenderer::FootnoteMarker(const OmPivotTable&, int) { throw OMSException("not yet"); }
