// One subcommand of an OMS request (IF or EXCEPTIF): the commands, table subtypes and labels it
// names, and the instance numbers it selects. OMSObjectSelector holds two of them and matches
// output objects against them; both travel in the binary record of OMSObjectSelector.
#pragma once

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

class OMSRecordReader;
class OMSRecordWriter;

class OMSSelector {
public:
  OMSSelector();
  OMSSelector(const OMSSelector& other);
  OMSSelector& operator=(const OMSSelector& other);
  ~OMSSelector();

  // Each appends the text upper-cased in the session's code page. Patterns may end in "*".
  void AddCommands(const std::string& command);
  void AddSubtypes(const std::string& subtype);
  void AddNames(const std::string& name);
  // Precondition: inst > 0.
  void AddInstances(int inst);
  void AddLastInstance();

  const std::vector<std::string>& GetCommands() const;
  const std::vector<std::string>& GetSubtypes() const;
  const std::vector<std::string>& GetNames() const;
  const std::vector<int>& GetInstances() const;
  int GetCommandsCount() const;
  int GetSubtypesCount() const;
  int GetNamesCount() const;
  int GetInstancesCount() const;

  bool HasCommands() const;
  bool HasSubtypes() const;
  bool HasNames() const;
  // Instance numbers or the LAST flag.
  bool HasInstances() const;
  bool GetHasLastInstance() const;
  // Names nothing at all: no commands, subtypes, names, instances or LAST.
  bool EmptySubcommand() const;

  // Whether a stored pattern matches the key: equal without regard to case, or the key begins
  // with a pattern's text before a final "*". Blanks and dashes count for names only.
  bool GetHasCommand(const std::string& command) const;
  bool GetHasSubtype(const std::string& subtype) const;
  bool GetHasName(const std::string& name) const;
  // False when no instance numbers are stored, else whether n is one of them.
  bool GetHasInstance(int n) const;

  // Whether an object passes the commands, subtypes (for pivot tables, type 16, only) and names
  // tests of this subcommand; instance numbers do not take part.
  bool MatchesObject(short type, const std::string& command, const std::string& subtype,
                     const std::string& label) const;

  // The record that is read next came from a machine of the other byte order.
  void SwapBytes(bool swap);
  bool GetSwapBytes() const;
  // Reverses the n bytes at p in place.
  static void DoSwapBytes(void* p, int n);

  friend std::ostream& operator<<(std::ostream& out, const OMSSelector& selector);
  friend std::istream& operator>>(std::istream& in, OMSSelector& selector);

private:
  friend class OMSObjectSelector;
  void Write(OMSRecordWriter& writer) const;
  void Read(OMSRecordReader& reader);

  struct Data;
  std::unique_ptr<Data> _my;
};
