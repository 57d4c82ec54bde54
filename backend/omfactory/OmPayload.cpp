#include "backend/omfactory/OmPayload.h"

#include "platform/errors/OMSException.h"

void OmPayload::FailId(std::int64_t id, const char* field) const {
  Fail(std::string(field) + " out of range", double(id));
}

void OmPayload::FailLength(std::int64_t length, std::int64_t available, const char* field) const {
  Fail(std::string(field) + " length out of range", double(length), double(available));
}

void OmPayload::Fail(const std::string& condition, double value1, double value2) const {
  const char* name = MessageCodeNameOf(_code);
  throw OMSException(std::string("OmFactory::Data::ProcessMessage() -- ") +
                         (name != nullptr ? name : "IPC_UNKNOWN") + " " + condition,
                     value1, value2);
}
