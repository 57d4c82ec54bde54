// Builds one pivot table message by message: turns dimension, group and category labels into the
// table's category trees, stores cells at the current categories and decorates whatever the
// current position designates. Made by OmProcedureFactory::CreateTable, driven by the session.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "backend/tables/PuppetVector.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmCellText;
class OmFootnote;
class OmPivotTable;
class icuTracker;

class OmPivotFactory : public OmBuilderSlot {
public:
  // What addMiscProperty and Annotate decorate.
  enum Target : int {
    kTableLabel = 1,      // the table's label cell
    kDimensionLabel = 2,  // the current dimension's label
    kGroupLabel = 3,      // the innermost open group of the current dimension (else its label)
    kCategoryLabel = 4,   // the current category of the current dimension
    kCurrentCell = 5,     // the cell at the current coordinates (made empty if absent)
    kCaption = 6,         // the caption as a whole (Annotate only: replaces it)
    kCaptionCell = 7,     // the caption cell
  };

  // Starts from the table's existing dimensions with nothing open; table is borrowed and must
  // outlive the builder.
  explicit OmPivotFactory(OmPivotTable* table);
  // Carries other's position over to table, which must have the same dimensions as other's table
  // (a split table made from the procedure's splits table).
  OmPivotFactory(OmPivotTable* table, const OmPivotFactory& other);
  OmPivotFactory(const OmPivotFactory&) = delete;
  OmPivotFactory& operator=(const OmPivotFactory&) = delete;
  ~OmPivotFactory() override;

  OmPivotTable& Table() const;
  // 0 rows, 1 columns, 2 layers: the table's own list.
  PuppetVector<short> Axis(int axis);

  // The index of the dimension labelled label, added first in the rows when absent; it becomes
  // the current dimension.
  int Dimension(const OmCellText& label);
  // Moves dimension d to the 1-based position on axis (0 rows, 1 columns, 2 layers) and sets its
  // display flags.
  void PlaceDimension(int d, int axis, int position, bool flag1, bool flag2);
  void SetCellDimension(int d);
  // The dimension of the cells' statistics; fails when none was declared.
  int CellDimension();
  // The cell dimension becomes the current dimension.
  void SelectCellDimension();
  // The dimension's two display flags: hide its label, hide its category labels.
  void SetDimensionFlags(int d, bool flag1, bool flag2);

  // Enters the group labelled label below the insertion point of d, adding it when absent.
  void Group(int d, const OmCellText& label);
  // Leaves the innermost open group of d; d becomes the current dimension.
  void EndGroup(int d);
  // Makes the category labelled label (added when absent) current in d; sets d's coordinate.
  void SetCategory(int d, const OmCellText& label);
  // The same for a plain text label, when d already has that category: false (nothing changed)
  // when it has not, and the caller makes the label cell for SetCategory.
  bool SetExistingCategory(int d, std::string_view text);
  // Stores the cell at the current coordinates (a copy, or the cell itself).
  void Cell(const OmCellText& value);
  void Cell(std::unique_ptr<OmCellText> value);
  // The same for a plain number, which the table keeps without a cell object.
  void Number(double value, std::uint32_t format, icuTracker* tracker);
  // True when no dimension has an open group.
  bool AllGroupsClosed() const;

  // Sort marks (0 ascending, 1 descending) for the sorter, on the current dimension or on its
  // insertion node; the ungroup mark on that node.
  void MarkSortDimension(int v);
  void MarkSortGroup(int v);
  void MarkUngroup();

  // Styles of the current category's label.
  void Bold();
  void TextColor(const std::string& colour);
  void BackgroundColor(const std::string& colour);
  void HideCategory();

  // Adds marker's text to the cell at the current coordinates (made empty if absent).
  void addMarker(const OmCellText& marker);
  void addMiscProperty(int target, const std::string& text);
  void Annotate(int target, const OmFootnote& footnote);

  void EndTable();
  bool IsFastTable() const;
  // True until the first cell is stored or the first footnote attached.
  bool FirstCell() const;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
