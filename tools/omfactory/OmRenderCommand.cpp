#include "tools/omfactory/OmRenderCommand.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <sstream>
#include <streambuf>
#include <utility>

#include <stdlib.h>
#include <unistd.h>

#include "backend/omfactory/OmFactory.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmTextRenderer.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamReader.h"
#include "platform/strings/CodePage.h"
#include "platform/stringtables/PathFactory.h"
#include "tools/omfactory/OMSRequestFile.h"
#include "tools/omfactory/OmTool.h"
#include "tools/render/OmExport.h"
#include "tools/render/OmHtmlRenderer.h"
#include "tools/render/OmJsonRenderer.h"
#include "tools/render/OmTableLayout.h"
#include "tools/render/OmXlsxExport.h"

namespace {

// The host side of the session: every finished procedure goes into the output tree.
class KeepAll : public OmFactory::Observer {
public:
  bool WantsOutput() override { return true; }
};

// Passes text on to out line by line, converted from a code page to UTF-8.
class Utf8Lines : public std::streambuf {
public:
  Utf8Lines(std::ostream& out, std::string codePage) : _out(out), _codePage(std::move(codePage)) {}
  ~Utf8Lines() override { Flush(); }
  Utf8Lines(const Utf8Lines&) = delete;
  Utf8Lines& operator=(const Utf8Lines&) = delete;

  void Flush() {
    if (!_line.empty()) _out << ToUtf8(_line, _codePage);
    _line.clear();
  }

protected:
  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    _line += traits_type::to_char_type(c);
    if (_line.back() == '\n') Flush();
    return c;
  }
  std::streamsize xsputn(const char* s, std::streamsize n) override {
    for (std::streamsize i = 0; i < n; ++i) overflow(traits_type::to_int_type(s[i]));
    return n;
  }

private:
  std::ostream& _out;
  std::string _codePage;
  std::string _line;
};

// The text renderer's outline, with tables too large to lay out described instead.
void WriteText(OmOutputTree& tree, std::ostream& out) {
  const OmTextRenderer renderer;
  const OmTextRenderer::Options defaults;
  for (OmOutputTree::Node n = tree.Begin(); n != tree.End();) {
    OmOutputPart* part = n.Value();
    if (part != nullptr && !part->_keep && ExcludedPartHidesItsSubtree(*part)) {
      n = n.SubtreeEnd().Here();
      continue;
    }
    if (part != nullptr) {
      const int level = std::max(n.Level() - 1, 0);
      auto* table = dynamic_cast<const OmPivotTable*>(part);
      if (table != nullptr && OmTableLayout(*table).GridSize() > OmRenderCommand::kMaxGridCells) {
        const OmCellText* title = table->TableTitle() ? table->TableTitle() : table->Label();
        const std::string pad(std::size_t(level * defaults.indent), ' ');
        const std::string text = title ? title->Text() : std::string();
        out << (text.empty() ? "" : pad + text) << "\n" << pad << "(not laid out: " << table->NDimensions()
            << " dimensions with more than " << OmRenderCommand::kMaxGridCells << " positions)\n\n";
      } else {
        renderer.WritePart(out, *part, level);
      }
    }
    n = n.Next();
  }
}

}  // namespace

OmRenderCommand::OmRenderCommand(Options options) : _options(std::move(options)) {}

std::string OmRenderCommand::Render(OmOutputTree& tree, Format format, const std::string& codePage) {
  std::ostringstream out;
  Write(tree, format, codePage, out);
  return out.str();
}

void OmRenderCommand::Write(OmOutputTree& tree, Format format, const std::string& codePage,
                            std::ostream& out) {
  switch (format) {
    case Format::kCsv: OmExport(OmExport::Kind::kCsv, codePage, kMaxGridCells).Write(tree, out); return;
    case Format::kMarkdown: OmExport(OmExport::Kind::kMarkdown, codePage, kMaxGridCells).Write(tree, out); return;
    case Format::kLatex: OmExport(OmExport::Kind::kLatex, codePage, kMaxGridCells).Write(tree, out); return;
    case Format::kJson: {
      OmJsonRenderer::Options options;
      options.codePage = codePage;
      OmJsonRenderer(options).Write(tree, out);
      return;
    }
    case Format::kHtml: {
      OmHtmlRenderer::Options options;
      options.codePage = codePage;
      options.maxGridCells = kMaxGridCells;
      OmHtmlRenderer(options).Write(tree, out);
      return;
    }
    case Format::kText: {
      if (CodePage::Get(codePage).IsUtf8()) {
        WriteText(tree, out);
        return;
      }
      Utf8Lines converter(out, codePage);
      std::ostream lines(&converter);
      WriteText(tree, lines);
      converter.Flush();
      return;
    }
    case Format::kXlsx: {
      // The workbook library writes files only.
      std::string path = (std::filesystem::temp_directory_path() / "omfactory-XXXXXX.xlsx").string();
      const int fd = mkstemps(path.data(), 5);
      if (fd < 0) throw OMSException("OmRenderCommand::Write -- no temporary file for the workbook");
      close(fd);
      try {
        WriteFile(tree, format, codePage, path);
        std::ifstream in(path, std::ios::binary);
        out << in.rdbuf();
      } catch (...) {
        std::filesystem::remove(path);
        throw;
      }
      std::filesystem::remove(path);
      return;
    }
  }
}

void OmRenderCommand::WriteFile(OmOutputTree& tree, Format format, const std::string& codePage,
                                const std::string& path) {
  if (format == Format::kXlsx) {
    OmXlsxExport(codePage, kMaxGridCells).Write(tree, path);
    return;
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  Write(tree, format, codePage, file);
  file.flush();
  if (!file) throw OMSException("OmRenderCommand::WriteFile -- writing failed: " + path);
}

bool OmRenderCommand::FormatOfFileName(const std::string& path, Format& format) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) c = char(std::tolower(static_cast<unsigned char>(c)));
  const std::pair<const char*, Format> known[] = {
      {".txt", Format::kText}, {".json", Format::kJson}, {".html", Format::kHtml},
      {".htm", Format::kHtml}, {".csv", Format::kCsv}, {".md", Format::kMarkdown},
      {".markdown", Format::kMarkdown}, {".tex", Format::kLatex},
      {".xlsx", Format::kXlsx}};
  for (const auto& [name, f] : known) {
    if (extension == name) {
      format = f;
      return true;
    }
  }
  return false;
}

int OmRenderCommand::Run(std::ostream& out, std::ostream& err) const {
  const Options& o = _options;
  try {
    CodePage::Get(o.codePage);
  } catch (const OMSException& e) {
    err << "omfactory: code page \"" << o.codePage << "\" cannot be used: " << OmTool::Reason(e) << "\n";
    return kUnusable;
  }

  std::vector<OMSObjectSelector> requests;
  try {
    // Patterns are upper-cased as they are read: in the code page they will be matched in.
    const CodePage::Scope scope(CodePage::Get(o.codePage));
    if (!o.omsJson.empty()) requests = OMSRequestFile::ReadJson(o.omsJson, o.codePage);
    if (!o.omsRecords.empty()) {
      for (OMSObjectSelector& r : OMSRequestFile::ReadRecords(o.omsRecords)) requests.push_back(std::move(r));
    }
  } catch (const OMSException& e) {
    err << "omfactory: OMS requests: " << e.Message() << "\n";
    return kUnusable;
  }

  std::error_code ec;
  if (!o.stringTables.empty() &&
      !std::filesystem::is_directory(std::filesystem::path(o.stringTables) / "lang", ec)) {
    err << "omfactory: " << o.stringTables << ": not a string-table folder (no lang/ inside)\n";
    return kUnusable;
  }

  // Every stream is checked before any is fed, so that an unusable file leaves no output.
  std::vector<OmStreamReader> readers;
  for (const std::string& path : o.streams) {
    if (!std::filesystem::exists(path, ec)) {
      err << "omfactory: " << path << ": no such file\n";
      return kUnusable;
    }
    if (std::filesystem::is_directory(path, ec)) {
      err << "omfactory: " << path << ": is a folder, not a stream file\n";
      return kUnusable;
    }
    try {
      readers.push_back(OmStreamReader::FromFile(path));
    } catch (const OMSException& e) {
      err << "omfactory: " << path << ": " << OmTool::Reason(e) << "\n";
      return kUnusable;
    }
  }

  std::ofstream file;
  if (!o.output.empty()) {
    file.open(o.output, std::ios::binary | std::ios::trunc);
    if (!file) {
      err << "omfactory: " << o.output << ": cannot be written\n";
      return kUnusable;
    }
  }

  // Always set, so that a run without tables does not inherit the root of an earlier run.
  PathFactory::SetRoot(o.stringTables);
  OmOutputTree tree;
  int status = kOk;
  // Failing records reported one by one; the rest only counted.
  constexpr std::size_t kFailuresShown = 20;
  std::size_t failures = 0;
  {
    OmFactory session(&tree, o.stringTables, o.codePage, requests);
    // A request that names its destination decides whether output goes to the viewer.
    for (const OMSObjectSelector& request : requests) {
      if (request.GetViewerSpecified()) session.setDestViewer(request.GetDestinationIsViewer());
    }
    KeepAll observer;
    session.Register(&observer);
    const std::uint8_t none = 0;
    for (std::size_t s = 0; s < readers.size(); ++s) {
      const std::string& path = o.streams[s];
      OmStreamReader& reader = readers[s];
      OmStreamRecord record;
      try {
        for (;;) {
          const std::size_t offset = reader.Offset();
          if (!reader.Next(record)) break;
          const char* name = MessageCodeNameOf(record.code);
          auto where = [&] {
            return path + ": record " + std::to_string(reader.RecordCount()) + " at offset " +
                   std::to_string(offset) + " (" + (name ? name : "unknown code") + " " +
                   std::to_string(record.code) + ")";
          };
          const std::size_t recovered = session.RecoveredErrorCount();
          try {
            session.Message(record.code, unsigned(record.payload.size()),
                            record.payload.empty() ? &none : record.payload.data());
          } catch (const std::exception& e) {
            // The session could not recover: the rest of this stream is not fed.
            err << "omfactory: " << where() << " failed: " << e.what()
                << "; the rest of the stream is skipped\n";
            status = kFailed;
            break;
          }
          if (session.RecoveredErrorCount() != recovered && session.LastRecoveredError()) {
            // Recovered inside a procedure (its output is cut there) or dropped outside one. A
            // broken stream can fail on every later record: the first few say where and why.
            if (++failures <= kFailuresShown) {
              err << "omfactory: " << where() << " failed: " << session.LastRecoveredError()->what()
                  << "\n";
            }
            status = kFailed;
          }
        }
      } catch (const OMSException& e) {
        err << "omfactory: " << path << ": " << OmTool::Reason(e) << " (record " << e.Value1()
            << " at offset " << e.Value2() << "); the records before it were used\n";
        status = kFailed;
      }
      // A fed stream's bytes are not needed again: the output is built from the tree alone.
      OmStreamReader done = std::move(reader);
    }
    if (failures > kFailuresShown) {
      err << "omfactory: " << failures - kFailuresShown << " more failing records not shown\n";
    }
    for (const std::string& warning : session.Warnings()) err << "omfactory: warning: " << warning << "\n";
    if (session.Procedure() != nullptr) {
      err << "omfactory: warning: the last procedure did not end (no IPC_END_PROCEDURE); its "
             "output is not shown\n";
    }
  }

  if (o.format == Format::kXlsx && !o.output.empty()) {
    file.close();
    try {
      WriteFile(tree, o.format, o.codePage, o.output);
    } catch (const OMSException& e) {
      err << "omfactory: " << o.output << ": writing failed: " << OmTool::Reason(e) << "\n";
      return kUnusable;
    }
    return status;
  }
  std::ostream& sink = o.output.empty() ? out : file;
  Write(tree, o.format, o.codePage, sink);
  sink.flush();
  if (!sink) {
    err << "omfactory: " << (o.output.empty() ? std::string("output") : o.output)
        << ": writing failed\n";
    return kUnusable;
  }
  return status;
}
