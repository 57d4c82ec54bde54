// omf_fuzz_seeds OUTDIR [STREAM.oms...]: writes the seed corpora of the fuzz targets, one folder
// per target under OUTDIR: session/ (OmSessionInput form), stream/ (stream files) and selector/
// (OMS request records). The sample streams go in in both byte orders; every stream file named
// on the command line (the recorded examples) goes in as well, readable or not.
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
#include "platform/stream/OmStreamReader.h"

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

// The session form of a stream file, or nothing when the file is no stream at all.
bool SessionForm(const std::vector<std::uint8_t>& file, std::uint8_t flags,
                 std::vector<std::uint8_t>& out) {
  std::vector<OmStreamRecord> records;
  try {
    OmStreamReader reader(file);
    OmStreamRecord record;
    while (reader.Next(record)) records.push_back(record);
  } catch (const OMSException&) {
    if (records.empty()) return false;
  }
  out = OmSessionInput::Encode(flags, records);
  return true;
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
        const std::vector<std::uint8_t> file = sample.stream.FileBytes();
        Write(stream / (sample.name + suffix + ".oms"), file);
        Write(session / (sample.name + suffix), OmSessionInput::Encode(0, sample.stream.Records()));
        written += 2;
      }
    }
    // The same records on a session told to swap from the start and sending to the viewer.
    for (const OmSampleStreams::Named& sample :
         OmSampleStreams::All(OmSampleStreams::ByteOrder::LittleEndian)) {
      Write(session / (sample.name + "-viewer"),
            OmSessionInput::Encode(OmSessionInput::kDestViewer, sample.stream.Records()));
      ++written;
    }

    for (int i = 2; i < argc; ++i) {
      const fs::path path(argv[i]);
      const std::vector<std::uint8_t> file = ReadFile(path);
      const std::string name = "example-" + path.stem().string();
      Write(stream / (name + ".oms"), file);
      std::vector<std::uint8_t> encoded;
      if (SessionForm(file, 0, encoded)) Write(session / name, encoded);
      written += 2;
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
