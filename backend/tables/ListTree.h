// A tree stored as a list of nodes in pre-order, each node with a level (its depth). The output
// tree of a session and of each procedure is a ListTree<OmOutputPart*>; headings, tables and text
// blocks are appended, pruned and moved between trees through the operations below.
#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "platform/errors/OMSException.h"

// Node handles.
// A Node names either a node of a tree or a position: the end of the list, or the place after a
// node's subtree, together with the level at which an insertion there would land. A handle to a
// node stays valid across insertions, across erasure of other nodes and across Move of other
// ranges; it is invalidated when its node is erased or pruned, or destroyed with its tree. After
// Move, handles to the moved nodes still name the source tree (their _tree): take fresh handles
// from the target. A position handle (IsEnd) remembers the node it stands before, so it is
// invalidated like a handle to that node.
//
// Ownership: the tree owns its node records and the values in them. Removing a node passes its
// value to Discard, which does nothing here; a tree that owns what its values point to (the output
// tree) overrides it.
template <class T>
class ListTree {
  struct Entry {
    T value;
    int level;
    Entry* prev = nullptr;
    Entry* next = nullptr;
    Entry* parent = nullptr;  // nearest earlier entry with a smaller level
    Entry* last = nullptr;    // last entry of this entry's subtree (itself for a leaf)
  };

public:
  class Node {
  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    Node() = default;

    // The tree this handle belongs to (a position handle's tree too).
    ListTree* _tree = nullptr;

    ListTree* Tree() const { return _tree; }
    // True for a position handle (end of list or end of a subtree), false for a node.
    bool IsEnd() const { return _entry == nullptr || _position; }
    // The node's level, or for a position the level that an insertion there gets.
    int Level() const { return IsEnd() ? _level : _entry->level; }
    // A node without a parent (the first node, or any node with no earlier node of smaller level).
    bool IsRoot() const {
      Check("ListTree::Node::IsRoot -- !IsEnd()", !IsEnd());
      return _entry->parent == nullptr;
    }

    T& Value() const {
      Check("ListTree::Node::Value -- !IsEnd()", !IsEnd());
      return _entry->value;
    }
    T& operator*() const { return Value(); }
    T* operator->() const { return &Value(); }

    // The node this handle names or, for a position, the node it stands before (End at the end).
    Node Here() const { return Node::At(_tree, _entry, _entry ? _entry->level : _level); }

    // The next node in pre-order (the end of the list after the last node).
    Node Next() const {
      Check("ListTree::Node::Next -- !IsEnd()", !IsEnd());
      return Node::At(_tree, _entry->next, _entry->next ? _entry->next->level : 0);
    }
    Node& operator++() {
      *this = Next();
      return *this;
    }
    Node operator++(int) {
      Node before = *this;
      *this = Next();
      return before;
    }

    Node Parent() const {
      Check("ListTree::Parent -- !IsRoot()", !IsEnd() && _entry->parent != nullptr);
      return Node::At(_tree, _entry->parent, 0);
    }
    bool HasChildren() const { return !IsEnd() && _entry->last != _entry; }
    // The first child, or ChildEnd() when there is none.
    Node FirstChild() const {
      Check("ListTree::Node::FirstChild -- !IsEnd()", !IsEnd());
      return HasChildren() ? Node::At(_tree, _entry->next, 0) : ChildEnd();
    }
    // The node after this one's subtree: the next sibling while one follows; after the last
    // child it equals the parent's ChildEnd().
    Node NextSibling() const {
      Check("ListTree::Node::NextSibling -- !IsEnd()", !IsEnd());
      Entry* after = _entry->last->next;
      if (after != nullptr && after->level == _entry->level) return Node::At(_tree, after, 0);
      return Node::Position(_tree, after, _entry->level);
    }
    // The position after this node's subtree, at this node's level (insert a next sibling there).
    Node SubtreeEnd() const {
      Check("ListTree::Node::SubtreeEnd -- !IsEnd()", !IsEnd());
      return Node::Position(_tree, _entry->last->next, _entry->level);
    }
    // The position after this node's subtree, one level deeper (insert a last child there).
    Node ChildEnd() const {
      Check("ListTree::Node::ChildEnd -- !IsEnd()", !IsEnd());
      return Node::Position(_tree, _entry->last->next, _entry->level + 1);
    }
    // The last node of this node's subtree (the node itself for a leaf).
    Node LastDescendant() const {
      Check("ListTree::Node::LastDescendant -- !IsEnd()", !IsEnd());
      return Node::At(_tree, _entry->last, 0);
    }
    std::vector<Node> Children() const {
      std::vector<Node> children;
      if (!HasChildren()) return children;
      for (Entry* e = _entry->next; e != nullptr && e != _entry->last->next; e = e->last->next) {
        children.push_back(Node::At(_tree, e, 0));
      }
      return children;
    }
    std::size_t NChildren() const { return Children().size(); }

    // Same tree and same place. The level of a position handle does not take part.
    friend bool operator==(const Node& a, const Node& b) {
      return a._tree == b._tree && a.Place() == b.Place();
    }

  private:
    friend class ListTree;
    static Node At(ListTree* tree, Entry* entry, int level) {
      Node n;
      n._tree = tree;
      n._entry = entry;
      n._level = level;
      return n;
    }
    static Node Position(ListTree* tree, Entry* before, int level) {
      Node n = At(tree, before, level);
      n._position = before != nullptr;
      return n;
    }
    // The entry that this handle names or stands before; null for the end of the list.
    Entry* Place() const { return _entry; }
    static void Check(const char* condition, bool ok) {
      if (!ok) throw OMSException(std::string(condition) + " (backend/tables/ListTree)");
    }

    Entry* _entry = nullptr;
    int _level = 0;
    bool _position = false;
  };

  ListTree() = default;
  ListTree(const ListTree&) = delete;
  ListTree& operator=(const ListTree&) = delete;
  virtual ~ListTree() { FreeAll(false); }

  std::size_t Size() const { return _size; }
  bool Empty() const { return _size == 0; }

  Node Begin() { return _first ? Node::At(this, _first, 0) : End(0); }
  // The end of the list, as a position at the given level.
  Node End(int level = 0) { return Node::Position(this, nullptr, level); }
  // The last node in pre-order; End() when the tree is empty.
  Node Last() { return _last ? Node::At(this, _last, 0) : End(0); }
  Node begin() { return Begin(); }
  Node end() { return End(0); }

  // Appends value as the last child of parent (level parent.Level() + 1). Constant time in the
  // size of the tree: the parent's subtree end is known, ancestors are updated along the way up.
  Node AppendChild(Node parent, T value) {
    Require(parent._tree == this, "ListTree::AppendChild -- parent._tree == this");
    Require(!parent.IsEnd(), "ListTree::AppendChild -- !parent.IsEnd()");
    return Insert(parent.ChildEnd(), std::move(value));
  }

  // Inserts value as child number index of parent (the last child when index >= NChildren()).
  Node InsertChild(Node parent, std::size_t index, T value) {
    Require(parent._tree == this, "ListTree::InsertChild -- parent._tree == this");
    std::vector<Node> children = parent.Children();
    if (index >= children.size()) return AppendChild(parent, std::move(value));
    Node at = children[index];
    return Insert(Node::Position(this, at._entry, at.Level()), std::move(value));
  }

  // Inserts value before the node or position `position`, at position.Level(). The node that
  // follows must not be deeper than the new one (it would be adopted), and the new level may be
  // at most one deeper than the node before it.
  Node Insert(Node position, T value) {
    Require(position._tree == this, "ListTree::Insert -- position._tree == this");
    const int level = position.Level();
    Entry* before = position.Place();
    Entry* after = before ? before->prev : _last;
    Require(level >= 0, "ListTree::Insert -- level >= 0");
    Require(before == nullptr || before->level <= level,
            "ListTree::Insert -- next.Level() <= position.Level()");
    Require(after == nullptr || level <= after->level + 1,
            "ListTree::Insert -- position.Level() <= previous.Level() + 1");
    auto* entry = new Entry{std::move(value), level};
    entry->last = entry;
    Link(entry, entry, after, before, level, 1);
    return Node::At(this, entry, 0);
  }

  // Removes node with its whole subtree; returns the position where it was (at its level).
  Node Erase(Node node) {
    Require(node._tree == this, "ListTree::Erase -- node._tree == this");
    Require(!node.IsEnd(), "ListTree::Erase -- !node.IsEnd()");
    Entry* first = node._entry;
    const int level = first->level;
    Entry* stop = first->last->next;
    Unlink(first, first->last);
    for (Entry* e = first; e != nullptr;) {
      Entry* next = e->next;
      Discard(e->value);
      delete e;
      e = next;
    }
    return Node::Position(this, stop, level);
  }

  // Removes node alone: its children move up one level into its place, in order, and become
  // children of its parent. Returns the node that took its place (its first child, or the node
  // that followed when it had none).
  Node EraseOne(Node node) {
    Require(node._tree == this, "ListTree::EraseOne -- node._tree == this");
    Require(!node.IsEnd(), "ListTree::EraseOne -- !node.IsEnd()");
    Entry* e = node._entry;
    Entry* parent = e->parent;
    Entry* after = e->next;
    if (e->last != e) {
      Entry* stop = e->last->next;
      for (Entry* d = e->next; d != stop; d = d->next) {
        --d->level;
        if (d->parent == e) d->parent = parent;
      }
    } else {
      // A leaf that ended its ancestors' subtrees hands that role to its predecessor.
      for (Entry* a = parent; a != nullptr && a->last == e; a = a->parent) a->last = e->prev;
    }
    if (e->prev) e->prev->next = e->next; else _first = e->next;
    if (e->next) e->next->prev = e->prev; else _last = e->prev;
    --_size;
    const int level = e->level;
    Discard(e->value);
    delete e;
    if (after == nullptr) return End(level);
    return after->level == level ? Node::At(this, after, 0) : Node::Position(this, after, level);
  }

  // Removes node with its subtree, as Erase does; a position handle removes nothing. Afterwards
  // node is the position where the node was.
  void Prune(Node& node) {
    Require(node._tree == this, "ListTree::Prune -- node._tree == this");
    if (node.IsEnd()) return;
    node = Erase(node);
  }

  // Removes every node for which remove(node) is true, with what is left of its subtree. Nodes
  // are looked at bottom-up (each after all of its descendants, in reverse pre-order), so a
  // predicate can ask whether a node still has children once its own children were pruned.
  template <class Pred>
  std::size_t Prune(Pred remove) {
    std::size_t removed = 0;
    Entry* e = _last;
    while (e != nullptr) {
      Entry* prev = e->prev;
      if (remove(Node::At(this, e, 0))) {
        const std::size_t before = _size;
        Erase(Node::At(this, e, 0));
        removed += before - _size;
      }
      e = prev;
    }
    return removed;
  }

  // Moves the nodes [begin, end) of another tree into this one, before target, keeping their
  // order and levels. The range must consist of whole subtrees of nodes at begin.Level() (end is
  // the end of the source or a node no deeper than begin), and the moved nodes must land at the
  // level they had. Linear in the size of the range.
  void Move(Node target, Node begin, Node end) {
    Require(target._tree == this, "ListTree::Move -- target._tree == this");
    Require(begin._tree == end._tree, "ListTree::Move -- begin._tree == end._tree");
    Require(target._tree != begin._tree, "ListTree::Move -- target._tree != begin._tree");
    if (begin == end) return;
    Require(!begin.IsEnd(), "ListTree::Move -- !begin.IsEnd()");
    Require(begin.Level() == target.Level(), "ListTree::Move -- begin.Level() == target.Level()");
    ListTree* source = begin._tree;
    const int level = begin.Level();
    Entry* first = begin._entry;
    Entry* stop = end.Place();
    Require(stop == nullptr || stop->level <= level,
            "ListTree::Move -- end.Level() <= begin.Level()");
    Entry* lastEntry = nullptr;
    for (Entry* e = first; e != stop; e = e->next) {
      Require(e != nullptr, "ListTree::Move -- end follows begin");
      Require(e->level >= level, "ListTree::Move -- range holds whole subtrees");
      lastEntry = e;
    }
    Entry* before = target.Place();
    Entry* after = before ? before->prev : _last;
    Require(before == nullptr || before->level <= level,
            "ListTree::Move -- next.Level() <= target.Level()");
    Require(after == nullptr || level <= after->level + 1,
            "ListTree::Move -- target.Level() <= previous.Level() + 1");
    std::size_t count = source->Unlink(first, lastEntry);
    Link(first, lastEntry, after, before, level, count);
  }

  // Removes every node.
  void Clear() { FreeAll(true); }

protected:
  // Called with the value of every node that erasure, pruning or Clear removes.
  virtual void Discard(T& value) { (void)value; }

  // For a derived destructor that must discard the values itself before ~ListTree runs.
  void DiscardAll() {
    for (Entry* e = _first; e != nullptr; e = e->next) Discard(e->value);
  }

private:
  static void Require(bool ok, const char* condition) {
    if (!ok) throw OMSException(std::string(condition) + " (backend/tables/ListTree)");
  }

  // Takes the entries first..lastEntry (whole sibling subtrees) out of the list and returns how
  // many there were. The entries keep their links among themselves.
  std::size_t Unlink(Entry* first, Entry* lastEntry) {
    std::size_t count = 0;
    for (Entry* e = first;; e = e->next) {
      ++count;
      if (e == lastEntry) break;
    }
    Entry* prev = first->prev;
    Entry* next = lastEntry->next;
    for (Entry* a = first->parent; a != nullptr && a->last == lastEntry; a = a->parent) {
      a->last = prev;
    }
    if (prev) prev->next = next; else _first = next;
    if (next) next->prev = prev; else _last = prev;
    first->prev = nullptr;
    lastEntry->next = nullptr;
    _size -= count;
    return count;
  }

  // Links the chain first..lastEntry (whole subtrees whose top nodes have `level`) between after
  // and before, and sets the parents of the top nodes and the subtree ends of their ancestors.
  void Link(Entry* first, Entry* lastEntry, Entry* after, Entry* before, int level,
            std::size_t count) {
    Entry* parent = after;
    while (parent != nullptr && parent->level >= level) parent = parent->parent;
    for (Entry* e = first;; e = e->last->next) {
      e->parent = parent;
      if (e->last == lastEntry) break;
    }
    first->prev = after;
    lastEntry->next = before;
    if (after) after->next = first; else _first = first;
    if (before) before->prev = lastEntry; else _last = lastEntry;
    if (after != nullptr) {
      for (Entry* a = parent; a != nullptr && a->last == after; a = a->parent) a->last = lastEntry;
    }
    _size += count;
  }

  void FreeAll(bool discard) {
    Entry* e = _first;
    while (e != nullptr) {
      Entry* next = e->next;
      if (discard) Discard(e->value);
      delete e;
      e = next;
    }
    _first = _last = nullptr;
    _size = 0;
  }

  Entry* _first = nullptr;
  Entry* _last = nullptr;
  std::size_t _size = 0;
};
