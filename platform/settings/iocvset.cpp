#include "platform/settings/iocvset.h"

#include <map>

#include "platform/errors/OMSException.h"

namespace {

struct IocvRegistry {
  std::map<std::int32_t, std::string> _names;
  std::vector<IocvConversionPair> _pairs;
};

IocvRegistry& Registry() {
  static IocvRegistry registry;
  return registry;
}

} // namespace

void iocvset_(const std::int64_t& kind, const void* record) {
  if (record == nullptr)
    throw OMSException("iocvset_ -- record == NULL", static_cast<double>(kind));
  if (kind == kIocvConversionName) {
    const auto* option = static_cast<const IocvConversionName*>(record);
    // The name is read up to its zero byte but never past the 17 bytes reserved for it.
    std::size_t length = 0;
    while (length < sizeof option->name && option->name[length] != '\0') ++length;
    Registry()._names[option->value] = std::string(option->name, length);
  } else if (kind == kIocvConversionPair) {
    Registry()._pairs.push_back(*static_cast<const IocvConversionPair*>(record));
  } else {
    throw OMSException("iocvset_ -- unknown option kind", static_cast<double>(kind));
  }
}

std::string IocvConversionNameOf(std::int32_t value) {
  auto found = Registry()._names.find(value);
  return found == Registry()._names.end() ? std::string() : found->second;
}

std::vector<std::pair<std::int32_t, std::string>> IocvConversionNames() {
  return {Registry()._names.begin(), Registry()._names.end()};
}

std::vector<IocvConversionPair> IocvConversionPairs() { return Registry()._pairs; }

void IocvReset() {
  Registry()._names.clear();
  Registry()._pairs.clear();
}
