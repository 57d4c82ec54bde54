// The multiple-imputation correlations example: a correlation matrix over the original data and
// five imputations, each coefficient with its two-tailed significance and N, the significant ones
// marked "*" or "**" with the procedure's notes. The session pools the coefficients on Fisher's z
// and marks the pooled ones that stay significant.
#include <cstdint>
#include <string>

#include "tools/examplegen/OmExampleStreams.h"
#include "tools/examplegen/OmExampleWriter.h"

namespace {

constexpr std::uint8_t kTable = 3;
constexpr int kImputations = 5;
constexpr auto F = OmExampleF;

const char* const kNote05 = "Correlation at 0.05(2-tailed):...";
const char* const kNote01 = "Correlation at 0.01(2-tailed):...";

// Per data set (0 the original data): the coefficients of income-age, income-educ and age-educ,
// their two-tailed significance, and the cases. Age-educ varies around zero across the
// imputations, so its pooled coefficient is not significant; the original data lack 181 cases.
struct DataSet {
  double r[3];
  double p[3];
  double n;
};

const DataSet kData[kImputations + 1] = {
    {{0.214, 0.386, -0.102}, {0.0000, 0.0000, 0.0011}, 1019},
    {{0.221, 0.379, -0.041}, {0.0000, 0.0000, 0.1557}, 1200},
    {{0.207, 0.392, 0.012}, {0.0000, 0.0000, 0.6786}, 1200},
    {{0.229, 0.371, -0.067}, {0.0000, 0.0000, 0.0203}, 1200},
    {{0.212, 0.398, 0.038}, {0.0000, 0.0000, 0.1888}, 1200},
    {{0.218, 0.384, -0.029}, {0.0000, 0.0000, 0.3155}, 1200},
};

class Writer : public OmImputedDataWriter {
public:
  using OmImputedDataWriter::OmImputedDataWriter;

  void Table() {
    const std::int32_t title = Text("Correlations");
    _out.BeginTable(kTable, title, Text("Correlations", 1));
    _out.PlaceDimension(kTable, Imputation(), 1, 0, 0, 0);
    _out.PlaceDimension(kTable, Text("Variables"), 2, 0, 1, 0);
    _out.PlaceDimension(kTable, Text("Statistics"), 3, 0, 1, 0);
    _out.PlaceDimension(kTable, Text("Correlated Variables"), 1, 1, 1, 0);
    _out.CellDimension(kTable, Text("Statistics"));
  }
  void Category(std::int32_t category, const std::string& dimension) {
    _out.Category(kTable, category, Text(dimension));
  }
  void Cell(double value, std::int32_t format, const std::string& statistic) {
    const std::int32_t v = Number(value, format);
    _out.Cell(kTable, v, Text(statistic));
  }
  // The procedure's own mark on the coefficient just written.
  void Mark(double p) {
    if (p > 0.05) return;
    const std::int32_t note = Text(p <= 0.01 ? kNote01 : kNote05);
    _out.AnnotateMarked(5, note, Text(p <= 0.01 ? "**" : "*", 1));
  }
};

}  // namespace

OmStreamWriter OmExampleStreams::MICorrelations() {
  OmStreamWriter out;
  out.ByteOrderProbe();
  out.OutputSetting("TVARS", "Labels");
  out.OutputSetting("TNUMBERS", "Labels");
  out.OutputSetting("MIOUTPUT", "[observed imputed pooled diagnostics]");
  out.LogLine(0, "CORRELATIONS /VARIABLES=income age educ /PRINT=TWOTAIL NOSIG.");
  out.FlushLog();
  out.BeginProcedure(6, "procedure=Correlations\ntranslated=Correlations\nlanguage=en\n"
                        "codepage=UTF-8\nlocale=en_US\n");
  const int pairIndex[3][3] = {{-1, 0, 1}, {0, -1, 2}, {1, 2, -1}};
  Writer w(out);
  w.Table();
  // The statistics in the procedure's order: the diagonal, first written, has no significance.
  for (const char* statistic : {"Pearson Correlation", "Significance(2-tailed)", "N"}) {
    w.Category(w.Text(statistic), "Statistics");
  }
  for (int i = 0; i <= kImputations; ++i) {
    const std::int32_t dataSet = w.DataSetValue(i);
    out.Category(kTable, dataSet, w.Imputation());
    for (int row = 0; row < 3; ++row) {
      for (int column = 0; column < 3; ++column) {
        w.Category(w.Variable(row), "Variables");
        w.Category(w.Variable(column), "Correlated Variables");
        const int pair = pairIndex[row][column];
        w.Cell(pair < 0 ? 1.0 : kData[i].r[pair], F(3), "Pearson Correlation");
        if (pair >= 0) {
          w.Mark(kData[i].p[pair]);
          w.Cell(kData[i].p[pair], F(3), "Significance(2-tailed)");
        }
        w.Cell(kData[i].n, F(0), "N");
      }
    }
  }
  out.EndTable(kTable);
  out.EndProcedure();
  return out;
}
