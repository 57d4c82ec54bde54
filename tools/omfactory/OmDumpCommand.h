// `omfactory dump`: lists the records of a stream file, one line each: record number, byte
// offset, code name, payload length and the decoded fields.
#pragma once

#include <ostream>
#include <string>

class OmDumpCommand {
public:
  explicit OmDumpCommand(std::string path);

  // Writes the listing to out and problems to err; returns 0, 1 when the stream is cut short
  // inside a record (the complete records are listed), 2 when the file is not a usable stream.
  int Run(std::ostream& out, std::ostream& err) const;

private:
  std::string _path;
};
