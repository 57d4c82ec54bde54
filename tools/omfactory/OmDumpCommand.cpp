#include "tools/omfactory/OmDumpCommand.h"

#include <filesystem>
#include <iomanip>
#include <optional>
#include <utility>

#include "platform/errors/OMSException.h"
#include "platform/stream/OmRecordDescriber.h"
#include "platform/stream/OmStreamReader.h"
#include "tools/omfactory/OmTool.h"

OmDumpCommand::OmDumpCommand(std::string path) : _path(std::move(path)) {}

int OmDumpCommand::Run(std::ostream& out, std::ostream& err) const {
  std::error_code ec;
  if (!std::filesystem::exists(_path, ec)) {
    err << "omfactory: " << _path << ": no such file\n";
    return 2;
  }
  if (std::filesystem::is_directory(_path, ec)) {
    err << "omfactory: " << _path << ": is a folder, not a stream file\n";
    return 2;
  }
  std::optional<OmStreamReader> reader;
  try {
    reader.emplace(OmStreamReader::FromFile(_path));
  } catch (const OMSException& e) {
    err << "omfactory: " << _path << ": " << OmTool::Reason(e) << "\n";
    return 2;
  }
  OmRecordDescriber describer;
  OmStreamRecord record;
  try {
    for (;;) {
      const std::size_t offset = reader->Offset();
      if (!reader->Next(record)) break;
      out << std::setw(6) << reader->RecordCount() << "  @" << std::left << std::setw(8) << offset
          << std::right << "  " << describer.Describe(record) << "\n";
    }
  } catch (const OMSException& e) {
    out.flush();
    err << "omfactory: " << _path << ": " << OmTool::Reason(e) << " (record " << e.Value1()
        << " at offset " << e.Value2() << ")\n";
    return 1;
  }
  out << reader->RecordCount() << " records\n";
  return 0;
}
