// Fuzz target: OMS request records read through OMSObjectSelector's operator>>, from a machine of
// either byte order (bit 0 of the first byte), then asked what they select. A record is either
// read or refused with an OMSException; one that was read writes back to a record that reads to
// the same request.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "backend/omsopmgr/OMSObjectSelector.h"
#include "platform/errors/OMSException.h"

namespace {

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "omfactory fuzz check failed: %s\n", what);
  std::abort();
}

void Ask(const OMSObjectSelector& selector) {
  static constexpr short kTypes[] = {0, 1, 2, 4, 8, 16, 32, 64, 128, 256, -1, 0x7FFF};
  for (short type : kTypes) {
    selector.IsObjectSelected(type, "DESCRIPTIVES", "Descriptive Statistics", "Statistics");
    selector.IsObjectSelected(type, "", "", "");
  }
  for (int n : {-1, 0, 1, 2, 1000}) selector.IsInstanceSelected(n);
  selector.IsLastInstanceSelected();
  selector.IsLastInstanceExcluded();
  const OMSColumns& columns = selector.GetColumn();
  for (OmParsedColumn::COLUMNAXIS axis : {OmParsedColumn::kROWS, OmParsedColumn::kCOLUMNS,
                                          OmParsedColumn::kLAYERS}) {
    try {
      columns.HasAxis(axis);
      columns.HasAxisAll(axis);
    } catch (const OMSException&) {
      // A query whose precondition the column form does not meet.
    }
  }
}

std::string Written(const OMSObjectSelector& selector) {
  std::ostringstream out;
  out << selector;
  if (out.fail()) Fail("a request read from a record cannot be written");
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::istringstream in(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  OMSObjectSelector selector;
  selector.SwapBytes((data[0] & 1) != 0);
  try {
    in >> selector;
  } catch (const OMSException&) {
    return 0;
  }
  Ask(selector);
  if (in.fail()) return 0;  // a string too long: the later fields kept their values

  const std::string first = Written(selector);
  OMSObjectSelector again;
  std::istringstream back(first);
  try {
    back >> again;
  } catch (const OMSException&) {
    Fail("a written request does not read back");
  }
  if (Written(again) != first) Fail("a written request reads back to another request");
  return 0;
}
