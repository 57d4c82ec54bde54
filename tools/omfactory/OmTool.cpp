#include "tools/omfactory/OmTool.h"

#include <filesystem>

#include "platform/errors/OMSException.h"
#include "tools/omfactory/OmDumpCommand.h"
#include "tools/omfactory/OmRenderCommand.h"

namespace {

constexpr int kUsageError = 2;

int UsageError(std::ostream& err, const std::string& what) {
  err << "omfactory: " << what << "\n" << OmTool::Usage();
  return kUsageError;
}

}  // namespace

std::string OmTool::Usage() {
  return "usage: omfactory render [--format text|json|html|csv|markdown|latex|xlsx]\n"
         "                        [-o FILE] [--code-page CP] [--string-tables DIR] [--oms FILE]\n"
         "                        [--oms-record FILE] STREAM...\n"
         "         (without --format, the -o file's extension chooses: .txt .json .html .csv .md .tex .xlsx)\n"
         "       omfactory dump STREAM\n";
}

std::string OmTool::Reason(const OMSException& e) {
  const std::string& m = e.Message();
  const std::size_t dash = m.find(" -- ");
  return dash == std::string::npos ? m : m.substr(dash + 4);
}

std::string OmTool::FindStringTables(const std::string& executable) {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (executable.empty()) return std::string();
  fs::path dir = fs::absolute(fs::path(executable), ec).parent_path();
  if (ec) return std::string();
  for (int up = 0; up < 16 && !dir.empty(); ++up) {
    const fs::path candidate = dir / "stringtables";
    if (fs::is_directory(candidate / "lang", ec)) return candidate.lexically_normal().string();
    // Installed: <prefix>/bin/omfactory beside <prefix>/share/omfactory/stringtables.
    const fs::path installed = dir / "share" / "omfactory" / "stringtables";
    if (fs::is_directory(installed / "lang", ec)) return installed.lexically_normal().string();
    if (dir == dir.parent_path()) break;
    dir = dir.parent_path();
  }
  return std::string();
}

int OmTool::Main(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                 const std::string& executable) {
  if (args.empty()) return UsageError(err, "no command given");
  const std::string& command = args[0];
  if (command == "-h" || command == "--help" || command == "help") {
    out << Usage();
    return 0;
  }

  if (command == "dump") {
    if (args.size() != 2 || args[1].empty() || (args[1][0] == '-' && args[1] != "-")) {
      return UsageError(err, "dump takes one stream file");
    }
    return OmDumpCommand(args[1]).Run(out, err);
  }

  if (command != "render") return UsageError(err, "unknown command \"" + command + "\"");

  OmRenderCommand::Options options;
  bool tablesGiven = false;
  bool formatGiven = false;
  bool optionsEnded = false;
  for (std::size_t i = 1; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (optionsEnded || arg.empty() || arg[0] != '-') {
      options.streams.push_back(arg);
      continue;
    }
    if (arg == "--") {
      optionsEnded = true;
      continue;
    }
    // "--name=value" or "--name value".
    std::string name = arg;
    std::string value;
    bool inlineValue = false;
    if (const std::size_t eq = arg.find('='); arg.rfind("--", 0) == 0 && eq != std::string::npos) {
      name = arg.substr(0, eq);
      value = arg.substr(eq + 1);
      inlineValue = true;
    }
    const bool known = name == "--format" || name == "-o" || name == "--output" ||
                       name == "--code-page" || name == "--string-tables" || name == "--oms" ||
                       name == "--oms-record";
    if (!known) return UsageError(err, "unknown option \"" + name + "\"");
    if (!inlineValue) {
      if (i + 1 >= args.size()) return UsageError(err, name + " needs a value");
      value = args[++i];
    }
    if (value.empty()) return UsageError(err, name + " needs a value");
    if (name == "--format") {
      if (value == "text") {
        options.format = OmRenderCommand::Format::kText;
      } else if (value == "json") {
        options.format = OmRenderCommand::Format::kJson;
      } else if (value == "html") {
        options.format = OmRenderCommand::Format::kHtml;
      } else if (value == "csv") {
        options.format = OmRenderCommand::Format::kCsv;
      } else if (value == "markdown" || value == "md") {
        options.format = OmRenderCommand::Format::kMarkdown;
      } else if (value == "latex" || value == "tex") {
        options.format = OmRenderCommand::Format::kLatex;
      } else if (value == "xlsx") {
        options.format = OmRenderCommand::Format::kXlsx;
      } else {
        return UsageError(err, "unknown format \"" + value + "\" (text, json, html, csv, markdown, latex or xlsx)");
      }
      formatGiven = true;
    } else if (name == "-o" || name == "--output") {
      options.output = value;
    } else if (name == "--code-page") {
      options.codePage = value;
    } else if (name == "--string-tables") {
      options.stringTables = value;
      tablesGiven = true;
    } else if (name == "--oms") {
      options.omsJson = value;
    } else {
      options.omsRecords = value;
    }
  }
  if (options.streams.empty()) return UsageError(err, "render needs at least one stream file");
  if (!formatGiven && !options.output.empty()) {
    OmRenderCommand::FormatOfFileName(options.output, options.format);
  }
  if (!tablesGiven) {
    options.stringTables = FindStringTables(executable);
    if (options.stringTables.empty()) {
      err << "omfactory: warning: no stringtables/ folder found beside the executable; texts are "
             "not translated (use --string-tables DIR)\n";
    }
  }
  return OmRenderCommand(options).Run(out, err);
}
