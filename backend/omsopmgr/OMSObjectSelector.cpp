#include "backend/omsopmgr/OMSObjectSelector.h"

#include <utility>

#include "backend/omsopmgr/OMSPrecondition.h"
#include "backend/omsopmgr/OMSRecordIO.h"

namespace {
constexpr const char* kSource = "backend/omsopmgr/OMSObjectSelector";
constexpr short kPivotTableType = 16;
}  // namespace

struct OMSObjectSelector::Data {
  bool _notesTablesSpecified = false;
  bool _showNotesTables = true;
  std::uint32_t _selection = 0;
  std::uint32_t _infoSelection = 0;
  OMSSelector _ifSelector;
  OMSSelector _exceptIfSelector;
  OMSColumns _column;
  bool _destinationIsViewer = true;
  bool _viewerSpecified = false;
  std::string _numberedColumnName;
  bool _numberedColumnNameIsDefault = true;
  bool _exportImages = true;
  bool _exportImagesSpecified = false;
  bool _exportImageMaps = false;
  std::int32_t _imageFormat = 0;
  bool _imageFormatSpecified = false;
  std::string _imageRootName;
  double _chartSize = 100.0;
  std::string _chartSizeString = "100";
  bool _chartSizeSpecified = false;
  std::string _tableStyle;
  ImageType _chartFormat = kImageDefault;
  bool _chartFormatSpecified = false;
  ImageType _treeFormat = kImageDefault;
  bool _treeFormatSpecified = false;
  ImageType _modelFormat = kImageDefault;
  bool _modelFormatSpecified = false;
  bool _pivotingAllowed = true;
  bool _pivotingAllowedSpecified = false;
  std::string _javaScriptFile;
  std::string _reportTitle;
  std::vector<std::string> _urlLabels;
  std::vector<std::string> _urls;
  std::string _omsTag;
  bool _noWarning = false;
};

OMSObjectSelector::OMSObjectSelector() : _my(std::make_unique<Data>()) {}
OMSObjectSelector::OMSObjectSelector(const OMSObjectSelector& other)
    : _my(std::make_unique<Data>(*other._my)) {}

OMSObjectSelector& OMSObjectSelector::operator=(const OMSObjectSelector& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}

OMSObjectSelector::~OMSObjectSelector() = default;

void OMSObjectSelector::ShowNotesTables(bool show) {
  _my->_notesTablesSpecified = true;
  _my->_showNotesTables = show;
}
bool OMSObjectSelector::ShowNotesTables() const { return _my->_showNotesTables; }

void OMSObjectSelector::SelectType(unsigned bits) { _my->_selection |= bits; }
void OMSObjectSelector::UnSelectType(unsigned bits) { _my->_selection &= ~bits; }
unsigned OMSObjectSelector::GetSelection() const { return _my->_selection; }
void OMSObjectSelector::SetInfoSelection() { _my->_infoSelection = _my->_selection; }
unsigned OMSObjectSelector::GetInfoSelection() const { return _my->_infoSelection; }

void OMSObjectSelector::AddIfOption(const OMSSelector& selector) {
  if (!selector.EmptySubcommand()) _my->_ifSelector = selector;
}
void OMSObjectSelector::AddExceptIfOption(const OMSSelector& selector) {
  if (!selector.EmptySubcommand()) _my->_exceptIfSelector = selector;
}
const OMSSelector& OMSObjectSelector::GetIfOption() const { return _my->_ifSelector; }
const OMSSelector& OMSObjectSelector::GetExceptIfOption() const { return _my->_exceptIfSelector; }

void OMSObjectSelector::SetColumn(const OMSColumns& column) { _my->_column = column; }
const OMSColumns& OMSObjectSelector::GetColumn() const { return _my->_column; }

void OMSObjectSelector::SetDestinationIsViewer(bool isViewer) {
  _my->_destinationIsViewer = isViewer;
  _my->_viewerSpecified = true;
}
bool OMSObjectSelector::GetDestinationIsViewer() const { return _my->_destinationIsViewer; }
bool OMSObjectSelector::GetViewerSpecified() const { return _my->_viewerSpecified; }

void OMSObjectSelector::SetNumberedColumnName(const std::string& name, bool isDefault) {
  _my->_numberedColumnName = name;
  _my->_numberedColumnNameIsDefault = isDefault;
}
const std::string& OMSObjectSelector::GetNumberedColumnName() const {
  return _my->_numberedColumnName;
}
bool OMSObjectSelector::IsNumberedColumnNameDefault() const {
  return _my->_numberedColumnNameIsDefault;
}

void OMSObjectSelector::SetExportImages(bool exportImages) {
  _my->_exportImages = exportImages;
  _my->_exportImagesSpecified = true;
}
bool OMSObjectSelector::GetExportImages() const { return _my->_exportImages; }
bool OMSObjectSelector::ExportImagesSpecified() const { return _my->_exportImagesSpecified; }

void OMSObjectSelector::SetExportImageMaps(bool exportMaps) { _my->_exportImageMaps = exportMaps; }
bool OMSObjectSelector::GetExportImageMaps() const { return _my->_exportImageMaps; }

void OMSObjectSelector::SetImageFormat(short format) {
  _my->_imageFormat = format;
  _my->_imageFormatSpecified = true;
}
int OMSObjectSelector::GetImageFormat() const { return _my->_imageFormat; }
bool OMSObjectSelector::ImageFormatSpecified() const { return _my->_imageFormatSpecified; }

void OMSObjectSelector::SetImageRootName(const std::string& name) { _my->_imageRootName = name; }
const std::string& OMSObjectSelector::GetImageRootName() const { return _my->_imageRootName; }
bool OMSObjectSelector::ImageRootNameSpecified() const { return !_my->_imageRootName.empty(); }

void OMSObjectSelector::SetChartSize(double size, const std::string& text) {
  _my->_chartSize = size;
  _my->_chartSizeString = text;
  _my->_chartSizeSpecified = true;
}
double OMSObjectSelector::GetChartSize() const { return _my->_chartSize; }
const std::string& OMSObjectSelector::GetChartSizeString() const { return _my->_chartSizeString; }
bool OMSObjectSelector::ChartSizeSpecified() const { return _my->_chartSizeSpecified; }

void OMSObjectSelector::SetTableStyle(const std::string& style) { _my->_tableStyle = style; }
const std::string& OMSObjectSelector::GetTableStyle() const { return _my->_tableStyle; }

void OMSObjectSelector::SetChartFormat(ImageType format) {
  _my->_chartFormat = format;
  _my->_chartFormatSpecified = true;
}
OMSObjectSelector::ImageType OMSObjectSelector::GetChartFormat() const { return _my->_chartFormat; }
bool OMSObjectSelector::ChartFormatSpecified() const { return _my->_chartFormatSpecified; }

void OMSObjectSelector::SetTreeFormat(ImageType format) {
  _my->_treeFormat = format;
  _my->_treeFormatSpecified = true;
}
OMSObjectSelector::ImageType OMSObjectSelector::GetTreeFormat() const { return _my->_treeFormat; }
bool OMSObjectSelector::TreeFormatSpecified() const { return _my->_treeFormatSpecified; }

void OMSObjectSelector::SetModelFormat(ImageType format) {
  _my->_modelFormat = format;
  _my->_modelFormatSpecified = true;
}
OMSObjectSelector::ImageType OMSObjectSelector::GetModelFormat() const { return _my->_modelFormat; }
bool OMSObjectSelector::ModelFormatSpecified() const { return _my->_modelFormatSpecified; }

void OMSObjectSelector::SetPivotingAllowed(bool allowed) {
  _my->_pivotingAllowed = allowed;
  _my->_pivotingAllowedSpecified = true;
}
bool OMSObjectSelector::GetPivitingAllowed() const { return _my->_pivotingAllowed; }
bool OMSObjectSelector::PivotingAllowedSpecified() const { return _my->_pivotingAllowedSpecified; }

void OMSObjectSelector::SetJavaScriptFile(const std::string& file) { _my->_javaScriptFile = file; }
const std::string& OMSObjectSelector::getJavaScriptFile() const { return _my->_javaScriptFile; }
void OMSObjectSelector::SetReportTitle(const std::string& title) { _my->_reportTitle = title; }
const std::string& OMSObjectSelector::getReportTitle() const { return _my->_reportTitle; }

void OMSObjectSelector::addURL(const std::string& label, const std::string& url) {
  _my->_urlLabels.push_back(label);
  _my->_urls.push_back(url);
}
std::vector<std::string> OMSObjectSelector::getURLLabels() const { return _my->_urlLabels; }
std::vector<std::string> OMSObjectSelector::getURLs() const { return _my->_urls; }

void OMSObjectSelector::SetOMSTag(const std::string& tag) {
  OMSRequire(tag.length() > 0, kSource, "tag.length() > 0");
  _my->_omsTag = tag;
}
const std::string& OMSObjectSelector::GetOMSTag() const { return _my->_omsTag; }

void OMSObjectSelector::SetNoWarning() { _my->_noWarning = true; }
bool OMSObjectSelector::GetNoWarning() const { return _my->_noWarning; }

bool OMSObjectSelector::IsObjectSelected(short type, const std::string& command,
                                         const std::string& subtype,
                                         const std::string& label) const {
  // An explicit NOTES choice decides for notes tables whatever the types and IF say.
  if (type == kPivotTableType && subtype == "Notes" && _my->_notesTablesSpecified)
    return _my->_showNotesTables;
  const auto typeBits = static_cast<std::uint32_t>(static_cast<std::uint16_t>(type));
  if ((_my->_selection & typeBits) == 0) return false;
  if (!_my->_ifSelector.MatchesObject(type, command, subtype, label)) return false;
  // EXCEPTIF subtypes exclude objects of every kind, so it is matched as if for a table.
  const OMSSelector& except = _my->_exceptIfSelector;
  if (!except.EmptySubcommand() && except.MatchesObject(kPivotTableType, command, subtype, label))
    return false;
  return true;
}

bool OMSObjectSelector::IsInstanceSelected(int n) const {
  const OMSSelector& in = _my->_ifSelector;
  const bool selected = in.GetInstancesCount() == 0 && !in.GetHasLastInstance()
                            ? true
                            : in.GetHasInstance(n);
  const OMSSelector& out = _my->_exceptIfSelector;
  const bool excluded = out.GetInstancesCount() > 0 && out.GetHasInstance(n);
  return selected && !excluded;
}

bool OMSObjectSelector::IsLastInstanceSelected() const {
  return _my->_ifSelector.GetHasLastInstance();
}

bool OMSObjectSelector::IsLastInstanceExcluded() const {
  return _my->_exceptIfSelector.GetHasLastInstance();
}

void OMSObjectSelector::SwapBytes(bool swap) {
  _my->_ifSelector.SwapBytes(swap);
  _my->_exceptIfSelector.SwapBytes(swap);
  _my->_column.SwapBytes(swap);
}

void OMSObjectSelector::Write(OMSRecordWriter& writer) const {
  const Data& my = *_my;
  writer.Flag(my._showNotesTables);
  writer.UInt32(my._selection);
  my._ifSelector.Write(writer);
  my._exceptIfSelector.Write(writer);
  my._column.Write(writer);
  writer.Flag(my._viewerSpecified);
  writer.Flag(my._destinationIsViewer);
  writer.String(my._numberedColumnName);
  writer.Flag(my._exportImages);
  writer.Flag(my._exportImagesSpecified);
  writer.Int32(my._imageFormat);
  writer.Flag(my._imageFormatSpecified);
  writer.String(my._imageRootName);
  writer.Double(my._chartSize);
  writer.String(my._chartSizeString);
  writer.Flag(my._chartSizeSpecified);
  writer.String(my._omsTag);
  writer.Flag(my._noWarning);
}

std::ostream& operator<<(std::ostream& out, const OMSObjectSelector& selector) {
  OMSRecordWriter writer(out);
  selector.Write(writer);
  return out;
}

// The object-level numbers (selection, image format, chart size) are read as stored: only the
// subcommands and the column layout reverse their numbers.
void OMSObjectSelector::Read(OMSRecordReader& reader) {
  Data& my = *_my;
  if (!reader.Flag(my._showNotesTables, "show notes tables")) return;
  if (!reader.UInt32(my._selection, "selection")) return;
  my._ifSelector.Read(reader);
  my._exceptIfSelector.Read(reader);
  my._column.Read(reader);
  if (!reader.Flag(my._viewerSpecified, "viewer specified")) return;
  if (!reader.Flag(my._destinationIsViewer, "destination is viewer")) return;
  if (!reader.String(my._numberedColumnName, "numbered column name")) return;
  if (!reader.Flag(my._exportImages, "export images")) return;
  if (!reader.Flag(my._exportImagesSpecified, "export images specified")) return;
  if (!reader.Int32(my._imageFormat, false, "image format")) return;
  if (!reader.Flag(my._imageFormatSpecified, "image format specified")) return;
  if (!reader.String(my._imageRootName, "image root name")) return;
  if (!reader.Double(my._chartSize, "chart size")) return;
  if (!reader.String(my._chartSizeString, "chart size string")) return;
  if (!reader.Flag(my._chartSizeSpecified, "chart size specified")) return;
  if (!reader.String(my._omsTag, "OMS tag")) return;
  reader.Flag(my._noWarning, "no warning");
}

std::istream& operator>>(std::istream& in, OMSObjectSelector& selector) {
  OMSRecordReader reader(in, "OMSObjectSelector::operator>>");
  if (!reader.Ok()) return in;
  OMSObjectSelector read(selector);  // the request changes only when no exception ends the record
  read.Read(reader);
  selector = read;
  return in;
}
