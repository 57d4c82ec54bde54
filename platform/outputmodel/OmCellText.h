// The base of every text of the output model: table cells, labels, titles, footnote texts. A cell
// text renders to display text, compares with other cells, clones itself, and carries the
// decorations that table messages attach: footnote references, markers, properties and styles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

class icuTracker;
class OmMemoryRegion;
class OmNumber;
class OmStringCell;
class OmStringCellUTF8;
class OmVariable;
class OmNumDataValue;
class OmStringDataValue;
class OmComposite;

class OmCellText {
public:
  // Kind codes (Kind()); other parts rely on 5 for composites.
  enum : int {
    kNumber = 1,
    kString = 2,
    kStringUTF8 = 3,
    kVariable = 4,
    kComposite = 5,
    kNumDataValue = 6,
    kStringDataValue = 7,
  };

  // Cell-level work (mode fixing, translation) visits cells by kind. Every visit does nothing
  // unless overridden.
  class Visitor {
  public:
    virtual ~Visitor() = default;
    virtual void Visit(OmNumber&) {}
    virtual void Visit(OmStringCell&) {}
    virtual void Visit(OmStringCellUTF8&) {}
    virtual void Visit(OmVariable&) {}
    virtual void Visit(OmNumDataValue&) {}
    virtual void Visit(OmStringDataValue&) {}
    virtual void Visit(OmComposite&) {}
  };

  OmCellText();
  OmCellText(const OmCellText& other);
  OmCellText& operator=(const OmCellText& other);
  virtual ~OmCellText();

  virtual void Accept(Visitor& visitor) = 0;
  virtual int Kind() const = 0;
  // The display text: string cells their shown text, numbers and values formatted by their
  // format and display mode, composites their current text (the pattern until Substitute).
  virtual std::string Text() const = 0;
  // A deep copy, decorations included, made in region (null: OmMemoryRegion::DefaultHeap()).
  virtual std::unique_ptr<OmCellText> Clone(OmMemoryRegion* region = nullptr) const = 0;
  virtual void setICUTracker(icuTracker* tracker) { _tracker = tracker; }
  icuTracker* getICUTracker() const { return _tracker; }

  // The dynamic type; two cells are of one type when these are equal.
  const std::type_info& TypeIdentity() const { return typeid(*this); }
  // Orders cells: 0 when equal in content (decorations and translatable flags do not count),
  // otherwise negative or positive. Cells of different kinds order by kind code.
  virtual std::int16_t Compare(const OmCellText& other) const = 0;
  // Same type and Compare gives 0.
  bool Equals(const OmCellText& other) const;
  // A hash consistent with Compare: equal cells hash equal.
  virtual std::size_t Hash() const = 0;

  // Footnote references: indices into the owning table's (or heading's) footnote list.
  const std::vector<std::int16_t>& Footnotes() const;
  void Footnote(std::int16_t index);         // adds a reference unless already present
  void RemoveFootnote(std::int16_t index);   // removes the reference to index, if any
  // Markers (texts shown beside the cell, e.g. significance stars) and free-form properties.
  const std::vector<std::string>& Markers() const;
  void addMarker(const std::string& marker);
  const std::vector<std::string>& MiscProperties() const;
  void addMiscProperty(const std::string& property);

  // Styles. Colours are texts such as "#FF0000"; empty means the table's default.
  bool TextBold() const;
  void setTextBold(bool bold);
  const std::string& TextColor() const;
  void setTextColor(const std::string& colour);
  const std::string& BackgroundColor() const;
  void setBackgroundColor(const std::string& colour);
  bool Visible() const;
  void setVisible(bool visible);

  // True when the cell carries any footnote, marker, property or style.
  bool HasDecorations() const { return _decor != nullptr; }

protected:
  // Helpers for the kinds: counts a clone in its region; combines hashes; turns a three-way
  // comparison result into -1, 0 or 1.
  static void CountClone(OmMemoryRegion* region);
  static std::size_t HashMix(std::size_t seed, std::size_t value) {
    return seed ^ (value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2));
  }
  static std::int16_t Sign(int c) { return std::int16_t((c > 0) - (c < 0)); }
  // Kinds differ: order by kind code. Same kind: 0, and the caller compares content.
  std::int16_t CompareKind(const OmCellText& other) const { return Sign(Kind() - other.Kind()); }

private:
  struct Decorations;
  Decorations& Decor();

  icuTracker* _tracker = nullptr;
  // Most cells carry no decorations; they cost one null pointer then.
  std::unique_ptr<Decorations> _decor;
};
