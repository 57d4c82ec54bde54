// The `omfactory` command line: parses the arguments and runs `render` or `dump`. main() is a
// thin wrapper so that tests run the same code with their own output streams.
#pragma once

#include <ostream>
#include <string>
#include <vector>

class OMSException;

class OmTool {
public:
  // args excludes the program name; executable is the path of the running program, from which
  // the default string-table root is found. Returns the exit status (2 for a usage error).
  static int Main(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                  const std::string& executable);

  // The repository's stringtables/ folder: the first folder named so, holding lang/, in the
  // executable's folder or one above it. "" when there is none.
  static std::string FindStringTables(const std::string& executable);

  static std::string Usage();

  // An exception's message without its "Class::Operation -- " prefix, which means nothing to a
  // user of the tool.
  static std::string Reason(const OMSException& e);
};
