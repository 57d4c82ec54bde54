#include "tools/examplegen/OmExampleStreams.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// Number formats as a procedure sends them: decimals in bits 0-7, width in 8-15, type in 16-23.
constexpr std::int32_t kF = 5;
constexpr std::int32_t kComma = 3;
constexpr std::int32_t kPct = 7;
constexpr std::int32_t Format(std::int32_t type, std::int32_t width, std::int32_t decimals) {
  return (type << 16) | (width << 8) | decimals;
}

// Variable display codes of IPC_VARIABLE and IPC_DATA_VALUE: 2 leaves the choice to the
// session's TVARS / TNUMBERS settings.
constexpr std::int32_t kSessionDisplay = 2;

constexpr std::uint8_t kTable = 1;

// A cell that a message names: written just before the message, into a slot from a small pool
// used in turn, as procedures do. Every message takes the cells it names, so a label is sent
// again each time it is needed.
class Script;
using Cell = std::function<std::int32_t(Script&)>;

// Writes a procedure's messages. The cells of one message are always written in argument order,
// so the stream's bytes do not depend on the compiler.
class Script {
public:
  explicit Script(OmStreamWriter& out) : _out(out) {}

  OmStreamWriter& Out() { return _out; }
  std::int32_t Write(const Cell& cell) { return cell(*this); }
  std::int32_t NextId() {
    _id = _id % 40 + 1;
    return _id;
  }

  void BeginTable(const Cell& title, const Cell& subtype, bool split = false) {
    const std::int32_t t = Write(title);
    _out.BeginTable(kTable, t, Write(subtype), split);
  }
  // axis 0 rows, 1 columns, 2 layers; hideLabel hides the dimension's label.
  void Place(const Cell& dimension, std::int32_t position, std::int32_t axis, bool hideLabel = false) {
    _out.PlaceDimension(kTable, Write(dimension), position, axis, hideLabel ? 1 : 0, 0);
  }
  void CellDimension(const Cell& dimension) { _out.CellDimension(kTable, Write(dimension)); }
  void Category(const Cell& category, const Cell& dimension) {
    const std::int32_t c = Write(category);
    _out.Category(kTable, c, Write(dimension));
  }
  void BeginGroup(const Cell& group, const Cell& dimension) {
    const std::int32_t g = Write(group);
    _out.BeginGroup(kTable, g, Write(dimension));
  }
  void EndGroup(const Cell& dimension) { _out.EndGroup(kTable, Write(dimension)); }
  // A cell at the current categories, under the cell dimension's category `statistic`.
  void Value(const Cell& value, const Cell& statistic) {
    const std::int32_t v = Write(value);
    _out.Cell(kTable, v, Write(statistic));
  }
  // target 1 the table's title, 5 the last cell, 6 the caption.
  void Annotate(std::int32_t target, const Cell& text) { _out.Annotate(target, Write(text)); }
  void Marker(const Cell& marker) { _out.Marker(Write(marker)); }
  void Node(const Cell& heading) { _out.BeginNode(Write(heading)); }
  void SplitCategory(const Cell& variable, const Cell& category) {
    const std::int32_t v = Write(variable);
    _out.SplitCategory(v, Write(category));
  }
  void BeginTextBlock(const Cell& title) { _out.BeginTextBlock(Write(title)); }

private:
  OmStreamWriter& _out;
  std::int32_t _id = 0;
};

// A text this system translates (statistics labels, titles).
Cell T(std::string text) {
  return [text](Script& s) {
    const std::int32_t id = s.NextId();
    s.Out().String(id, text, 0);
    return id;
  };
}
// A text taken as it is (file names, syntax, markers).
Cell L(std::string text) {
  return [text](Script& s) {
    const std::int32_t id = s.NextId();
    s.Out().String(id, text, 1);
    return id;
  };
}
Cell Num(double value, std::int32_t format) {
  return [=](Script& s) {
    const std::int32_t id = s.NextId();
    s.Out().Number(id, value, format);
    return id;
  };
}
Cell Var(std::string name, std::string label) {
  return [=](Script& s) {
    const std::int32_t id = s.NextId();
    s.Out().Variable(id, kSessionDisplay, name, label);
    return id;
  };
}
// A value of a variable with its value label.
Cell Val(std::string variable, std::string label, double value) {
  return [=](Script& s) {
    const std::int32_t id = s.NextId();
    s.Out().DataValue(id, kSessionDisplay, Format(kF, 8, 0), variable, label, value);
    return id;
  };
}
// A translatable pattern ("^1 * ^2 Crosstabulation") with its arguments.
Cell Composite(std::string pattern, std::vector<Cell> arguments) {
  return [=](Script& s) {
    const std::int32_t patternId = s.Write(T(pattern));
    const std::int32_t id = s.NextId();
    s.Out().BeginComposite(id, patternId);
    for (const Cell& argument : arguments) s.Out().CompositeArgument(s.Write(argument));
    return id;
  };
}

void SessionSettings(OmStreamWriter& out, std::string_view language) {
  out.ByteOrderProbe();
  out.OutputSetting("OVARS", "Labels");
  out.OutputSetting("TVARS", "Labels");
  out.OutputSetting("ONUMBERS", "Labels");
  out.OutputSetting("TNUMBERS", "Labels");
  out.OutputSetting("OLANG", language);
}

std::string Settings(std::string_view procedure, std::string_view language) {
  return "procedure=" + std::string(procedure) + "\ntranslated=" + std::string(procedure) +
         "\nlanguage=" + std::string(language) + "\ncodepage=UTF-8\nlocale=en_US\n";
}

struct NoteRow {
  const char* group;  // "" for a row outside the groups
  const char* label;
  const char* value;
};

// The "Notes" table that every procedure writes first: input, missing-value handling, syntax and
// resources, one row each, in a single dimension.
void NotesTable(Script& s, const std::vector<NoteRow>& rows) {
  s.BeginTable(T("Notes"), L("Notes"));
  s.Place(T("Notes"), 1, 0, true);
  s.CellDimension(T("Notes"));
  for (const NoteRow& row : rows) {
    const bool grouped = row.group[0] != '\0';
    if (grouped) s.BeginGroup(T(row.group), T("Notes"));
    s.Value(L(row.value), T(row.label));
    if (grouped) s.EndGroup(T("Notes"));
  }
  s.Out().EndTable(kTable);
}

}  // namespace

OmStreamWriter OmExampleStreams::Descriptives(std::string_view language, std::string_view code) {
  OmStreamWriter out;
  Script s(out);
  SessionSettings(out, language);
  out.LogLine(0, "DESCRIPTIVES VARIABLES=age income educ");
  out.LogLine(0, "  /STATISTICS=MEAN SEMEAN STDDEV MIN MAX.");
  out.FlushLog();

  out.BeginProcedure(1, Settings("Descriptives", code));
  NotesTable(s, {
      {"Input", "Data", "/data/survey2024.sav"},
      {"Input", "Active Dataset", "DataSet1"},
      {"Input", "N of Rows in Working Data File", "1200"},
      {"Missing Value Handling", "Definition of Missing", "User defined missing values are treated as missing."},
      {"Missing Value Handling", "Cases Used", "All non-missing data are used for all analyses."},
      {"", "Syntax", "DESCRIPTIVES VARIABLES=age income educ /STATISTICS=MEAN SEMEAN STDDEV MIN MAX."},
      {"Resources", "Processor Time", "00:00:00.02"},
      {"Resources", "Elapsed Time", "00:00:00.01"},
  });

  s.Node(T("Statistics"));
  s.BeginTable(T("Descriptive Statistics"), L("Descriptive Statistics"));
  s.Place(T("Variables"), 1, 0);
  s.Place(T("Statistics"), 1, 1, true);
  s.CellDimension(T("Statistics"));
  s.Annotate(1, T("Cases with a missing value in any variable are left out."));

  struct Row {
    const char* name;
    const char* label;
    double n, min, max, mean, se, sd;
  };
  const Row rows[] = {
      {"age", "Age in years", 1187, 18, 79, 44.62, 0.41, 14.18},
      {"income", "Household income (thousands)", 1052, 4.5, 612, 58.37, 1.62, 52.49},
      {"educ", "Years of education", 1174, 6, 21, 13.91, 0.08, 2.87},
  };
  const std::int32_t f = Format(kF, 8, 2);
  for (const Row& r : rows) {
    const bool income = std::string_view(r.name) == "income";
    s.Category(Var(r.name, r.label), T("Variables"));
    s.Value(Num(r.n, Format(kF, 5, 0)), T("N"));
    s.Value(Num(r.min, f), T("Minimum"));
    s.Value(Num(r.max, f), T("Maximum"));
    s.BeginGroup(T("Mean"), T("Statistics"));
    s.Value(Num(r.mean, f), T("Statistic"));
    if (income) s.Marker(L("*"));
    s.Value(Num(r.se, Format(kF, 8, 3)), T("Std. Error"));
    s.EndGroup(T("Statistics"));
    s.Value(Num(r.sd, f), T("Std. Deviation"));
    if (income) s.Annotate(5, T("Household income is skewed; the median is 41.20."));
  }
  s.Category(T("Valid N (listwise)"), T("Variables"));
  s.Value(Num(1019, Format(kF, 5, 0)), T("N"));
  out.EndTable(kTable);
  out.EndNode();
  out.EndProcedure();
  return out;
}

OmStreamWriter OmExampleStreams::Crosstabs(std::string_view language, std::string_view code) {
  OmStreamWriter out(OmStreamWriter::ByteOrder::BigEndian);
  Script s(out);
  SessionSettings(out, language);
  out.LogLine(0, "CROSSTABS /TABLES=sex BY jobsat BY region /CELLS=COUNT ROW.");

  out.BeginProcedure(2, Settings("Crosstabs", code));
  NotesTable(s, {
      {"Input", "Data", "/data/survey2024.sav"},
      {"Input", "N of Rows in Working Data File", "1200"},
      {"", "Syntax", "CROSSTABS /TABLES=sex BY jobsat BY region /CELLS=COUNT ROW."},
  });

  const Cell sex = Var("sex", "Gender");
  const Cell jobsat = Var("jobsat", "Job satisfaction");
  const Cell region = Var("region", "Region");

  // Case processing summary: one row, the crossing of the three variables; columns Valid,
  // Missing and Total within Cases, each with N and Percent.
  s.BeginTable(T("Case Processing Summary"), L("Case Processing Summary"));
  s.Place(T("Tables"), 1, 0, true);
  s.Place(T("Statistics"), 1, 1, true);
  s.CellDimension(T("Statistics"));
  s.Category(Composite("^1 * ^2 * ^3", {sex, jobsat, region}), T("Tables"));
  s.BeginGroup(T("Cases"), T("Statistics"));
  const struct {
    const char* group;
    double n, pct;
  } cases[] = {{"Valid", 1139, 94.9}, {"Missing", 61, 5.1}, {"Total", 1200, 100.0}};
  for (const auto& c : cases) {
    s.BeginGroup(T(c.group), T("Statistics"));
    s.Value(Num(c.n, Format(kComma, 6, 0)), T("N"));
    s.Value(Num(c.pct, Format(kPct, 6, 1)), T("Percent"));
    s.EndGroup(T("Statistics"));
  }
  s.EndGroup(T("Statistics"));
  out.EndTable(kTable);

  // The crosstabulation: gender and statistics down, job satisfaction (two groups and a total)
  // across, one layer per region.
  s.BeginTable(Composite("^1 * ^2 * ^3 Crosstabulation", {sex, jobsat, region}),
               L("Crosstabulation"));
  s.Place(sex, 1, 0);
  s.Place(T("Statistics"), 2, 0, true);
  s.Place(jobsat, 1, 1);
  s.Place(region, 1, 2);
  s.CellDimension(T("Statistics"));

  const struct {
    const char* group;  // "" for the total column
    double code;
    const char* label;
  } columns[] = {{"Satisfied", 1, "Very satisfied"},
                 {"Satisfied", 2, "Somewhat satisfied"},
                 {"Dissatisfied", 3, "Somewhat dissatisfied"},
                 {"Dissatisfied", 4, "Very dissatisfied"},
                 {"", 0, "Total"}};
  // Counts by region (North, South), gender (male, female) and job satisfaction 1-4.
  const double counts[2][2][4] = {{{88, 131, 67, 24}, {97, 142, 58, 19}},
                                  {{71, 126, 79, 33}, {83, 139, 62, 20}}};
  const char* regions[] = {"North", "South"};
  const Cell withinGender = Composite("% within ^1", {sex});
  for (int r = 0; r < 2; ++r) {
    s.Category(Val("region", regions[r], r + 1), region);
    for (int g = 0; g < 3; ++g) {
      s.Category(g < 2 ? Val("sex", g == 0 ? "Male" : "Female", g + 1) : T("Total"), sex);
      auto count = [&](int j) {
        return g < 2 ? counts[r][g][j] : counts[r][0][j] + counts[r][1][j];
      };
      const double total = count(0) + count(1) + count(2) + count(3);
      for (int j = 0; j < 5; ++j) {
        const bool grouped = columns[j].group[0] != '\0';
        if (grouped) s.BeginGroup(T(columns[j].group), jobsat);
        s.Category(grouped ? Val("jobsat", columns[j].label, columns[j].code) : T("Total"), jobsat);
        const double n = j < 4 ? count(j) : total;
        s.Value(Num(n, Format(kF, 5, 0)), T("Count"));
        s.Value(Num(100.0 * n / total, Format(kPct, 6, 1)), withinGender);
        if (r == 1 && g == 0 && j == 3) s.Annotate(5, T("Fewer than 5% of this group."));
        if (grouped) s.EndGroup(jobsat);
      }
    }
  }
  s.Annotate(6, T("Counts are unweighted."));
  out.EndTable(kTable);
  out.EndProcedure();
  return out;
}

OmStreamWriter OmExampleStreams::SplitFile() {
  OmStreamWriter out;
  Script s(out);
  SessionSettings(out, "German");
  out.LogLine(0, "SORT CASES BY region.");
  out.LogLine(0, "SPLIT FILE LAYERED BY region.");
  out.LogLine(0, "DESCRIPTIVES VARIABLES=age income /STATISTICS=MEAN STDDEV.");

  out.BeginProcedure(3, Settings("Descriptives", "de"));
  NotesTable(s, {
      {"Input", "Data", "/data/survey2024.sav"},
      {"Input", "Split File", "region"},
      {"", "Syntax", "DESCRIPTIVES VARIABLES=age income /STATISTICS=MEAN STDDEV."},
  });

  const struct {
    const char* region;
    double nAge, meanAge, sdAge, nIncome, meanIncome, sdIncome;
  } groups[] = {{"North", 402, 43.18, 13.77, 361, 61.05, 55.12},
                {"South", 391, 45.40, 14.52, 344, 54.93, 47.80},
                {"West", 394, 45.29, 14.21, 347, 59.02, 54.33}};
  const std::int32_t f = Format(kF, 8, 2);
  for (std::size_t i = 0; i < std::size(groups); ++i) {
    const auto& g = groups[i];
    // The split category switches every split table to the next group before it is filled.
    s.SplitCategory(Var("region", "Region"), Val("region", g.region, double(i + 1)));
    s.BeginTable(T("Descriptive Statistics"), L("Descriptive Statistics"), true);
    s.Place(T("Variables"), 2, 0);
    s.Place(T("Statistics"), 1, 1, true);
    s.CellDimension(T("Statistics"));
    s.Category(Var("age", "Age in years"), T("Variables"));
    s.Value(Num(g.nAge, Format(kF, 5, 0)), T("N"));
    s.Value(Num(g.meanAge, f), T("Mean"));
    s.Value(Num(g.sdAge, f), T("Std. Deviation"));
    s.Category(Var("income", "Household income (thousands)"), T("Variables"));
    s.Value(Num(g.nIncome, Format(kF, 5, 0)), T("N"));
    s.Value(Num(g.meanIncome, f), T("Mean"));
    s.Value(Num(g.sdIncome, f), T("Std. Deviation"));
    out.EndTable(kTable);
  }
  out.EndProcedure();
  return out;
}

OmStreamWriter OmExampleStreams::LogPages() {
  OmStreamWriter out;
  Script s(out);
  SessionSettings(out, "English");
  out.PageTitle("Employee Survey 2024", "Data preparation");
  out.LogLine(0, "GET FILE='/data/survey2024.sav'.");
  out.LogLine(0, "DATASET NAME DataSet1 WINDOW=FRONT.");
  out.LogLine(2, "COMPUTE income_k = income / 1000.");
  out.LogLine(0, "EXECUTE.");
  out.FlushLog();
  out.PageTitle("Employee Survey 2024", "Analysis");
  out.LogLine(0, "ECHO 'Wave 1: 1200 interviews, fieldwork March-May.'.");

  out.BeginProcedure(4, Settings("Echo", "en"));
  s.BeginTextBlock(T("Text Output"));
  out.PrintLine(0, "Wave 1: 1200 interviews, fieldwork March-May.");
  out.EndProcedure();

  out.LogLine(-1, "TITLE 'Summary'.");
  out.LogLine(0, "FREQUENCIES VARIABLES=region /FORMAT=NOTABLE.");
  out.FlushLog();
  return out;
}

std::vector<OmExampleStreams::Example> OmExampleStreams::All() {
  std::vector<Example> all;
  all.push_back({"bootstrap_descriptives", BootstrapDescriptives()});
  all.push_back({"bootstrap_descriptives_de", BootstrapDescriptives("German", "de", 200, 40)});
  all.push_back({"bootstrap_regression", BootstrapRegression()});
  all.push_back({"crosstabs", Crosstabs()});
  all.push_back({"crosstabs_fr", Crosstabs("French", "fr")});
  all.push_back({"descriptives", Descriptives()});
  all.push_back({"descriptives_de", Descriptives("German", "de")});
  all.push_back({"logpages", LogPages()});
  all.push_back({"mi_correlations", MICorrelations()});
  all.push_back({"mi_regression", MIRegression()});
  all.push_back({"mi_regression_de", MIRegression("German", "de")});
  all.push_back({"mi_ttest", MITTest()});
  all.push_back({"splitfile", SplitFile()});
  return all;
}
