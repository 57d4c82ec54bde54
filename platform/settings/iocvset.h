// Input/output conversion options set by the control messages IPC_CONVERSION_NAME (kind 2) and
// IPC_CONVERSION_PAIR (kind 3). The session hands each record to iocvset_; the options live in a
// process-wide registry that conversion code and tests read back.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Option kind 2: a value and its name (at most 16 bytes, zero-terminated within the 17 bytes).
struct IocvConversionName {
  std::int32_t value = 0;
  char name[17] = {};
};

// Option kind 3: two integers, in the order the message carries them.
struct IocvConversionPair {
  std::int32_t first = 0;
  std::int32_t second = 0;
};

inline constexpr std::int64_t kIocvConversionName = 2;
inline constexpr std::int64_t kIocvConversionPair = 3;

// Stores one option. The record must be the struct of the kind: IocvConversionName for 2,
// IocvConversionPair for 3. Another kind or a null record throws OMSException. A name for a value
// that already has one replaces it; pairs accumulate in arrival order. Like the session that calls
// it, the registry is used from one thread at a time.
void iocvset_(const std::int64_t& kind, const void* record);

// The name stored for a value, or "" when none was set.
std::string IocvConversionNameOf(std::int32_t value);
// Every (value, name) stored, by value.
std::vector<std::pair<std::int32_t, std::string>> IocvConversionNames();
// Every pair stored, in arrival order.
std::vector<IocvConversionPair> IocvConversionPairs();
// Forgets every option (a new session, or between tests).
void IocvReset();
