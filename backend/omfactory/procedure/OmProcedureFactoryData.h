// The private state of OmProcedureFactory, shared by the files that implement it: tree building,
// rich objects (charts, trees, models, interactive objects) and the end of the procedure. Not for
// use outside this folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "backend/omsopmgr/OmFactorySelector.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"

class MessageHandler;
class OmAnswerTree;
class OmInteractive;
class OmModel;
class OmTextBlock;

// Headings and tables by label under each node they were appended to, so that re-entering a
// heading or finding a table among many siblings does not scan the siblings. Only this factory
// appends headings and tables, and nothing is removed before the end of the procedure, which
// drops the index.
class OmChildLabels {
public:
  enum Kind { kHeading, kTable };

  void Add(Kind kind, const OmOutputTree::Node& parent, const OmOutputTree::Node& child);
  // The first child of that kind added under parent whose label equals label (same type, equal
  // content); an end position when there is none.
  OmOutputTree::Node Find(Kind kind, const OmOutputTree::Node& parent,
                          const OmCellText& label) const;
  void Clear() { _children.clear(); }

private:
  struct Key {
    const OmOutputPart* parent;
    Kind kind;
    std::size_t hash;
    bool operator==(const Key& other) const {
      return parent == other.parent && kind == other.kind && hash == other.hash;
    }
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const;
  };
  // Children with equal keys, in the order they were appended (the tree's order).
  std::unordered_map<Key, std::vector<OmOutputTree::Node>, KeyHash> _children;
};

struct OmProcedureFactory::Data {
  Data(const std::string& outputLanguage, const std::string& codePage, const std::string& locale,
       OmFactorySelector& selector, OmOutputTreeTranslator& translator, int variableMode,
       int valueMode);
  ~Data();

  // Fails once the procedure has ended: its tree may no longer hold the nodes that the building
  // state points at.
  void CheckOpen(const char* operation) const;
  // Appends part as the last child of the current node; the tree takes it.
  OmOutputTree::Node Append(std::unique_ptr<OmOutputPart> part);
  // Shows a new rich object to the selector and appends it under the current node.
  template <class Part>
  Part* AddObject(std::unique_ptr<Part> part);
  // Adds footnote to table, counts the reference and refers the table's label to it.
  static void AddHeadingFootnote(OmPivotTable& table, const OmFootnote& footnote);

  OmOutputTree _tree;
  OmOutputTree::Node _current;
  OmTextBlock* _textBlock = nullptr;        // borrowed from the tree
  OmPivotTable _splitsTable;
  OmPivotFactory* _splitsFactory = nullptr;  // owned by _splitsTable's builder slot
  std::vector<OmChart*> _charts;             // by object index; borrowed from the tree
  std::vector<OmInteractive*> _interactives;
  std::vector<OmAnswerTree*> _answerTrees;
  std::vector<OmModel*> _models;             // in creation order
  std::unique_ptr<MessageHandler> _modelMessages;
  std::int64_t _id = 0;
  std::int64_t _tableCount = 0;
  std::int64_t _objectCount = 0;
  // Shared with the tables, which may outlive the procedure; replaced, never changed in place.
  std::shared_ptr<const BackendSettings> _settings;
  bool _bootstrapped = false;
  std::string _outputLanguage;
  int _variableMode;
  int _valueMode;
  OmOutputTreeTranslator& _translator;
  OmFactorySelector& _selector;
  std::string _codePage;
  std::string _locale;
  const OmProcedurePoolers* _poolers;
  OmChildLabels _labels;
  bool _ended = false;
};

template <class Part>
Part* OmProcedureFactory::Data::AddObject(std::unique_ptr<Part> part) {
  Part* object = part.get();
  _selector.Visit(*object);
  Append(std::move(part));
  return object;
}
