// Preconditions of the OMS request records. The host builds the records, often in another
// process, so they are checked in every build and raised as OMSException naming the source and
// the condition ("backend/omsopmgr/OMSSelector: inst > 0") instead of aborting.
#pragma once

#include <string>

#include "platform/errors/OMSException.h"

inline void OMSRequire(bool holds, const char* source, const char* condition, double value1 = 0,
                       double value2 = 0) {
  if (!holds) throw OMSException(std::string(source) + ": " + condition, value1, value2);
}
