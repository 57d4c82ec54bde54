#include "platform/stream/OmStreamReader.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

using ByteOrder = OmStreamWriter::ByteOrder;

// The records a reader hands out before it throws, and what it throws: record number, offset.
struct Failure {
  std::vector<OmStreamRecord> records;
  std::string message;
  double number = 0;
  double offset = 0;
};

} // namespace
