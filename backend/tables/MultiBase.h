// A mixed-radix number system: bases b0 ... bk-1, the last digit the least significant. The cell
// walk of the poolers turns a running position index into one category per dimension with it.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/errors/OMSException.h"

class MultiBase {
public:
  MultiBase() = default;
  explicit MultiBase(std::vector<std::uint32_t> bases) : _bases(std::move(bases)) {}

  const std::vector<std::uint32_t>& Bases() const { return _bases; }
  std::size_t NDigits() const { return _bases.size(); }

  // The product of all bases: how many digit strings there are (1 for no bases).
  std::uint64_t Count() const {
    std::uint64_t count = 1;
    for (std::uint32_t b : _bases) count *= b;
    return count;
  }

  // The digits of n, one per base, most significant first. The first base is never divided by:
  // the leading digit keeps whatever is left of n, unreduced. Every base divided by must be
  // greater than 0.
  std::vector<std::uint32_t> Digits(std::uint64_t n) const {
    std::vector<std::uint32_t> digits(_bases.size(), 0);
    Digits(n, digits);
    return digits;
  }

  // As above, into digits (resized to NDigits()); for walks that must not allocate per step.
  void Digits(std::uint64_t n, std::vector<std::uint32_t>& digits) const {
    const std::size_t k = _bases.size();
    digits.assign(k, 0);
    if (k == 0) return;
    if (k == 1 || n == 0) {
      digits[k - 1] = static_cast<std::uint32_t>(n);
      return;
    }
    for (std::size_t i = k - 1; i >= 1; --i) {
      const std::uint32_t b = _bases[i];
      if (b == 0) throw OMSException("MultiBase::Digits -- b>0 (backend/tables/MultiBase)", double(i));
      digits[i] = static_cast<std::uint32_t>(n % b);
      n /= b;
      if (i == 1) {
        digits[0] = static_cast<std::uint32_t>(n);
        return;
      }
      if (n == 0) return;
    }
  }

  // The inverse of Digits for digits within their bases: the number whose digits they are.
  std::uint64_t Number(const std::vector<std::uint32_t>& digits) const {
    std::uint64_t n = 0;
    for (std::size_t i = 0; i < _bases.size() && i < digits.size(); ++i) {
      n = (i == 0) ? digits[0] : n * _bases[i] + digits[i];
    }
    return n;
  }

private:
  std::vector<std::uint32_t> _bases;
};
