#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/errors/OMSException.h"

namespace {

void PutUInt32(std::string& out, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

void PutDouble(std::string& out, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  for (int shift = 0; shift < 64; shift += 8)
    out.push_back(static_cast<char>((bits >> shift) & 0xFF));
}

// Reads little-endian fields front to back; running past the end is a short text.
class SpecsCursor {
public:
  explicit SpecsCursor(std::string_view bytes) : _bytes(bytes) {}

  std::uint32_t UInt32(const char* field) {
    Need(4, field);
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value |= static_cast<std::uint32_t>(Byte(i)) << (8 * i);
    _offset += 4;
    return value;
  }

  double Double(const char* field) {
    Need(8, field);
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits |= static_cast<std::uint64_t>(Byte(i)) << (8 * i);
    _offset += 8;
    return std::bit_cast<double>(bits);
  }

  // A count of records of `recordBytes` each, checked against what is left before anything is
  // allocated for them.
  std::uint32_t Count(std::size_t recordBytes, const char* field) {
    const std::uint32_t count = UInt32(field);
    if (count > Left() / recordBytes) Short(static_cast<std::size_t>(count) * recordBytes, field);
    return count;
  }

  std::size_t Left() const { return _bytes.size() - _offset; }

private:
  unsigned char Byte(int i) const { return static_cast<unsigned char>(_bytes[_offset + i]); }

  void Need(std::size_t bytes, const char* field) const {
    if (bytes > Left()) Short(bytes, field);
  }

  [[noreturn]] void Short(std::size_t bytes, const char* field) const {
    throw OMSException(
        std::string("SvrBootstrapSpecsSerializer::deserializeSpecs -- text ends in ") + field,
        static_cast<double>(_offset + bytes), static_cast<double>(_bytes.size()));
  }

  std::string_view _bytes;
  std::size_t _offset = 0;
};

} // namespace

std::string SvrBootstrapSpecsSerializer::serializeSpecs(const SvrBootstrapSpecs& specs) {
  std::string out;
  PutUInt32(out, specs.GetNSamples());
  PutDouble(out, specs.GetCILevelPct());
  PutUInt32(out, specs.GetSamplingMethod());
  const auto& boundaries = specs.GetJackknifeBoundaries();
  PutUInt32(out, static_cast<std::uint32_t>(boundaries.size()));
  for (std::uint32_t boundary : boundaries) PutUInt32(out, boundary);
  const auto& entries = specs.GetJackknifeList();
  PutUInt32(out, static_cast<std::uint32_t>(entries.size()));
  for (const SvrBootstrapSpecs::JackknifeEntry& entry : entries) {
    PutDouble(out, entry.value);
    PutUInt32(out, entry.group);
  }
  return out;
}

void SvrBootstrapSpecsSerializer::deserializeSpecs(std::string_view bytes,
                                                   SvrBootstrapSpecs& specs) {
  SpecsCursor cursor(bytes);
  SvrBootstrapSpecs read;
  read.SetNSamples(cursor.UInt32("sample count"));
  const double level = cursor.Double("confidence level");
  // The interval and coverage arithmetic divide by 100 - level: refuse what makes no interval.
  if (!(level > 0.0 && level < 100.0)) {
    throw OMSException(
        "SvrBootstrapSpecsSerializer::deserializeSpecs -- confidence level outside (0, 100)",
        level);
  }
  read.SetCILevelPct(level);
  read.SetSamplingMethod(cursor.UInt32("sampling method"));

  std::vector<std::uint32_t> boundaries(cursor.Count(4, "jackknife boundaries"));
  for (std::uint32_t& boundary : boundaries) boundary = cursor.UInt32("jackknife boundaries");
  read.SetJackknifeBoundaries(std::move(boundaries));

  std::vector<SvrBootstrapSpecs::JackknifeEntry> entries(cursor.Count(12, "jackknife entries"));
  for (SvrBootstrapSpecs::JackknifeEntry& entry : entries) {
    entry.value = cursor.Double("jackknife entries");
    entry.group = cursor.UInt32("jackknife entries");
  }
  read.SetJackknifeList(std::move(entries));

  if (cursor.Left() != 0) {
    throw OMSException("SvrBootstrapSpecsSerializer::deserializeSpecs -- bytes left over",
                       static_cast<double>(cursor.Left()), static_cast<double>(bytes.size()));
  }
  specs = read;
}
