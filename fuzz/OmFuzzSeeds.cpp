// omf_fuzz_seeds OUTDIR [STREAM.oms...]: writes the seed corpora of the fuzz targets, one folder
// per target under OUTDIR: session/ (OmSessionInput form), stream/ (stream files) and selector/
// (OMS request records). The sample streams go in in both byte orders, the recorded examples named
// on the command line as well. Each seed holds one procedure cut to kSeedBytes: a seed of a whole
// recorded stream makes every execution replay megabytes, and libFuzzer's -max_len would cut it
// in the middle of a record anyway.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "backend/omsopmgr/OMSColumns.h"
#include "backend/omsopmgr/OMSObjectSelector.h"
#include "backend/omsopmgr/OMSSelector.h"
#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionInput.h"
#include "platform/errors/OMSException.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamReader.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

namespace fs = std::filesystem;

void Write(const fs::path& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
  if (!out) throw OMSException("omf_fuzz_seeds -- cannot write " + path.string());
}

void Write(const fs::path& path, const std::string& bytes) {
  Write(path, std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

std::vector<std::uint8_t> ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
}

// The largest seed; fuzz/run.sh gives the targets the same -max_len.
constexpr std::size_t kSeedBytes = 4096;
constexpr std::size_t kRecordHeaderBytes = 6;

bool IsBegin(const OmStreamRecord& r) {
  return r.code == std::int16_t(MessageCode::IPC_BEGIN_PROCEDURE);
}
bool IsEnd(const OmStreamRecord& r) {
  return r.code == std::int16_t(MessageCode::IPC_END_PROCEDURE);
}

// One record list per procedure, each led by the records before the first procedure (the
// byte-order probe and the session's settings), then whatever came since the previous procedure
// and the procedure itself. A procedure that does not fit in kSeedBytes keeps its first records
// and its end messages: what is cut is more of the same tables.
std::vector<std::vector<OmStreamRecord>> OneProcedureEach(const std::vector<OmStreamRecord>& all) {
  std::vector<OmStreamRecord> lead;
  auto at = all.begin();
  for (; at != all.end() && !IsBegin(*at); ++at) lead.push_back(*at);
  if (at == all.end()) return {lead};

  std::vector<std::vector<OmStreamRecord>> procedures;
  while (at != all.end()) {
    auto last = at + 1;
    while (last != all.end() && !IsBegin(*last)) ++last;
    auto endMessages = last;
    while (endMessages != at && IsEnd(*(endMessages - 1))) --endMessages;

    std::vector<OmStreamRecord> procedure = lead;
    std::size_t bytes = 0;
    for (const OmStreamRecord& r : procedure) bytes += kRecordHeaderBytes + r.payload.size();
    for (auto r = endMessages; r != last; ++r) bytes += kRecordHeaderBytes + r->payload.size();
    for (auto r = at; r != endMessages; ++r) {
      bytes += kRecordHeaderBytes + r->payload.size();
      if (bytes > kSeedBytes && r != at) break;
      procedure.push_back(*r);
    }
    procedure.insert(procedure.end(), endMessages, last);
    procedures.push_back(std::move(procedure));
    at = last;
  }
  return procedures;
}

std::vector<std::uint8_t> StreamFile(const std::vector<OmStreamRecord>& records) {
  OmStreamWriter w;
  for (const OmStreamRecord& r : records) w.Record(r.code, r.payload);
  return w.FileBytes();
}

// Writes name (or name-2, name-3 ... for a stream of several procedures) in both forms.
std::size_t WriteSeeds(const fs::path& root, const std::string& name, std::uint8_t flags,
                       const std::vector<OmStreamRecord>& records, bool streamForm) {
  std::size_t written = 0;
  const std::vector<std::vector<OmStreamRecord>> pieces = OneProcedureEach(records);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const std::string piece = i == 0 ? name : name + "-" + std::to_string(i + 1);
    const std::vector<std::uint8_t> session = OmSessionInput::Encode(flags, pieces[i]);
    // A seed that is too long even when cut (one long text) would only be cut by -max_len.
    if (session.size() <= kSeedBytes) {
      Write(root / "session" / piece, session);
      ++written;
    }
    if (streamForm) {
      const std::vector<std::uint8_t> file = StreamFile(pieces[i]);
      if (file.size() <= kSeedBytes) {
        Write(root / "stream" / (piece + ".oms"), file);
        ++written;
      }
    }
  }
  return written;
}

// Request records: everything selected, one with IF and EXCEPTIF subcommands, instances and LAST,
// one with dimension-name columns, one with positional columns and every option set.
std::vector<std::string> SelectorRecords() {
  std::vector<OMSObjectSelector> requests(4);
  requests[0].SelectType(0x1FF);

  OMSSelector ifPart;
  ifPart.AddCommands("DESCRIPTIVES");
  ifPart.AddCommands("FREQ*");
  ifPart.AddSubtypes("Descriptive Statistics");
  ifPart.AddNames("Statistics");
  ifPart.AddInstances(1);
  ifPart.AddInstances(3);
  ifPart.AddLastInstance();
  OMSSelector exceptPart;
  exceptPart.AddCommands("GRAPH");
  exceptPart.AddInstances(2);
  requests[1].SelectType(16 | 8);
  requests[1].AddIfOption(ifPart);
  requests[1].AddExceptIfOption(exceptPart);
  requests[1].ShowNotesTables(false);

  OMSColumns names;
  names.AddColumn(std::string("Statistics"));
  names.AddColumn(std::string("Variables"));
  requests[2].SelectType(16);
  requests[2].SetColumn(names);
  requests[2].SetOMSTag("names");

  OMSColumns positions;
  positions.AddColumn(OmParsedColumn("R1"));
  positions.AddColumn(OmParsedColumn("CALL"));
  positions.AddColumn(OmParsedColumn("L2"));
  OMSObjectSelector& all = requests[3];
  all.SelectType(0x1FF);
  all.SetColumn(positions);
  all.SetDestinationIsViewer(true);
  all.SetNumberedColumnName("Row", false);
  all.SetExportImages(true);
  all.SetExportImageMaps(true);
  all.SetImageFormat(2);
  all.SetImageRootName("img");
  all.SetChartSize(75.5, "75.5%");
  all.SetTableStyle("Academic");
  all.SetChartFormat(OMSObjectSelector::kImageSvg);
  all.SetTreeFormat(OMSObjectSelector::kImagePng);
  all.SetModelFormat(OMSObjectSelector::kImageJpeg);
  all.SetPivotingAllowed(false);
  all.SetJavaScriptFile("view.js");
  all.SetReportTitle("Report");
  all.addURL("Home", "index.html");
  all.SetOMSTag("everything");
  all.SetNoWarning();

  std::vector<std::string> records;
  for (const OMSObjectSelector& request : requests) {
    std::ostringstream out;
    out << request;
    records.push_back(out.str());
  }
  return records;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: omf_fuzz_seeds OUTDIR [STREAM.oms...]\n";
    return 2;
  }
  try {
    const fs::path root(argv[1]);
    const fs::path session = root / "session";
    const fs::path stream = root / "stream";
    const fs::path selector = root / "selector";
    for (const fs::path& dir : {session, stream, selector}) fs::create_directories(dir);

    std::size_t written = 0;
    for (OmSampleStreams::ByteOrder order :
         {OmSampleStreams::ByteOrder::LittleEndian, OmSampleStreams::ByteOrder::BigEndian}) {
      const std::string suffix = order == OmSampleStreams::ByteOrder::BigEndian ? "-be" : "-le";
      for (const OmSampleStreams::Named& sample : OmSampleStreams::All(order)) {
        const std::uint8_t flags =
            order == OmSampleStreams::ByteOrder::BigEndian ? OmSessionInput::kEarlierOutput : 0;
        written += WriteSeeds(root, sample.name + suffix, flags, sample.stream.Records(), true);
      }
    }
    // The same records on a session sending to the viewer, after an earlier procedure.
    for (const OmSampleStreams::Named& sample :
         OmSampleStreams::All(OmSampleStreams::ByteOrder::LittleEndian)) {
      const std::uint8_t flags = OmSessionInput::kDestViewer | OmSessionInput::kEarlierOutput;
      written += WriteSeeds(root, sample.name + "-viewer", flags,
                            sample.stream.Records(), false);
    }

    for (int i = 2; i < argc; ++i) {
      const fs::path path(argv[i]);
      std::vector<OmStreamRecord> records;
      try {
        OmStreamReader reader(ReadFile(path));
        for (OmStreamRecord record; reader.Next(record);) records.push_back(record);
      } catch (const OMSException&) {
        // A cut file: its whole records still make seeds.
      }
      if (!records.empty()) written += WriteSeeds(root, "example-" + path.stem().string(), 0, records, true);
    }

    const std::vector<std::string> records = SelectorRecords();
    for (std::size_t i = 0; i < records.size(); ++i) {
      Write(selector / ("request" + std::to_string(i) + "-le"), std::string(1, '\0') + records[i]);
      ++written;
    }
    std::cout << "omf_fuzz_seeds: " << written << " seeds in " << root.string() << "\n";
  } catch (const std::exception& e) {
    std::cerr << "omf_fuzz_seeds: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
