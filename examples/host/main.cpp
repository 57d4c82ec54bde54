// A server's view of omfactory: one session with an output tree, the installed string tables and
// an OMS request, an observer that prints each finished procedure's outline as it arrives, and a
// stream fed record by record. usage: omf_host [STREAM|-]   (- or nothing: standard input)
#include <omfactory/omfactory.h>

#include <cstdint>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

// Prints the outline of each procedure the session finishes, then keeps it.
class OutlinePrinter : public OmFactory::Observer {
public:
  void ProcedureOutput(OmOutputTree& procTree) override {
    for (OmOutputTree::Node node = procTree.Root(); !node.IsEnd(); node = node.Next()) {
      if (!node.Value()) continue;
      std::cout << std::string(2 * std::size_t(node.Level()), ' ') << node.Value()->KindName()
                << ": " << node.Value()->LabelText() << '\n';
    }
  }
  bool WantsOutput() override { return true; }
};

}  // namespace

int main(int argc, char** argv) {
  const std::string path = argc > 1 ? argv[1] : "-";
  std::vector<std::uint8_t> bytes;
  if (path == "-") {
    bytes.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
  }
  try {
    OmStreamReader reader = path == "-" ? OmStreamReader(std::move(bytes)) : OmStreamReader::FromFile(path);

    // Every table and heading, but not the notes tables.
    OMSObjectSelector request;
    request.SelectType(16 | 32);
    request.ShowNotesTables(false);
    const std::vector<OMSObjectSelector> requests{request};

    OmOutputTree tree;
    // No string-table folder: the session uses the tables installed with the library.
    OmFactory session(&tree, std::string(), "UTF-8", requests);
    OutlinePrinter printer;
    session.Register(&printer);

    OmStreamRecord record;
    const std::uint8_t none = 0;
    while (reader.Next(record)) {
      session.Message(record.code, unsigned(record.payload.size()),
                      record.payload.empty() ? &none : record.payload.data());
    }
    for (const std::string& warning : session.Warnings()) std::cerr << "warning: " << warning << '\n';
    std::cout << "procedures failed and recovered: " << session.RecoveredErrorCount() << '\n';
    return session.RecoveredErrorCount() == 0 ? 0 : 1;
  } catch (const OMSException& e) {
    std::cerr << "omf_host: " << e.what() << '\n';
    return 2;
  }
}
