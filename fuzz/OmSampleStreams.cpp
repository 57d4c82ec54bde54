#include "fuzz/OmSampleStreams.h"

#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/messages/MessageParts.h"

namespace {

// Number formats on the wire: decimals in bits 0-7, width 8-15, type 16-23.
constexpr std::int32_t kFixed2 = 0x050802;   // type 5, width 8, 2 decimals
constexpr std::int32_t kCount = 0x050800;    // type 5, width 8, no decimals
constexpr std::int32_t kPercent = 0x010A01;  // type 1 keeps its 16-bit width

// A non-translatable label, as procedures send names and statistics.
void Label(OmStreamWriter& w, std::int32_t id, const std::string& text) { w.String(id, text, 1); }

// A table of one count, its category "N": the title at cell ids 2 (its label) and 3, the cell
// dimension at 4, the count at 5 and "N" at 6. The table stays open.
void OneCountTable(OmStreamWriter& w, std::uint8_t tcid, const std::string& title,
                   const std::string& dimension, std::int32_t count) {
  w.String(2, title, 0);
  Label(w, 3, title);
  w.BeginTable(tcid, 2, 3);
  Label(w, 4, dimension);
  w.CellDimension(tcid, 4);
  w.Integer(5, count, kCount);
  Label(w, 6, "N");
  w.Cell(tcid, 5, 6);
}

}  // namespace

std::string OmSampleStreams::Settings(const std::string& name, const std::string& extra) {
  return "procedure=" + name + "\ntranslated=" + name + "\nlanguage=en\n" + extra;
}

std::vector<OmSampleStreams::Named> OmSampleStreams::All(ByteOrder order) {
  std::vector<Named> samples;
  auto add = [&samples, order](const std::string& name, auto&& write) {
    Named sample{name, OmStreamWriter(order)};
    sample.stream.ByteOrderProbe();
    write(sample.stream);
    samples.push_back(std::move(sample));
  };
  add("settings", [](OmStreamWriter& w) { SessionSettings(w); });
  add("descriptives", [](OmStreamWriter& w) { Descriptives(w, 1); });
  add("frequencies", [](OmStreamWriter& w) { Frequencies(w, 2); });
  add("rich_objects", [](OmStreamWriter& w) { RichObjects(w, 3); });
  add("long_texts", [](OmStreamWriter& w) { LongTexts(w, 4, 200); });
  add("chunked_string", [](OmStreamWriter& w) { LongTexts(w, 5, 40000); });
  add("bootstrapped", [](OmStreamWriter& w) { Bootstrapped(w, 6); });
  add("session", [](OmStreamWriter& w) {
    SessionSettings(w);
    Descriptives(w, 7);
    w.LogLine(1, "between procedures");
    Frequencies(w, 8);
    w.PageTitle("Second page", "");
    RichObjects(w, 9);
  });
  return samples;
}

void OmSampleStreams::SessionSettings(OmStreamWriter& w) {
  // Restates what the byte-order probe found, on the little-endian machines we build on.
  w.SwapBytes(w.Order() == ByteOrder::BigEndian);
  w.ConversionName(3, "windows-1252");
  w.ConversionPair(1, 2);
  w.OutputSetting("OVARS", "Labels");
  w.OutputSetting("TVARS", "Both");
  w.OutputSetting("ONUMBERS", "Values");
  w.OutputSetting("TNUMBERS", "Labels");
  w.OutputSetting("OLANG", "English");
  w.OutputSetting("TFIT", "Labels");
  w.OutputSetting("MIOUTPUT", "observed imputed pooled diagnostics");
  w.LogLine(1, "GET FILE='survey.sav'.");
  w.LogLine(2, "DESCRIPTIVES height weight.");
  w.LogLine(1, "\x01REQUEST dropped");
  w.FlushLog();
  w.Refresh();
  w.PageTitle("Survey", "Wave 1");
}

void OmSampleStreams::Descriptives(OmStreamWriter& w, std::int64_t id) {
  w.BeginProcedure(id, Settings("Descriptives"));
  w.String(1, "Descriptives", 0);
  w.BeginNode(1);
  w.String(2, "Descriptive Statistics", 0);
  Label(w, 3, "Descriptive Statistics");
  w.BeginTable(1, 2, 3);
  const char* variables[][2] = {{"height", "Height in cm"}, {"weight", "Weight in kg"}};
  for (int v = 0; v < 2; ++v) {
    w.Variable(4, 2, variables[v][0], variables[v][1]);
    Label(w, 5, "Variables");
    w.Category(1, 4, 5);
    Label(w, 6, "Statistics");
    w.CellDimension(1, 6);
    w.Integer(7, 20 + v, kCount);
    Label(w, 8, "N");
    w.Cell(1, 7, 8);
    w.Number(9, 170.25 - 100 * v, kFixed2);
    Label(w, 10, "Mean");
    w.Cell(1, 9, 10);
  }
  Label(w, 11, "Listwise N: 20");
  w.Annotate(1, 11);
  Label(w, 12, "a");
  w.Marker(12);
  Label(w, 13, "Variable");
  w.CornerText(1, 13);
  Label(w, 14, "Variables");
  w.PlaceDimension(1, 14, 1, 0);
  Label(w, 15, "Statistics");
  w.PlaceDimension(1, 15, 1, 1, 0, 1);
  w.ColumnWidth(1, 3, 4, 40);
  w.EndTable(1);
  w.EndNode();
  w.String(16, "Notes", 0);
  w.BeginTextBlock(16);
  w.PrintLine(1, "Descriptives ran on 2 variables.");
  w.PrintLine(3, "after two empty lines");
  w.PrintLine(-1, "on a new page");
  w.EndProcedure();
}

void OmSampleStreams::Small(OmStreamWriter& w, std::int64_t id) {
  w.BeginProcedure(id, Settings("Check"));
  w.String(1, "Check", 0);
  w.BeginNode(1);
  OneCountTable(w, 1, "Counts", "Statistics", 20);
  Label(w, 7, "Listwise");
  w.Annotate(1, 7);
  w.EndTable(1);
  w.EndNode();
  w.String(8, "Notes", 0);
  w.BeginTextBlock(8);
  w.PrintLine(1, "Check ran.");
  w.EndProcedure();
}

void OmSampleStreams::Frequencies(OmStreamWriter& w, std::int64_t id) {
  w.BeginProcedure(id, Settings("Frequencies"));
  w.String(1, "Frequencies", 0);
  w.BeginNode(1);

  // A title made from a pattern and a repeated argument list: "Table of ^1".
  w.String(2, "Frequency table of ^1", 0);
  w.BeginComposite(3, 2);
  w.BeginRepeatList();
  Label(w, 4, "gender");
  w.CompositeArgument(4);
  w.EndRepeatList();
  Label(w, 5, "Frequencies");
  w.BeginTable(2, 3, 5, true);

  Label(w, 6, "Gender");
  w.Dimension(2, 6);
  Label(w, 7, "Valid");
  Label(w, 8, "Gender");
  w.BeginGroup(2, 7, 8);
  const char* labels[] = {"Female", "Male"};
  for (int c = 0; c < 2; ++c) {
    w.DataValue(9, 1, kCount, "gender", labels[c], double(c + 1));
    Label(w, 10, "Gender");
    w.Category(2, 9, 10);
    Label(w, 11, "Statistics");
    w.CellDimension(2, 11);
    w.Integer(12, 10 + c, kCount);
    Label(w, 13, "Frequency");
    w.Cell(2, 12, 13);
    w.Number(14, 45.5 + c, kPercent);
    Label(w, 15, "Percent");
    w.Cell(2, 14, 15);
    Label(w, 16, "Valid Percent");
    w.CellCategory(2, 16);
  }
  w.Bold();
  w.TextColor("#FF0000");
  w.BackgroundColor("#FFFFCC");
  w.HideCategory();
  Label(w, 17, "Gender");
  w.EndGroup(2, 17);
  w.DataValue(18, 0, kCount, "gender", "Unknown", "9");
  Label(w, 19, "Gender");
  w.Category(2, 18, 19);
  w.SortGroup(2, 0);
  w.SortDimension(2, 1);
  w.SortUngroup(2, 0);
  w.Ungroup(2);
  w.TableColors(0x000000, 0xFFFFFF);
  w.MiscProperty(1, "bold");

  // Copies and discards in the slot table.
  w.Number(20, 1, kCount);
  w.CopyCell(20, 21);
  w.TableProperty(2, 0, 20);
  w.TableProperty(2, 1, 21);
  w.Number(22, 3, kCount);
  w.TableProperty(2, 2, 22);
  Label(w, 23, "Gender");
  w.TableProperty(2, 3, 23);
  Label(w, 24, "unused");
  w.TableProperty(2, 5, 24);
  Label(w, 25, "Missing cases are excluded.");
  Label(w, 26, "b");
  w.AnnotateMarked(4, 25, 26);
  Label(w, 27, "scratch");
  w.DiscardCell(27);
  w.ClearTableFlag(2);
  w.EndTable(2);

  w.Variable(28, 0, "region", "Region");
  w.DataValue(29, 2, kCount, "region", "North", 1.0);
  w.SplitCategory(28, 29);
  w.EndNode();
  w.EndProcedure();
}

void OmSampleStreams::RichObjects(OmStreamWriter& w, std::int64_t id) {
  w.BeginProcedure(id, Settings("Graph"));
  w.String(1, "Graph", 0);
  w.BeginNode(1);
  w.ChartXml(0, 0, "Bar chart of income");
  w.ChartXml(1, 0, "<chart><bar/></chart>");
  w.ChartXml(9, 0, " by region");
  w.TreeXml(0, 1, "Decision tree");
  w.TreeXml(0, 2, "<tree/>");
  w.TreeXml(0, 3, "<node id='1'/>", 1);
  w.TreeXml(0, 6, "");
  w.ModelPMML({{0, 0, 0, "Regression model"},
               {1, 0, 0, "<PMML version='4.3'/>"},
               {2, 1, 0, "<statistics/>"},
               {5, 0, 0, " (final)"}},
              2, 7);
  w.InteractiveJson(0, 0, "Map of regions");
  w.InteractiveJson(0, 16, "{\"type\":\"map\"}");
  w.OutlineText("Graph");
  OneCountTable(w, 3, "Case Processing Summary", "Cases", 100);
  w.EndTable(3);
  w.String(7, "Case Processing Summary", 0);
  w.ScratchTable(7);
  w.EndNode();
  w.EndProcedure();
}

void OmSampleStreams::LongTexts(OmStreamWriter& w, std::int64_t id, std::size_t chunkedBytes) {
  w.BeginProcedure(id, Settings("Text"));
  std::string chunked(chunkedBytes, 'x');
  for (std::size_t i = 0; i < chunked.size(); i += 64) chunked[i] = char('a' + (i / 64) % 26);
  w.String(1, chunked, 1);
  w.LongString(2, 1, "Title in ", "pieces", 4);
  w.BeginTable(4, 2, 1);
  w.LongStringPiece(3, 2, "Dim", "", false);
  w.LongStringPiece(3, 2, "", "ension", false);
  w.LongStringPiece(3, 2, "s", "", true);
  w.CellDimension(4, 3);
  w.LongText(5, "first part, ", "second part, ", "third part");
  w.LongText(6, "A", "B", std::string(100, 'C'));
  w.Cell(4, 5, 6);
  w.LongString(7, 0, "translatable");
  w.LongText(8, "Value");
  w.Cell(4, 7, 8);
  w.EndTable(4);
  w.EndProcedure();
}

void OmSampleStreams::Bootstrapped(OmStreamWriter& w, std::int64_t id) {
  w.BeginProcedure(id, Settings("Bootstrap", "bootstrapped=1\n"));
  w.String(1, "Statistics", 0);
  Label(w, 2, "Statistics");
  w.BeginTable(5, 1, 2);
  Label(w, 3, "Statistics");
  w.CellDimension(5, 3);
  w.Number(4, 1.5, kFixed2);
  Label(w, 5, "Mean");
  w.Cell(5, 4, 5);
  w.EndTable(5);
  SvrBootstrapSpecs specs;
  specs.SetNSamples(200);
  specs.SetCILevelPct(90);
  specs.SetJackknifeBoundaries({2});
  specs.SetJackknifeList({{0.5, 0}, {0.25, 1}});
  w.EndProcedure(specs, 3, 11);
}
