// A borrowed view of a list owned elsewhere, with the list's fill value. A pivot table hands out
// its row, column and layer lists this way, so that the builder and the pooling tools reorder the
// table's own storage.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/errors/OMSException.h"

template <class T>
class PuppetVector {
public:
  // storage must outlive the view; fill is what Resize puts into new positions.
  PuppetVector(std::vector<T>& storage, T fill) : _items(&storage), _fill(fill) {}

  std::size_t size() const { return _items->size(); }
  bool empty() const { return _items->empty(); }
  T Fill() const { return _fill; }

  T& operator[](std::size_t i) const { return (*_items)[i]; }
  // Checked access.
  T& at(std::size_t i) const {
    if (i >= _items->size()) {
      throw OMSException("PuppetVector::at -- i < size()", double(i), double(_items->size()));
    }
    return (*_items)[i];
  }

  typename std::vector<T>::iterator begin() const { return _items->begin(); }
  typename std::vector<T>::iterator end() const { return _items->end(); }

  void push_back(T value) const { _items->push_back(value); }
  // Inserts before position pos (at the end when pos == size()).
  void Insert(std::size_t pos, T value) const {
    if (pos > _items->size()) {
      throw OMSException("PuppetVector::Insert -- pos <= size()", double(pos), double(_items->size()));
    }
    _items->insert(_items->begin() + static_cast<std::ptrdiff_t>(pos), value);
  }
  void Erase(std::size_t pos) const {
    if (pos >= _items->size()) {
      throw OMSException("PuppetVector::Erase -- pos < size()", double(pos), double(_items->size()));
    }
    _items->erase(_items->begin() + static_cast<std::ptrdiff_t>(pos));
  }
  // Grows with the fill value or shrinks to n entries.
  void Resize(std::size_t n) const { _items->resize(n, _fill); }
  void Clear() const { _items->clear(); }
  // Position of the first entry equal to value, or -1.
  int Find(T value) const {
    auto it = std::find(_items->begin(), _items->end(), value);
    return it == _items->end() ? -1 : static_cast<int>(it - _items->begin());
  }
  // Removes every entry equal to value, keeping the order of the others; returns how many.
  std::size_t Remove(T value) const {
    auto it = std::remove(_items->begin(), _items->end(), value);
    std::size_t n = static_cast<std::size_t>(_items->end() - it);
    _items->erase(it, _items->end());
    return n;
  }
  // Copies the entries of other into this list (the fill value stays this list's).
  void Assign(const std::vector<T>& other) const { *_items = other; }

  std::vector<T>& Storage() const { return *_items; }

private:
  std::vector<T>* _items;
  T _fill;
};
