#include "bench/OmBenchStreams.h"

#include <string>

#include "platform/errors/OMSException.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

constexpr std::uint8_t kTable = 1;
// Wire number formats: decimals in bits 0-7, width in 8-15, type in 16-23 (5 is F).
constexpr std::int32_t kCountFormat = (5 << 16) | (8 << 8) | 0;
constexpr std::int32_t kValueFormat = (5 << 16) | (8 << 8) | 2;
// 2 leaves the display of variables and values to the session.
constexpr std::int32_t kSessionDisplay = 2;

constexpr int kGroups = 100;
constexpr int kStatistics = 10;
constexpr const char* kStatisticNames[kStatistics] = {
    "N",        "Mean",     "Std. Deviation", "Minimum",  "Maximum",
    "Median",   "Variance", "Skewness",       "Kurtosis", "Std. Error of Mean",
};
constexpr const char* kFootnotes[] = {
    "Multiple modes exist. The smallest value is shown.",
    "Lower bound of the true significance.",
    "Cannot be computed because the variable is constant.",
};

// Cell ids are taken from a small pool in turn, as procedures do: every message takes the cells
// it names, so the slots are free again by the time the pool wraps.
class Ids {
public:
  std::int32_t Next() {
    _id = _id % 40 + 1;
    return _id;
  }

private:
  std::int32_t _id = 0;
};

}  // namespace

OmBenchStreams::TableShape OmBenchStreams::ShapeFor(std::int64_t cells) {
  const std::int64_t perVariable = std::int64_t(kGroups) * kStatistics;
  if (cells <= 0 || cells % perVariable != 0) {
    throw OMSException("OmBenchStreams::ShapeFor -- cells is a positive multiple of 1000",
                       double(cells));
  }
  return TableShape{int(cells / perVariable), kGroups, kStatistics};
}

std::vector<std::uint8_t> OmBenchStreams::NumericTable(const TableShape& shape,
                                                       const TableOptions& options) {
  OmStreamWriter out;
  Ids ids;
  auto text = [&](const std::string& value, bool translatable) {
    const std::int32_t id = ids.Next();
    out.String(id, value, translatable ? 0 : 1);
    return id;
  };

  out.ByteOrderProbe();
  std::string settings = "procedure=Descriptives\ntranslated=Descriptives\nlanguage=en\n";
  if (options.fastTables) settings += "fasttables=1\n";
  out.BeginProcedure(1, settings);
  if (options.decorated) {
    out.BeginNode(text("Nothing here", true));
    out.EndNode();
  }
  out.BeginNode(text("Descriptives", true));

  const std::int32_t title = text("Descriptive Statistics", true);
  out.BeginTable(kTable, title, text("Descriptive Statistics", false));
  out.PlaceDimension(kTable, text("Variables", true), 1, 0);
  {
    const std::int32_t group = ids.Next();
    out.Variable(group, kSessionDisplay, "group", "Group");
    out.PlaceDimension(kTable, group, 2, 0);
  }
  out.PlaceDimension(kTable, text("Statistics", true), 1, 1, 1, 0);
  out.CellDimension(kTable, text("Statistics", true));

  std::int64_t row = 0;
  for (int v = 0; v < shape.variables; ++v) {
    const std::int32_t variable = ids.Next();
    // Appended rather than "v" + to_string: GCC 12 warns falsely (-Wrestrict) on the latter.
    const std::string number = std::to_string(v + 1);
    std::string name = "v";
    name += number;
    std::string label = "Measurement ";
    label += number;
    out.Variable(variable, kSessionDisplay, name, label);
    out.Category(kTable, variable, text("Variables", true));
    if (options.decorated && v == 0) out.SortDimension(kTable, 1);
    for (int g = 0; g < shape.groups; ++g, ++row) {
      const std::int32_t value = ids.Next();
      out.DataValue(value, kSessionDisplay, kCountFormat, "group",
                    "Group " + std::to_string(g + 1), double(g + 1));
      const std::int32_t dimension = ids.Next();
      out.Variable(dimension, kSessionDisplay, "group", "Group");
      out.Category(kTable, value, dimension);
      for (int s = 0; s < shape.statistics; ++s) {
        const std::int32_t number = ids.Next();
        const double x = double(v) * 0.25 + double(g) * 1.5 + double(s) / 7.0;
        out.Number(number, x, s == 0 ? kCountFormat : kValueFormat);
        out.Cell(kTable, number, text(kStatisticNames[s % kStatistics], true));
        if (options.decorated && s == 0 && row % 10 == 0) {
          out.Annotate(5, text(kFootnotes[(row / 10) % 3], true));
        }
      }
    }
  }
  out.EndTable(kTable);
  out.EndNode();
  out.EndProcedure();
  return out.FileBytes();
}
