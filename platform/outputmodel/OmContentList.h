// The content that rich output objects (charts, trees, models, interactive objects) receive, kept
// as named byte strings in arrival order so that renderers and dumps can show what arrived.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

class OmContentList {
public:
  struct Item {
    std::string name;
    std::string data;
  };

  void Add(std::string name, const char* data, std::size_t length) {
    _items.push_back({std::move(name), data ? std::string(data, length) : std::string()});
  }
  void Add(std::string name, std::string data) { _items.push_back({std::move(name), std::move(data)}); }
  const std::vector<Item>& Items() const { return _items; }
  // The data of the last item with that name, or null.
  const std::string* Find(const std::string& name) const {
    for (auto it = _items.rbegin(); it != _items.rend(); ++it) {
      if (it->name == name) return &it->data;
    }
    return nullptr;
  }

private:
  std::vector<Item> _items;
};
