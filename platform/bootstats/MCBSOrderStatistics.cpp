#include "platform/bootstats/MCBSOrderStatistics.h"

#include <algorithm>
#include <functional>

void MCBSOrderStatistics::Clear() {
  _values.clear();
  _selected = 0;
}

double MCBSOrderStatistics::At(std::size_t i) {
  const auto first = _values.begin();
  const auto at = [&first](std::size_t k) { return first + std::ptrdiff_t(k); };
  if (i < _selected) {
    // Among the smallest already set apart: their set stays the same.
    std::nth_element(first, at(i), at(_selected));
    return _values[i];
  }
  const std::size_t rest = _values.size() - _selected;
  const std::size_t fromBottom = i - _selected;
  const std::size_t fromTop = _values.size() - 1 - i;
  if (i == _selected) {
    // The neighbour of the last one asked for (the upper of a bound's two): the least of the rest.
    std::iter_swap(at(i), std::min_element(at(i), _values.end()));
  } else if (fromBottom < rest / 16) {
    // A tail's rank (2.5% of the rest): one pass keeping a heap of the few values below it
    // costs less than partitioning the whole rest.
    std::partial_sort(at(_selected), at(i + 1), _values.end());
  } else if (fromTop < rest / 16) {
    // The same from the top: the values above i in ascending order at the end.
    const auto last = _values.rbegin();
    std::partial_sort(last, last + std::ptrdiff_t(fromTop + 1),
                      _values.rend() - std::ptrdiff_t(_selected), std::greater<>());
  } else {
    std::nth_element(at(_selected), at(i), _values.end());
  }
  _selected = i + 1;
  return _values[i];
}
