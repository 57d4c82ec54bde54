// The column layout of an OMS request: how a selected table is laid out for a destination
// that wants flat data, either by the names of the dimensions that go into the columns or by a
// sequence of positional tokens ("R1", "C2", "LALL"). The host's parser fills it, its writers read
// it; OMSObjectSelector stores it and carries it in its binary record.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

class OMSRecordReader;
class OMSRecordWriter;

// One positional token: an axis letter (R, C or L, any case) followed by a dimension number
// counted from 1 or by "ALL". A token that does not parse is kept, but IsValidToken() is false.
class OmParsedColumn {
public:
  enum COLUMNAXIS : std::int32_t { kNOAXIS = 0, kROWS = 1, kCOLUMNS = 2, kLAYERS = 3 };
  static constexpr int kAllNumber = -100;

  explicit OmParsedColumn(const std::string& token);
  OmParsedColumn(const OmParsedColumn& other);
  OmParsedColumn& operator=(const OmParsedColumn& other);
  ~OmParsedColumn();

  COLUMNAXIS GetAxis() const;
  // The dimension's position on its axis from 1; -100 for "ALL"; -1 when the token has none.
  int GetNumber() const;
  bool IsAll() const;
  const std::string& GetColumnToken() const;
  // An axis, and a number above 0 or "ALL".
  bool IsValidToken() const;

  // Same axis, number and all flag; the token text is not compared ("C010" equals "C10").
  bool operator==(const OmParsedColumn& other) const;

  // The record that is read next came from a machine of the other byte order.
  void SwapBytes(bool swap);

  friend std::ostream& operator<<(std::ostream& out, const OmParsedColumn& column);
  friend std::istream& operator>>(std::istream& in, OmParsedColumn& column);

private:
  friend class OMSColumns;
  void Write(OMSRecordWriter& writer) const;
  void Read(OMSRecordReader& reader);

  struct Data;
  std::unique_ptr<Data> _my;
};

class OMSColumns {
public:
  enum COLUMNSFORM : std::int32_t { kNONE = 0, kDIMNAMES = 1, kSEQUENCE = 2 };

  OMSColumns();
  OMSColumns(const OMSColumns& other);
  OMSColumns& operator=(const OMSColumns& other);
  ~OMSColumns();

  void SetColumnsForm(COLUMNSFORM form);
  COLUMNSFORM GetColumnsForm() const;

  // Appends a positional token and makes the form kSEQUENCE. Preconditions, in this order: no
  // equal column yet, the form is not kDIMNAMES, the token is valid.
  void AddColumn(const OmParsedColumn& pc);
  // Appends a dimension name and makes the form kDIMNAMES. Preconditions: no name equal to it
  // without regard to case yet, the form is not kSEQUENCE.
  void AddColumn(const std::string& str);

  // Precondition: the form is not kDIMNAMES.
  bool HasColumn(const OmParsedColumn& pc) const;
  // Without regard to case. Precondition: the form is not kSEQUENCE.
  bool HasColumn(const std::string& str) const;
  // Whether a token names that axis. Precondition: the form is not kDIMNAMES.
  bool HasAxis(OmParsedColumn::COLUMNAXIS axis) const;
  // Whether a token names all dimensions of that axis.
  bool HasAxisAll(OmParsedColumn::COLUMNAXIS axis) const;

  // Precondition: the form is kDIMNAMES.
  const std::vector<std::string>& GetDimNames() const;
  // Precondition: the form is kSEQUENCE.
  const std::vector<OmParsedColumn>& GetSequences() const;

  // Equal forms and, for kDIMNAMES, the same names without regard to case, for kSEQUENCE equal
  // columns, position by position.
  bool operator==(const OMSColumns& other) const;

  // Sets the byte-order flag here and on every token held.
  void SwapBytes(bool swap);

  friend std::ostream& operator<<(std::ostream& out, const OMSColumns& columns);
  friend std::istream& operator>>(std::istream& in, OMSColumns& columns);

private:
  friend class OMSObjectSelector;
  void Write(OMSRecordWriter& writer) const;
  void Read(OMSRecordReader& reader);

  struct Data;
  std::unique_ptr<Data> _my;
};
