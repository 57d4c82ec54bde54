// `omfactory render`: replays message streams into one factory session, as the server would feed
// a procedure's output, and writes the session's output tree as text, JSON or HTML, or exports it
// as tidy CSV, Markdown, LaTeX or an Excel workbook.
#pragma once

#include <ostream>
#include <string>
#include <vector>

class OmOutputTree;

class OmRenderCommand {
public:
  enum class Format { kText, kJson, kHtml, kCsv, kMarkdown, kLatex, kXlsx };

  struct Options {
    Format format = Format::kText;
    // Where the output goes; "" writes it to the command's output stream.
    std::string output;
    // The session's code page: the code page of the streams' texts.
    std::string codePage = "UTF-8";
    // The string-table root (the folder holding lang/<code>/); "" uses no string tables.
    std::string stringTables;
    // OMS requests: a JSON list and a file of binary records; "" for none.
    std::string omsJson;
    std::string omsRecords;
    std::vector<std::string> streams;
  };

  // Exit statuses: all went well; a stream was cut short or made the factory fail (the output
  // built so far is still written); an input file or option could not be used (nothing is
  // written).
  static constexpr int kOk = 0;
  static constexpr int kFailed = 1;
  static constexpr int kUnusable = 2;

  explicit OmRenderCommand(Options options);

  // Runs the command: the rendered output goes to out (unless Options::output names a file),
  // one line per problem to err. Returns the exit status.
  int Run(std::ostream& out, std::ostream& err) const;

  // The tree as the format shows it, texts converted from codePage to UTF-8. The exports
  // (CSV, Markdown, LaTeX) are written as they are made; a workbook is made in a temporary file
  // and copied to out (WriteFile writes it in place).
  static void Write(OmOutputTree& tree, Format format, const std::string& codePage, std::ostream& out);
  static void WriteFile(OmOutputTree& tree, Format format, const std::string& codePage,
                        const std::string& path);
  static std::string Render(OmOutputTree& tree, Format format, const std::string& codePage);

  // The format a file name's extension asks for (.txt .json .html .htm .csv .md .markdown .tex
  // .xlsx);
  // false when it names none of them.
  static bool FormatOfFileName(const std::string& path, Format& format);

  // Tables with more grid positions than this are described rather than laid out in text and
  // HTML, so that a damaged stream cannot make the tool exhaust memory.
  static constexpr std::size_t kMaxGridCells = 1000000;

private:
  Options _options;
};
