// The bootstrap example: Descriptives run on the original sample and 1000 bootstrap samples as a
// split-file run on "$bootstrap_split". The statistics table carries the split dimension, and a
// heading holds one case summary per split; the session keeps the original sample only and adds
// the bootstrap results.
#include <cmath>
#include <cstdint>
#include <string>

#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/outputmodel/OmNumber.h"
#include "tools/examplegen/OmExampleStreams.h"
#include "tools/examplegen/OmExampleWriter.h"

namespace {

constexpr std::uint8_t kTable = 3;
constexpr const char* kSplit = "$bootstrap_split";

constexpr auto F = OmExampleF;

struct Variable {
  const char* name;
  const char* label;
  double mean;
  double sd;
};
const Variable kVariables[2] = {{"age", "Age in years", 44.62, 14.18},
                                {"income", "Household income (thousands)", 58.37, 52.49}};
constexpr double kN = 400;

// Writes the procedure's messages; each message takes the cells it names from the slots written
// just before it, so a label is written again every time it is used.
class Writer : public OmExampleWriter {
public:
  Writer(OmStreamWriter& out, int samples, int missingEvery)
      : OmExampleWriter(out), _samples(samples), _missingEvery(missingEvery) {}

  std::int32_t Split() {
    _out.Variable(Next(), 2, kSplit, "");
    return _id;
  }
  std::int32_t SplitValue(int k) {
    _out.DataValue(Next(), 2, F(0), kSplit, "", double(k));
    return _id;
  }
  void Cell(double value, std::int32_t format, const char* statistic) {
    const std::int32_t v = Number(value, format);
    _out.Cell(kTable, v, Text(statistic));
  }

  // Descriptive Statistics: the split dimension in the layers, the variables down, the
  // statistics across. Each bootstrap sample's mean and standard deviation scatter around the
  // original sample's by their sampling error. With missingEvery, the income standard deviation
  // of every missingEvery-th sample is system-missing (a statistic undefined in some samples).
  void Descriptives() {
    const std::int32_t title = Text("Descriptive Statistics");
    _out.BeginTable(kTable, title, Text("Descriptive Statistics", 1));
    _out.PlaceDimension(kTable, Split(), 1, 2, 1, 0);
    _out.PlaceDimension(kTable, Text("Variables"), 1, 0, 0, 0);
    _out.PlaceDimension(kTable, Text("Statistics"), 1, 1, 1, 0);
    _out.CellDimension(kTable, Text("Statistics"));
    OmExampleDraws draws;
    for (int k = 0; k <= _samples; ++k) {
      const std::int32_t category = SplitValue(k);
      _out.Category(kTable, category, Split());
      for (const Variable& v : kVariables) {
        _out.Variable(Next(), 2, v.name, v.label);
        const std::int32_t variable = _id;
        _out.Category(kTable, variable, Text("Variables"));
        const double mean = k == 0 ? v.mean : v.mean + v.sd / std::sqrt(kN) * draws.Normal();
        const double sd = k == 0 ? v.sd : v.sd * (1.0 + draws.Normal() / std::sqrt(2.0 * kN));
        Cell(kN, F(0), "N");
        Cell(mean, F(2), "Mean");
        const bool missing = _missingEvery > 0 && k > 0 && k % _missingEvery == 0 && v.mean > 50.0;
        Cell(missing ? OmNumber::kSysMiss : sd, F(2), "Std. Deviation");
      }
    }
    _out.EndTable(kTable);
  }

  // "Valid Cases": one case summary per split, titled with its split.
  void CaseSummaries() {
    _out.BeginNode(Text("Valid Cases"));
    for (int k = 0; k <= _samples; ++k) {
      const std::int32_t title = SplitValue(k);
      _out.BeginTable(kTable, title, Text("Case Summary", 1));
      _out.PlaceDimension(kTable, Text("Statistics"), 1, 1, 1, 0);
      _out.CellDimension(kTable, Text("Statistics"));
      Cell(kN, F(0), "Valid N (listwise)");
      _out.EndTable(kTable);
    }
    _out.EndNode();
  }

private:
  int _samples;
  int _missingEvery;
};

}  // namespace

OmStreamWriter OmExampleStreams::BootstrapDescriptives(std::string_view language,
                                                       std::string_view code, int samples,
                                                       int missingEvery) {
  OmStreamWriter out;
  out.ByteOrderProbe();
  out.OutputSetting("OVARS", "Labels");
  out.OutputSetting("TVARS", "Labels");
  out.OutputSetting("OLANG", language);
  out.LogLine(0, "BOOTSTRAP /SAMPLING METHOD=SIMPLE /CRITERIA CILEVEL=95 NSAMPLES=" +
                     std::to_string(samples) + ".");
  out.LogLine(0, "DESCRIPTIVES VARIABLES=age income /STATISTICS=MEAN STDDEV.");
  out.FlushLog();
  out.BeginProcedure(6, "procedure=Descriptives\ntranslated=Descriptives\nlanguage=" +
                            std::string(code) + "\ncodepage=UTF-8\nlocale=en_US\nbootstrapped=1\n");
  Writer w(out, samples, missingEvery);
  w.Descriptives();
  w.CaseSummaries();

  SvrBootstrapSpecs specs;
  specs.SetNSamples(std::uint32_t(samples));
  specs.SetCILevelPct(95.0);
  specs.SetSamplingMethod(0);
  out.EndProcedure(specs);
  return out;
}
