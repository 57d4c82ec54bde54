// A text built from a pattern such as "Bootstrap for ^1" and argument cells: "^n" stands for the
// n-th argument. An argument may be a repeat list, a run of cells shown joined by ", " (the
// variables of a list, for instance). Pattern and arguments are translated separately and the
// text is rebuilt with Substitute.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/outputmodel/OmCellText.h"

class OmComposite : public OmCellText {
public:
  // A node of the composite's tree. The root's cell is the pattern and its parts are the
  // arguments; a repeat list is a part without a cell whose parts are the list's members.
  class Part {
  public:
    Part() = default;
    explicit Part(std::unique_ptr<OmCellText> cell) : _cell(std::move(cell)) {}
    Part(const Part& other);
    Part& operator=(const Part& other);

    OmCellText* Cell() const { return _cell.get(); }
    void setCell(std::unique_ptr<OmCellText> cell) { _cell = std::move(cell); }
    bool IsRepeatList() const { return _cell == nullptr; }
    const std::vector<std::unique_ptr<Part>>& Parts() const { return _parts; }
    std::vector<std::unique_ptr<Part>>& Parts() { return _parts; }

  private:
    std::unique_ptr<OmCellText> _cell;
    std::vector<std::unique_ptr<Part>> _parts;
  };

  // The pattern is copied.
  explicit OmComposite(const OmCellText& pattern);
  explicit OmComposite(std::unique_ptr<OmCellText> pattern);
  // A pattern given as text becomes a string cell, translatable or not.
  OmComposite(const std::string& pattern, bool translatable);
  OmComposite(const OmComposite& other);
  OmComposite& operator=(const OmComposite& other);
  ~OmComposite() override;

  // Adds a copy of cell as the next argument (of the innermost open repeat list, if any).
  void Add(const OmCellText& cell);
  void Add(std::unique_ptr<OmCellText> cell);
  // Opens a repeat list as the next argument; later Adds go into it until EndRepeatList.
  void BeginRepeatList();
  // Closes the innermost open repeat list; fails when none is open.
  void EndRepeatList();
  // True while a repeat list is open.
  bool InRepeatList() const;

  Part& Root();
  const Part& Root() const;
  OmCellText& Pattern() const;
  // Top-level arguments: Argument(i) is the cell of argument i + 1, null for a repeat list.
  std::size_t NArguments() const;
  OmCellText* Argument(std::size_t i) const;

  // Rebuilds the text from the pattern's text and the arguments' texts. node names the part
  // whose sub-tree is substituted (null: the whole composite); keepUnused leaves "^n" in place
  // when argument n is missing instead of dropping it.
  void Substitute(const Part* node = nullptr, bool keepUnused = false);
  // The text Substitute would give, without changing the composite (nested composites are
  // substituted in the result only).
  std::string SubstitutedText(const Part* node = nullptr, bool keepUnused = false) const;

  void Accept(Visitor& visitor) override;
  int Kind() const override { return kComposite; }
  // The pattern's text until Substitute runs, then the substituted text.
  std::string Text() const override { return _text; }
  std::unique_ptr<OmCellText> Clone(OmMemoryRegion* region = nullptr) const override;
  // Compares patterns, then argument counts, then arguments in order.
  std::int16_t Compare(const OmCellText& other) const override;
  std::size_t Hash() const override;

  // The pattern text with "^n" replaced by args[n-1]; "^n" without an argument is kept when
  // keepUnused, dropped otherwise. "^^" stands for a single "^", and "\%" for "%" (patterns of
  // interval labels arrive with their percent sign escaped; the escape is not for the reader).
  static std::string SubstituteText(const std::string& pattern,
                                    const std::vector<std::string>& args, bool keepUnused);

private:
  // The part that Add appends to: the innermost open repeat list, or the root. An open list is
  // always the last part of the one above it, so depth alone finds it (and survives copying).
  Part& Current();

  Part _root;
  int _openDepth = 0;
  std::string _text;
};
