// A footnote of a table or heading: a copy of its text cell, an optional marker cell (shown in
// place of the automatic a, b, c...), and how many labels or cells refer to it.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/outputmodel/OmCellText.h"

class OmFootnote {
public:
  // Both cells are copied.
  explicit OmFootnote(const OmCellText& text, const OmCellText* marker = nullptr);
  OmFootnote(std::unique_ptr<OmCellText> text, std::unique_ptr<OmCellText> marker);
  OmFootnote(const OmFootnote& other);
  OmFootnote& operator=(const OmFootnote& other);
  OmFootnote(OmFootnote&&) noexcept;
  OmFootnote& operator=(OmFootnote&&) noexcept;
  ~OmFootnote();

  OmCellText& Text() const { return *_text; }
  OmCellText* Marker() const { return _marker.get(); }
  void setMarker(std::unique_ptr<OmCellText> marker) { _marker = std::move(marker); }

  int RefCount() const { return _refCount; }
  void AddReference() { ++_refCount; }
  void setRefCount(int count) { _refCount = count; }

  // Same text and same marker (both absent, or equal cells); reference counts do not count.
  bool operator==(const OmFootnote& other) const;
  std::size_t Hash() const;

private:
  std::unique_ptr<OmCellText> _text;
  std::unique_ptr<OmCellText> _marker;
  int _refCount = 0;
};
