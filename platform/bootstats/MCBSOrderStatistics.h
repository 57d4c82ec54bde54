// The order statistics of a set of numbers, found by selection as they are asked for rather than
// by sorting the set: a percentile bound needs two neighbouring ones, so an interval's two bounds
// cost about two linear passes where a sort costs B log B. MCBSPercentileCI and MCBSBCaCI keep
// their replicates in one.
#pragma once

#include <cstddef>
#include <vector>

class MCBSOrderStatistics {
public:
  // Empties the set, keeping its memory.
  void Clear();
  // Adds a value. Precondition: not NaN (NaN has no place in an order).
  void Add(double value) { _values.push_back(value); }
  void Reserve(std::size_t count) { _values.reserve(count); }

  std::size_t Size() const { return _values.size(); }
  // The values, in an order that selections change.
  const std::vector<double>& Values() const { return _values; }

  // The i-th smallest value (from 0). i < Size(). Reorders the values; asking in rising order of
  // i, as the quantiles of an interval do, makes each selection work only above the last one.
  double At(std::size_t i);

private:
  std::vector<double> _values;
  // _values[0, _selected) are the _selected smallest values, in no particular order.
  std::size_t _selected = 0;
};
