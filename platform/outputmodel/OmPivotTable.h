// A pivot table: dimensions of categories placed on rows, columns and layers, sparse cells
// addressed by one leaf index per dimension, footnotes, titles and display properties. Built by
// the pivot builder, then pooled, translated, sorted and rendered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "backend/tables/PuppetVector.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmOutputPart.h"

class BackendSettings;
class OmNumber;
class icuTracker;

class OmPivotTable : public OmOutputPart {
public:
  using Coordinates = std::vector<int>;
  // Axis lists use this for positions that hold no dimension.
  static constexpr short kAxisFill = -1;

  // Walks the stored cells in storage order (not table order). Storing or removing a cell
  // invalidates iterators.
  class Iterator {
  public:
    // The cell here; null at the end. A plain number kept without an object is made into one
    // here, and stays one: callers that only read should prefer Read.
    OmCellText* Cell() const;
    // The cell here for reading: the stored object, or scratch holding a plain number's value,
    // format and tracker (valid until scratch is used again). Null at the end.
    const OmCellText* Read(OmNumber& scratch) const;
    // The cell object here, or null for a plain number kept without one (and at the end): for
    // passes that change only texts and decorated cells.
    OmCellText* Object() const;
    Coordinates Coord() const;
    bool AtEnd() const;
    Iterator& operator++();
    friend bool operator==(const Iterator& a, const Iterator& b) {
      return a._table == b._table && a._slot == b._slot;
    }

  private:
    friend class OmPivotTable;
    Iterator(const OmPivotTable* table, std::size_t slot) : _table(table), _slot(slot) {}
    const OmPivotTable* _table;
    std::size_t _slot;
  };

  // label and templateName are copied; split marks a table that carries split dimensions.
  OmPivotTable(const OmCellText& label, const OmCellText& templateName, bool split = false);
  ~OmPivotTable() override;

  void Accept(Visitor& visitor) override { visitor.Visit(*this); }
  const char* KindName() const override { return "Table"; }

  // Identity.
  const OmCellText& TemplateName() const;
  std::int64_t TableId() const;
  void TableId(std::int64_t id);
  bool HasSplits() const;
  // Template name "Notes" / "Warnings", compared without regard to ASCII case.
  bool IsNotes() const;
  bool IsWarnings() const;

  // Texts; each setter keeps a copy. Getters return null when unset.
  void SetTableTitle(const OmCellText& title);
  OmCellText* TableTitle() const;
  OmCellText* GetTableTitle() const { return TableTitle(); }
  void Caption(const OmCellText& caption);
  OmCellText* Caption() const;
  void CornerText(const OmCellText& corner);
  OmCellText* CornerText() const;

  // Dimensions.
  // Appends a dimension labelled with a copy of label; returns its index. It is placed on no
  // axis (the builder puts it in the rows).
  int AddDimension(const OmCellText& label);
  // The index of the first dimension whose label equals label, or -1.
  int FindDimension(const OmCellText& label) const;
  OmDimension& Dimension(int d);
  const OmDimension& Dimension(int d) const;
  int NDimensions() const;
  // The category count (coordinate range) of dimension d, and of every dimension.
  int Size(int d) const;
  std::vector<int> SizeVector() const;
  // Replaces this table's dimensions by copies of other's; cells are removed.
  void CopyDimensions(const OmPivotTable& other);

  // Axis lists of dimension indices, with fill value kAxisFill. 0 rows, 1 columns, 2 layers.
  PuppetVector<short> Rows();
  PuppetVector<short> Columns();
  PuppetVector<short> Layers();
  PuppetVector<short> Axis(int axis);
  const std::vector<short>& Rows() const;
  const std::vector<short>& Columns() const;
  const std::vector<short>& Layers() const;

  // Cells, one coordinate per dimension (a coordinate is a leaf index, >= 0).
  // Plain numbers (no decorations) stored through Number are kept as value, format and tracker
  // beside their key, without an object; the first call that wants a pointer to one makes its
  // OmNumber, which the table then keeps.
  // The cell there, or null. Many look-ups may build an index inside the table, so even reading
  // a table is for one thread at a time.
  OmCellText* Cell(const Coordinates& coords) const;
  // The cell there for reading, without making an object: the stored one, or scratch holding a
  // plain number (valid until scratch is used again). Null when there is none.
  const OmCellText* ReadCell(const Coordinates& coords, OmNumber& scratch) const;
  // Whether a cell is stored there.
  bool HasCell(const Coordinates& coords) const;
  // Stores the plain number value of format, made with tracker, replacing what is there.
  void Number(const Coordinates& coords, double value, std::uint32_t format, icuTracker* tracker);
  // Stores a copy of cell, replacing what is there.
  void Cell(const Coordinates& coords, const OmCellText& cell);
  // Stores cell itself, replacing what is there; null removes the cell there.
  void Cell(const Coordinates& coords, std::unique_ptr<OmCellText> cell);
  // Removes the cell there and hands it over (null if none).
  std::unique_ptr<OmCellText> TakeCell(const Coordinates& coords);
  // Destroys the cells whose coordinate on dimension d is one of leaves, in one pass over the
  // cells (removing them one by one costs a look-up each).
  void DropCells(int d, const std::vector<int>& leaves);
  std::size_t NCells() const;
  // Bytes the cell store occupies (keys, plain numbers, pointers and any index; not the cell
  // objects).
  std::size_t CellIndexBytes() const;
  // Tells the cell store which dimension changes fastest between cells stored one after the
  // other (a builder's cell dimension). Cells stored in coordinate order (the other dimensions
  // in their order, this one fastest) are appended without any index; others, and runs of them
  // along d, stay cheap to find. Only speed depends on it; it is heeded while the table is empty.
  void CellOrderHint(int d);
  // One stored cell as ReadCells hands it over.
  struct CellView {
    const int* coords;         // one per dimension
    const OmCellText* object;  // the cell object; null for a plain number kept without one
    double number;             // that plain number (when object is null)
  };
  // Calls visit(const CellView&) for every stored cell, in storage order, making no cell
  // objects: a pass that reads every cell (bootstrap pooling gathers its samples so) costs a
  // key decoding and a call per cell, not an iterator's calls into the table. visit must not
  // change the table.
  template <typename Visit>
  void ReadCells(Visit&& visit) const {
    using F = std::remove_reference_t<Visit>;
    ReadCells([](void* f, const CellView& cell) { (*static_cast<F*>(f))(cell); },
              const_cast<void*>(static_cast<const void*>(&visit)));
  }
  void ReadCells(void (*visit)(void* context, const CellView& cell), void* context) const;
  // ReadCells, then DropCells(d, leaves), in one pass over the store: a bootstrapped table sheds
  // nearly every cell as its samples are gathered, and a second pass would read them all again.
  // visit sees each cell before it goes.
  template <typename Visit>
  void ReadAndDropCells(int d, const std::vector<int>& leaves, Visit&& visit) {
    using F = std::remove_reference_t<Visit>;
    ReadAndDropCells(d, leaves, [](void* f, const CellView& cell) { (*static_cast<F*>(f))(cell); },
                     static_cast<void*>(&visit));
  }
  void ReadAndDropCells(int d, const std::vector<int>& leaves,
                        void (*visit)(void* context, const CellView& cell), void* context);
  // The cells in the order they were first stored. Looking cells up never invalidates an
  // iterator; storing or removing one may.
  Iterator FirstCell() const;
  Iterator EndCell() const;
  // At most maxCells cells are stored (0: no limit). Storing a new cell beyond the limit drops it
  // and scratches the table.
  void MaxCells(std::uint64_t maxCells);
  std::uint64_t MaxCells() const;
  void Scratch(bool scratched);
  bool IsScratched() const;
  // Marks the table complete; later cells are still accepted (pooling adds some).
  void EndTable();
  bool IsEnded() const;

  // Footnotes.
  // Adds a footnote and returns its index; an equal footnote already present is reused unless
  // alwaysAdd. Reference counts are the caller's to raise (FootnoteAt(i).AddReference()).
  int Footnote(const OmFootnote& footnote, bool alwaysAdd = false);
  const std::vector<OmFootnote>& Footnotes() const;
  OmFootnote& FootnoteAt(int index);
  // Set when references to footnotes were removed from cells.
  void RemovedFootnotes(bool removed);
  bool RemovedFootnotes() const;
  void setHasMarkers();
  bool HasMarkers() const;

  // Display properties.
  void setStartColor(int colour);
  void setEndColor(int colour);
  int StartColor() const;
  int EndColor() const;
  void RotateRowLabels(bool rotate);
  bool RotateRowLabels() const;
  void RotateColumnLabels(bool rotate);
  bool RotateColumnLabels() const;
  void OptionNumber(int option);
  int OptionNumber() const;
  void MinColumnWidth(int width);
  int MinColumnWidth() const;
  void MaxColumnWidth(int width);
  int MaxColumnWidth() const;
  void setFastTable(bool fast);
  bool fastTable() const;
  void setLabelsOnly(bool labelsOnly);
  bool LabelsOnly() const;
  void setImputed(bool imputed);
  bool IsImputed() const;
  void setBackendOwns(bool owns);
  bool BackendOwns() const;
  // Output language code of the table (0 none/English, 1 de, 2 es ...).
  void setLang(int lang);
  int Lang() const;
  void setVariableMode(unsigned mode);
  unsigned VariableMode() const;
  void setValueMode(unsigned mode);
  unsigned ValueMode() const;
  void TableLocale(const std::string& locale);
  const std::string& TableLocale() const;
  // Table-level properties ("mergedSimple").
  void addMiscProperty(const std::string& property);
  const std::vector<std::string>& MiscProperties() const;

  // The procedure's settings, shared so the table may outlive the procedure that made it.
  void setBackendSettings(std::shared_ptr<const BackendSettings> settings);
  const std::shared_ptr<const BackendSettings>& getBackendSettings() const;
  // The tracker bound to cells made for this table (borrowed).
  void setICUTracker(icuTracker* tracker);
  icuTracker* getICUTracker() const;

private:
  friend class OmDimension;
  friend class Iterator;

  struct Data;
  std::unique_ptr<Data> _my;
};
