#include "backend/omfactory/OmPivotFactory.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/errors/ThrowError.h"
#include "platform/outputmodel/OmCellText.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmDimensionNode.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

// Category styles and category targets used while no category is current.
constexpr const char* kErrorFile = "omerrors.err";
constexpr int kNoCurrentCategory = 103;

// Axis lists hold 16-bit indices; a position beyond any list a table can use is bad input, and
// growing to it would only exhaust memory.
constexpr int kMaxAxisPosition = 0x7FFF;

std::string Where(const char* operation, const char* condition) {
  return std::string("OmPivotFactory::") + operation + " -- " + condition;
}

}  // namespace

struct OmPivotFactory::Data {
  // Where new groups and categories of a dimension go: the dimension's root or its innermost open
  // group, and how many groups are open.
  struct Insertion {
    OmDimensionNode* _node;
    int _depth;
  };

  OmPivotTable* _table = nullptr;
  std::vector<Insertion> _dimensions;
  // Per dimension: index of the current category among the insertion node's children, -1 none.
  std::vector<int> _currentCategory;
  int _currentDimension = -1;
  int _cellDimension = -1;
  // Per dimension: leaf index of the current category, the cell coordinate.
  std::vector<int> _coordinates;
  bool _firstCell = true;

  int NSeen() const { return int(_dimensions.size()); }

  // Gives dimensions that reached the table by other means than Dimension() their entries.
  void CatchUp() {
    for (int d = NSeen(); d < _table->NDimensions(); ++d) {
      _dimensions.push_back({&_table->Dimension(d).Root(), 0});
      _currentCategory.push_back(-1);
      _coordinates.push_back(0);
    }
  }

  void CheckDimension(const char* operation, int d) const {
    if (d < 0 || d >= NSeen() || d >= _table->NDimensions()) {
      throw OMSException(Where(operation, "dimension index out of range"), d, NSeen());
    }
  }

  int CurrentDimension(const char* operation) const {
    if (_currentDimension == -1) {
      throw OMSException(Where(operation, "_my._currentDimension == -1"), -1);
    }
    CheckDimension(operation, _currentDimension);
    return _currentDimension;
  }

  // The label of the current category of the current dimension, or null; server error 103 when
  // no category is current.
  OmCellText* CurrentCategoryLabel(const char* operation) const {
    const int d = CurrentDimension(operation);
    const int c = _currentCategory[std::size_t(d)];
    if (c == -1) ThrowError::Simple(kErrorFile, kNoCurrentCategory);
    const OmDimensionNode* node = _dimensions[std::size_t(d)]._node;
    if (c < 0 || std::size_t(c) >= node->NChildren()) return nullptr;
    return node->Child(std::size_t(c))->Label();
  }

  // The current coordinates, with dimensions that have no category yet at 0.
  const std::vector<int>& ClampedCoordinates() {
    CatchUp();
    for (int& c : _coordinates) {
      if (c < 0) c = 0;
    }
    return _coordinates;
  }

  // The cell at the current coordinates; an empty cell is stored there first when there is none.
  // Null when the table refuses the cell (its cell limit).
  OmCellText* CurrentCellOrEmpty() {
    const std::vector<int>& coords = ClampedCoordinates();
    OmCellText* cell = _table->Cell(coords);
    if (!cell) {
      _table->Cell(coords, std::make_unique<OmStringCell>("", false));
      cell = _table->Cell(coords);
    }
    return cell;
  }

  // The cell that a decoration target designates (null when it has none); unknown targets fail.
  OmCellText* TargetCell(const char* operation, int target) {
    switch (target) {
      case kTableLabel:
        return _table->Label();
      case kDimensionLabel:
        return _table->Dimension(CurrentDimension(operation)).Label();
      case kGroupLabel:
        return _dimensions[std::size_t(CurrentDimension(operation))]._node->Label();
      case kCategoryLabel:
        return CurrentCategoryLabel(operation);
      case kCurrentCell:
        return CurrentCellOrEmpty();
      case kCaption:
        return nullptr;
      case kCaptionCell:
        return _table->Caption();
      default:
        throw OMSException(Where(operation, "Unknown target ID in Annotate call"), target);
    }
  }
};

OmPivotFactory::OmPivotFactory(OmPivotTable* table) : _my(std::make_unique<Data>()) {
  if (!table) throw OMSException(Where("OmPivotFactory", "table == null"));
  _my->_table = table;
  const int n = table->NDimensions();
  _my->_dimensions.reserve(std::size_t(n));
  for (int d = 0; d < n; ++d) _my->_dimensions.push_back({&table->Dimension(d).Root(), 0});
  _my->_currentCategory.assign(std::size_t(n), -1);
  _my->_coordinates = table->SizeVector();
}

OmPivotFactory::OmPivotFactory(OmPivotTable* table, const OmPivotFactory& other)
    : _my(std::make_unique<Data>(*other._my)) {
  if (!table) throw OMSException(Where("OmPivotFactory", "table == null"));
  _my->_table = table;
  const int n = _my->NSeen();
  if (table->NDimensions() < n) {
    throw OMSException(Where("OmPivotFactory", "nDim > # dimensions"), n, table->NDimensions());
  }
  for (int d = 0; d < n; ++d) {
    Data::Insertion& entry = _my->_dimensions[std::size_t(d)];
    entry._node = table->Dimension(d).Counterpart(entry._node);
    if (!entry._node) throw OMSException(Where("OmPivotFactory", "counterpart not found"), d);
  }
}

OmPivotFactory::~OmPivotFactory() = default;

OmPivotTable& OmPivotFactory::Table() const { return *_my->_table; }

PuppetVector<short> OmPivotFactory::Axis(int axis) {
  if (axis < 0 || axis > 2) throw OMSException(Where("Axis", "axis out of range"), axis);
  return _my->_table->Axis(axis);
}

int OmPivotFactory::Dimension(const OmCellText& label) {
  Data& my = *_my;
  int d = my._table->FindDimension(label);
  if (d < 0) {
    my.CatchUp();
    d = my._table->AddDimension(label);
    my.CatchUp();
    // New dimensions go first in the rows until a placement moves them.
    my._table->Rows().Insert(0, short(d));
  } else if (d >= my.NSeen()) {
    my.CatchUp();
  }
  my._currentDimension = d;
  return d;
}

void OmPivotFactory::PlaceDimension(int d, int axis, int position, bool flag1, bool flag2) {
  _my->CheckDimension("PlaceDimension", d);
  if (axis < 0 || axis > 2) throw OMSException(Where("PlaceDimension", "axis out of range"), axis, d);
  if (position < 1 || position > kMaxAxisPosition) {
    throw OMSException(Where("PlaceDimension", "position out of range"), position, d);
  }
  OmPivotTable& table = *_my->_table;
  const short index = short(d);
  for (int a = 0; a < 3; ++a) table.Axis(a).Remove(index);

  PuppetVector<short> list = table.Axis(axis);
  const std::size_t p = std::size_t(position) - 1;  // 0-based
  if (p >= list.size()) {
    list.Resize(p + 1);
    list[p] = index;
  } else if (list[p] == OmPivotTable::kAxisFill) {
    list[p] = index;
  } else {
    list.Insert(p, index);
  }
  table.Dimension(d).setDisplayFlags(flag1, flag2);
}

void OmPivotFactory::SetCellDimension(int d) {
  _my->CheckDimension("SetCellDimension", d);
  _my->_cellDimension = d;
  // Every IPC_CELL names a category of this dimension: it changes from one cell to the next.
  _my->_table->CellOrderHint(d);
}

int OmPivotFactory::CellDimension() {
  if (_my->_cellDimension == -1) {
    throw OMSException(Where("CellDimension", "_cellDimension == -1"), -1);
  }
  return _my->_cellDimension;
}

void OmPivotFactory::SelectCellDimension() { _my->_currentDimension = _my->_cellDimension; }

void OmPivotFactory::SetDimensionFlags(int d, bool flag1, bool flag2) {
  _my->CheckDimension("SetDimensionFlags", d);
  _my->_table->Dimension(d).setDisplayFlags(flag1, flag2);
}

void OmPivotFactory::Group(int d, const OmCellText& label) {
  Data& my = *_my;
  my.CheckDimension("Group", d);
  Data::Insertion& entry = my._dimensions[std::size_t(d)];
  OmDimension& dimension = my._table->Dimension(d);

  OmDimensionNode* entered = nullptr;
  int depth = 0;
  const int found = dimension.FindChild(entry._node, label, true);
  if (found < 0) {
    entered = dimension.Child(entry._node, -1, label, true);
    depth = entered->Depth();
  } else {
    entered = entry._node->Child(std::size_t(found));
    depth = entry._depth + 1;
  }
  if (!entered->IsGroup()) throw OMSException(Where("Group", "parent is not group"), 0, 0);

  entry = {entered, depth};
  my._coordinates[std::size_t(d)] = -1;
  my._currentCategory[std::size_t(d)] = -1;
  my._currentDimension = d;
}

void OmPivotFactory::EndGroup(int d) {
  Data& my = *_my;
  my.CheckDimension("EndGroup", d);
  my._currentDimension = d;
  Data::Insertion& entry = my._dimensions[std::size_t(d)];
  if (entry._depth <= 0 || !entry._node->Parent()) {
    throw OMSException(Where("EndGroup", "level <= 0"), 0, d);
  }
  entry._node = entry._node->Parent();
  --entry._depth;
  my._currentCategory[std::size_t(d)] = -1;
}

void OmPivotFactory::SetCategory(int d, const OmCellText& label) {
  Data& my = *_my;
  my.CheckDimension("SetCategory", d);
  OmDimensionNode* parent = my._dimensions[std::size_t(d)]._node;
  OmDimension& dimension = my._table->Dimension(d);

  int i = dimension.FindChild(parent, label, false);
  OmDimensionNode* category = nullptr;
  if (i < 0) {
    // Appended with the next leaf index, so a new category's coordinate is the former count.
    i = int(parent->NChildren());
    category = dimension.Child(parent, my._table->Size(d), label, false);
  } else {
    category = parent->Child(std::size_t(i));
  }
  const int leaf = category->LeafIndex();
  if (leaf == -1) {
    throw OMSException(Where("SetCategory", "_my->_dimensions.size() != 0"), -1, 0);
  }
  my._currentCategory[std::size_t(d)] = i;
  my._coordinates[std::size_t(d)] = leaf;
}

bool OmPivotFactory::SetExistingCategory(int d, std::string_view text) {
  Data& my = *_my;
  my.CheckDimension("SetCategory", d);
  OmDimensionNode* parent = my._dimensions[std::size_t(d)]._node;
  // Cells name the categories mostly in turn: the one after the current is tried first.
  const int i = parent->FindCategoryText(text, my._currentCategory[std::size_t(d)] + 1);
  if (i < 0) return false;
  const int leaf = parent->Child(std::size_t(i))->LeafIndex();
  if (leaf == -1) {
    throw OMSException(Where("SetCategory", "_my->_dimensions.size() != 0"), -1, 0);
  }
  my._currentCategory[std::size_t(d)] = i;
  my._coordinates[std::size_t(d)] = leaf;
  return true;
}

void OmPivotFactory::Cell(const OmCellText& value) {
  _my->_table->Cell(_my->ClampedCoordinates(), value);
  _my->_firstCell = false;
}

void OmPivotFactory::Cell(std::unique_ptr<OmCellText> value) {
  if (!value) throw OMSException(Where("Cell", "value == null"));
  _my->_table->Cell(_my->ClampedCoordinates(), std::move(value));
  _my->_firstCell = false;
}

void OmPivotFactory::Number(double value, std::uint32_t format, icuTracker* tracker) {
  _my->_table->Number(_my->ClampedCoordinates(), value, format, tracker);
  _my->_firstCell = false;
}

bool OmPivotFactory::AllGroupsClosed() const {
  const Data& my = *_my;
  const int n = my.NSeen();
  if (my._table->NDimensions() < n) {
    throw OMSException(Where("AllGroupsClosed", "nDim > # dimensions"), n, my._table->NDimensions());
  }
  for (int d = 0; d < n; ++d) {
    if (my._dimensions[std::size_t(d)]._node != &my._table->Dimension(d).Root()) return false;
  }
  return true;
}

void OmPivotFactory::MarkSortDimension(int v) {
  const int d = _my->CurrentDimension("MarkSortDimension");
  _my->_table->Dimension(d).Root().setSortMark(v);
}

void OmPivotFactory::MarkSortGroup(int v) {
  const int d = _my->CurrentDimension("MarkSortGroup");
  _my->_dimensions[std::size_t(d)]._node->setSortMark(v);
}

void OmPivotFactory::MarkUngroup() {
  const int d = _my->CurrentDimension("MarkUngroup");
  _my->_dimensions[std::size_t(d)]._node->setUngroupMark(true);
}

void OmPivotFactory::Bold() {
  OmCellText* target = _my->CurrentCategoryLabel("Bold");
  if (!target) throw OMSException(Where("Bold", "target not found"), 0, 0);
  target->setTextBold(true);
}

void OmPivotFactory::TextColor(const std::string& colour) {
  OmCellText* target = _my->CurrentCategoryLabel("TextColor");
  if (!target) throw OMSException(Where("TextColor", "target not found"), 0, 0);
  target->setTextColor(colour);
}

void OmPivotFactory::BackgroundColor(const std::string& colour) {
  OmCellText* target = _my->CurrentCategoryLabel("BackgroundColor");
  if (!target) throw OMSException(Where("BackgroundColor", "target not found"), 0, 0);
  target->setBackgroundColor(colour);
}

void OmPivotFactory::HideCategory() {
  OmCellText* target = _my->CurrentCategoryLabel("HideCategory");
  // Reported under the colour operation's name: hiding shares its report.
  if (!target) throw OMSException(Where("BackgroundColor", "target not found"), 0, 0);
  target->setVisible(false);
}

void OmPivotFactory::addMarker(const OmCellText& marker) {
  OmCellText* target = _my->CurrentCellOrEmpty();
  if (!target) throw OMSException(Where("addMarker", "target not found"), 0, 0);
  target->addMarker(marker.Text());
  _my->_table->setHasMarkers();
}

void OmPivotFactory::addMiscProperty(int target, const std::string& text) {
  OmCellText* cell = _my->TargetCell("addMiscProperty", target);
  if (!cell) throw OMSException(Where("addMiscProperty", "target not found"), target);
  cell->addMiscProperty(text);
}

void OmPivotFactory::Annotate(int target, const OmFootnote& footnote) {
  Data& my = *_my;
  if (target == kCaption) {
    my._table->Caption(footnote.Text());
    return;
  }
  OmCellText* cell = my.TargetCell("Annotate", target);
  if (!cell) throw OMSException(Where("Annotate", "target not found"), target);
  const int index = my._table->Footnote(footnote, false);
  cell->Footnote(std::int16_t(index));
  my._firstCell = false;
}

void OmPivotFactory::EndTable() { _my->_table->EndTable(); }

bool OmPivotFactory::IsFastTable() const { return _my->_table->fastTable(); }

bool OmPivotFactory::FirstCell() const { return _my->_firstCell; }

