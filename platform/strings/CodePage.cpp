#include "platform/strings/CodePage.h"

#include <array>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>

#include <unicode/ucnv.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include "platform/errors/OMSException.h"

namespace {

enum class Kind { kUtf8, kSingleByte, kMultiByte };

constexpr UChar32 kNoChar = -1;
constexpr UChar32 kEscapeBase = 0xDC00;  // a byte b that forms no character decodes to U+DC00 + b

struct ConverterCloser {
  void operator()(UConverter* c) const { ucnv_close(c); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

// Opens a converter that stops at the first byte or character it cannot convert, so that the
// callers decide what such bytes become.
Converter OpenStrict(const std::string& icuName) {
  UErrorCode status = U_ZERO_ERROR;
  Converter c(ucnv_open(icuName.c_str(), &status));
  if (U_FAILURE(status)) throw OMSException("CodePage::Open -- converter unavailable: " + icuName);
  ucnv_setToUCallBack(c.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  ucnv_setFromUCallBack(c.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  return c;
}

bool IsDigits(std::string_view s) {
  if (s.empty()) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

// The converter for a code page name, or null when ICU knows no such name.
Converter OpenByName(std::string_view name) {
  std::vector<std::string> candidates;
  if (IsDigits(name)) {
    candidates.push_back("windows-" + std::string(name));
    candidates.push_back("cp" + std::string(name));
  } else {
    candidates.emplace_back(name);
  }
  for (const std::string& candidate : candidates) {
    UErrorCode status = U_ZERO_ERROR;
    Converter c(ucnv_open(candidate.c_str(), &status));
    if (U_SUCCESS(status) && c) return c;
  }
  return nullptr;
}

bool IsByteOrientedType(UConverterType type) {
  switch (type) {
    case UCNV_SBCS:
    case UCNV_MBCS:
    case UCNV_LATIN_1:
    case UCNV_UTF8:
    case UCNV_US_ASCII:
    case UCNV_CESU8:
      return true;
    default:
      return false;
  }
}

}  // namespace

struct CodePage::Data {
  std::string name;
  std::string icuName;
  Kind kind = Kind::kUtf8;
  int maxCharSize = 1;
  std::array<UChar32, 256> toUnicode{};                  // single-byte code pages
  std::unordered_map<UChar32, unsigned char> fromUnicode;  // single-byte code pages

  // Calls visit(offset, length, codePoint) for every character of text in order; codePoint is
  // kNoChar for a byte that forms no character. A character that decodes to several code points
  // reports the further ones with length 0.
  template <class Visit>
  void Walk(std::string_view text, Visit&& visit) const;
};

template <class Visit>
void CodePage::Data::Walk(std::string_view text, Visit&& visit) const {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const auto size = static_cast<int32_t>(text.size());
  switch (kind) {
    case Kind::kUtf8: {
      int32_t i = 0;
      while (i < size) {
        int32_t start = i;
        UChar32 c = 0;
        U8_NEXT(bytes, i, size, c);
        if (c < 0) {
          i = start + 1;
          c = kNoChar;
        }
        visit(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start), c);
      }
      return;
    }
    case Kind::kSingleByte:
      for (std::size_t i = 0; i < text.size(); ++i) visit(i, std::size_t{1}, toUnicode[bytes[i]]);
      return;
    case Kind::kMultiByte: {
      Converter converter = OpenStrict(icuName);
      const char* begin = text.data();
      const char* end = begin + text.size();
      const char* source = begin;
      int stalled = 0;
      while (source < end) {
        const char* start = source;
        UErrorCode status = U_ZERO_ERROR;
        UChar32 c = ucnv_getNextUChar(converter.get(), &source, end, &status);
        if (U_SUCCESS(status) && source == start && ++stalled < 8) {
          // A character that maps to several code points hands them out one call at a time.
          visit(static_cast<std::size_t>(start - begin), std::size_t{0}, c);
          continue;
        }
        stalled = 0;
        if (U_FAILURE(status) || source <= start) {
          ucnv_reset(converter.get());
          source = start + 1;
          c = kNoChar;
        }
        visit(static_cast<std::size_t>(start - begin), static_cast<std::size_t>(source - start), c);
      }
      return;
    }
  }
}

CodePage::CodePage(std::string_view name) : _my(std::make_unique<Data>()) {
  _my->name = std::string(name);
  const std::string quoted = "\"" + _my->name + "\"";
  if (name.empty() || name.find('\0') != std::string_view::npos)
    throw OMSException("CodePage::Get -- code page name empty or malformed: " + quoted);
  Converter converter = OpenByName(name);
  if (!converter) throw OMSException("CodePage::Get -- unknown code page " + quoted);
  UErrorCode status = U_ZERO_ERROR;
  _my->icuName = ucnv_getName(converter.get(), &status);
  const UConverterType type = ucnv_getType(converter.get());
  if (!IsByteOrientedType(type) || ucnv_getMinCharSize(converter.get()) != 1)
    throw OMSException("CodePage::Get -- not a byte-oriented code page: " + quoted);
  _my->maxCharSize = ucnv_getMaxCharSize(converter.get());
  if (type == UCNV_UTF8) {
    _my->kind = Kind::kUtf8;
  } else if (_my->maxCharSize == 1) {
    _my->kind = Kind::kSingleByte;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
    for (int b = 255; b >= 0; --b) {
      const char byte = static_cast<char>(b);
      UChar units[4];
      UErrorCode s = U_ZERO_ERROR;
      ucnv_reset(converter.get());
      int32_t n = ucnv_toUChars(converter.get(), units, 4, &byte, 1, &s);
      UChar32 c = kNoChar;
      if (U_SUCCESS(s) && n > 0) {
        int32_t i = 0;
        U16_NEXT(units, i, n, c);
        if (i != n) c = kNoChar;  // one byte, several code points: not a plain character
      }
      _my->toUnicode[static_cast<std::size_t>(b)] = c;
      // Counting down lets the lowest byte win when two bytes share a character.
      if (c != kNoChar) _my->fromUnicode[c] = static_cast<unsigned char>(b);
    }
  } else {
    _my->kind = Kind::kMultiByte;
  }

  // Every byte below 0x80 must be a character of its own, the printable ones ASCII; otherwise
  // the ASCII syntax of the server's texts would mean something else in this code page.
  for (int b = 0; b < 0x80; ++b) {
    const char byte = static_cast<char>(b);
    bool ok = true;
    int count = 0;
    _my->Walk(std::string_view(&byte, 1), [&](std::size_t, std::size_t length, UChar32 c) {
      ++count;
      const bool printable = (b >= 0x20 && b < 0x7F) || b == '\t' || b == '\n' || b == '\r';
      if (length != 1 || c == kNoChar || (printable && c != b)) ok = false;
    });
    if (!ok || count != 1)
      throw OMSException("CodePage::Get -- code page is not ASCII-compatible: " + quoted, b);
  }
}

CodePage::~CodePage() = default;

namespace {
struct Registry {
  std::mutex mutex;
  std::map<std::string, std::unique_ptr<CodePage>, std::less<>> pages;
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}
}  // namespace

const CodePage& CodePage::Get(std::string_view name) {
  Registry& registry = TheRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  auto it = registry.pages.find(name);
  if (it != registry.pages.end()) return *it->second;
  std::unique_ptr<CodePage> page(new CodePage(name));
  const CodePage& result = *page;
  registry.pages.emplace(std::string(name), std::move(page));
  return result;
}

const CodePage& CodePage::Current() {
  if (_current == nullptr) _current = &Get("UTF-8");
  return *_current;
}

void CodePage::SetCurrent(std::string_view name) { _current = &Get(name); }

void CodePage::SetCurrent(const CodePage& page) { _current = &page; }

const std::string& CodePage::Name() const { return _my->name; }
const std::string& CodePage::IcuName() const { return _my->icuName; }
bool CodePage::IsUtf8() const { return _my->kind == Kind::kUtf8; }
bool CodePage::IsSingleByte() const { return _my->kind == Kind::kSingleByte; }
int CodePage::MaxCharSize() const { return _my->maxCharSize; }

std::vector<CodePage::Char> CodePage::Split(std::string_view text) const {
  std::vector<Char> chars;
  chars.reserve(text.size());
  _my->Walk(text, [&](std::size_t offset, std::size_t length, UChar32 c) {
    if (length == 0) return;  // a further code point of the previous character
    chars.push_back(Char{offset, length, c != kNoChar});
  });
  return chars;
}

icu::UnicodeString CodePage::Decode(std::string_view text) const {
  icu::UnicodeString out;
  _my->Walk(text, [&](std::size_t offset, std::size_t, UChar32 c) {
    if (c == kNoChar) c = kEscapeBase + static_cast<uint8_t>(text[offset]);
    out.append(c);
  });
  return out;
}

bool CodePage::TryEncode(const icu::UnicodeString& text, std::string& out) const {
  out.clear();
  for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1))
    if (U_IS_SURROGATE(text.char32At(i))) return false;  // an escaped byte, or broken UTF-16
  switch (_my->kind) {
    case Kind::kUtf8:
      text.toUTF8String(out);
      return true;
    case Kind::kSingleByte:
      for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        auto it = _my->fromUnicode.find(text.char32At(i));
        if (it == _my->fromUnicode.end()) return false;
        out.push_back(static_cast<char>(it->second));
      }
      return true;
    case Kind::kMultiByte: {
      if (text.isEmpty()) return true;
      Converter converter = OpenStrict(_my->icuName);
      UErrorCode status = U_ZERO_ERROR;
      const int32_t capacity = text.length() * _my->maxCharSize + 16;
      out.resize(static_cast<std::size_t>(capacity));
      int32_t n = ucnv_fromUChars(converter.get(), out.data(), capacity, text.getBuffer(),
                                  text.length(), &status);
      if (U_FAILURE(status)) return false;
      out.resize(static_cast<std::size_t>(n));
      return true;
    }
  }
  return false;
}

std::string CodePage::ToUtf8(std::string_view text) const {
  std::string out;
  out.reserve(text.size());
  bool allValid = true;
  _my->Walk(text, [&](std::size_t, std::size_t, UChar32 c) { allValid = allValid && c != kNoChar; });
  if (allValid && _my->kind == Kind::kUtf8) return std::string(text);
  icu::UnicodeString decoded;
  _my->Walk(text, [&](std::size_t, std::size_t, UChar32 c) {
    decoded.append(c == kNoChar ? UChar32{0xFFFD} : c);
  });
  decoded.toUTF8String(out);
  return out;
}

std::string CodePage::FromUtf8(std::string_view utf8) const {
  const CodePage& source = Get("UTF-8");
  std::string out;
  out.reserve(utf8.size());
  if (_my->kind == Kind::kUtf8) return source.ToUtf8(utf8);
  if (_my->kind == Kind::kSingleByte) {
    source._my->Walk(utf8, [&](std::size_t, std::size_t, UChar32 c) {
      auto it = c == kNoChar ? _my->fromUnicode.end() : _my->fromUnicode.find(c);
      out.push_back(it == _my->fromUnicode.end() ? '?' : static_cast<char>(it->second));
    });
    return out;
  }
  Converter converter = OpenStrict(_my->icuName);
  source._my->Walk(utf8, [&](std::size_t, std::size_t, UChar32 c) {
    UChar units[2];
    int32_t length = 0;
    if (c != kNoChar) {
      UBool error = false;
      U16_APPEND(units, length, 2, c, error);
      (void)error;
    }
    char bytes[16];
    UErrorCode status = U_ZERO_ERROR;
    ucnv_reset(converter.get());
    int32_t n = length == 0 ? 0
                            : ucnv_fromUChars(converter.get(), bytes, sizeof bytes, units, length,
                                              &status);
    if (length == 0 || U_FAILURE(status) || n <= 0)
      out.push_back('?');
    else
      out.append(bytes, static_cast<std::size_t>(n));
  });
  return out;
}

std::string ToUtf8(std::string_view text, std::string_view codePage) {
  return CodePage::Get(codePage).ToUtf8(text);
}

std::string FromUtf8(std::string_view utf8, std::string_view codePage) {
  return CodePage::Get(codePage).FromUtf8(utf8);
}
