#include "tools/omfactory/OMSRequestFile.h"

#include <fstream>
#include <iterator>
#include <sstream>

#include <nlohmann/json.hpp>

#include "platform/errors/OMSException.h"
#include "platform/strings/CodePage.h"

using nlohmann::json;

namespace {

struct TypeName {
  const char* name;
  unsigned bits;
};

// One row per object type bit, in bit order.
constexpr TypeName kTypeNames[] = {
  {"charts",     OMSObjectSelector::kCharts},
  {"texts",      OMSObjectSelector::kTexts},
  {"logs",       OMSObjectSelector::kLogs},
  {"warnings",   OMSObjectSelector::kWarnings},
  {"tables",     OMSObjectSelector::kTables},
  {"headings",   OMSObjectSelector::kHeadings},
  {"pagetitles", OMSObjectSelector::kPageTitles},
  {"trees",      OMSObjectSelector::kTrees},
  {"models",     OMSObjectSelector::kModels},
};

constexpr unsigned kAllTypes = 511;

// Reports a fault of request number `request` (from 1) at `key`.
[[noreturn]] void Fail(std::size_t request, const std::string& key, const std::string& what) {
  throw OMSException("OMSRequestFile::ParseJson -- request " + std::to_string(request) +
                         (key.empty() ? "" : ", \"" + key + "\"") + ": " + what,
                     double(request));
}

std::vector<std::string> Texts(const json& value, std::size_t request, const std::string& key,
                               const std::string& codePage) {
  if (!value.is_array()) Fail(request, key, "expected a list of texts");
  std::vector<std::string> texts;
  for (const json& item : value) {
    if (!item.is_string()) Fail(request, key, "expected a list of texts");
    const std::string& text = item.get_ref<const std::string&>();
    if (text.empty()) Fail(request, key, "empty text");
    texts.push_back(FromUtf8(text, codePage));
  }
  return texts;
}

// An IF or EXCEPTIF subcommand: {"commands": [...], "subtypes": [...], "labels": [...],
// "instances": [1, 2, "LAST"]}, every key optional.
OMSSelector Subcommand(const json& value, std::size_t request, const std::string& key,
                       const std::string& codePage) {
  if (!value.is_object()) Fail(request, key, "expected an object");
  OMSSelector selector;
  for (const auto& [name, item] : value.items()) {
    const std::string where = key + "." + name;
    if (name == "commands") {
      for (const std::string& t : Texts(item, request, where, codePage)) selector.AddCommands(t);
    } else if (name == "subtypes") {
      for (const std::string& t : Texts(item, request, where, codePage)) selector.AddSubtypes(t);
    } else if (name == "labels") {
      for (const std::string& t : Texts(item, request, where, codePage)) selector.AddNames(t);
    } else if (name == "instances") {
      if (!item.is_array()) Fail(request, where, "expected a list of numbers and \"LAST\"");
      for (const json& inst : item) {
        if (inst.is_string() && inst.get_ref<const std::string&>() == "LAST") {
          selector.AddLastInstance();
        } else if (inst.is_number_integer() && inst.get<long long>() > 0 &&
                   inst.get<long long>() <= 0x7FFFFFFF) {
          selector.AddInstances(int(inst.get<long long>()));
        } else {
          Fail(request, where, "an instance is a number from 1 or \"LAST\", not " + inst.dump());
        }
      }
    } else {
      Fail(request, where, "unknown key");
    }
  }
  return selector;
}

unsigned Types(const json& value, std::size_t request) {
  if (value.is_number_unsigned()) {
    if (value.get<unsigned long long>() > kAllTypes) Fail(request, "types", "bits above 256");
    return unsigned(value.get<unsigned long long>());
  }
  if (!value.is_array()) Fail(request, "types", "expected a list of type names");
  unsigned bits = 0;
  for (const json& item : value) {
    const unsigned b = item.is_string() ? OMSRequestFile::TypeBits(item.get<std::string>()) : 0;
    if (b == 0) Fail(request, "types", "unknown type " + item.dump());
    bits |= b;
  }
  return bits;
}

std::string ReadAll(const std::string& path, const char* what) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw OMSException(std::string(what) + " -- cannot read " + path);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

unsigned OMSRequestFile::TypeBits(const std::string& name) {
  if (name == "all") return kAllTypes;
  for (const TypeName& row : kTypeNames) {
    if (name == row.name) return row.bits;
  }
  return 0;
}

std::vector<OMSObjectSelector> OMSRequestFile::ParseJson(const std::string& text,
                                                         const std::string& codePage) {
  json document;
  try {
    document = json::parse(text);
  } catch (const json::exception& e) {
    throw OMSException(std::string("OMSRequestFile::ParseJson -- not JSON: ") + e.what());
  }
  if (!document.is_array()) {
    throw OMSException("OMSRequestFile::ParseJson -- expected a list of requests");
  }
  std::vector<OMSObjectSelector> requests;
  std::size_t number = 0;
  for (const json& request : document) {
    ++number;
    if (!request.is_object()) Fail(number, "", "expected an object");
    OMSObjectSelector selector;
    unsigned types = kAllTypes;
    for (const auto& [key, value] : request.items()) {
      if (key == "types") {
        types = Types(value, number);
      } else if (key == "if") {
        selector.AddIfOption(Subcommand(value, number, key, codePage));
      } else if (key == "exceptif") {
        selector.AddExceptIfOption(Subcommand(value, number, key, codePage));
      } else if (key == "showNotes") {
        if (!value.is_boolean()) Fail(number, key, "expected true or false");
        selector.ShowNotesTables(value.get<bool>());
      } else if (key == "viewer") {
        if (!value.is_boolean()) Fail(number, key, "expected true or false");
        selector.SetDestinationIsViewer(value.get<bool>());
      } else if (key == "tag") {
        if (!value.is_string() || value.get_ref<const std::string&>().empty()) {
          Fail(number, key, "expected a text");
        }
        selector.SetOMSTag(value.get<std::string>());
      } else {
        Fail(number, key, "unknown key");
      }
    }
    selector.SelectType(types);
    requests.push_back(std::move(selector));
  }
  return requests;
}

std::vector<OMSObjectSelector> OMSRequestFile::ReadJson(const std::string& path,
                                                        const std::string& codePage) {
  const std::string text = ReadAll(path, "OMSRequestFile::ReadJson");
  try {
    return ParseJson(text, codePage);
  } catch (const OMSException& e) {
    throw OMSException(path + ": " + e.Message(), e.Value1(), e.Value2());
  }
}

std::vector<OMSObjectSelector> OMSRequestFile::ParseRecords(std::istream& in) {
  std::vector<OMSObjectSelector> requests;
  while (in.peek() != std::istream::traits_type::eof()) {
    const double number = double(requests.size() + 1);
    OMSObjectSelector selector;
    try {
      in >> selector;
    } catch (const OMSException& e) {
      throw OMSException("OMSRequestFile::ParseRecords -- record " +
                             std::to_string(requests.size() + 1) + ": " + e.Message(),
                         number);
    }
    if (in.fail()) {
      throw OMSException("OMSRequestFile::ParseRecords -- record " +
                             std::to_string(requests.size() + 1) + ": a text is too long",
                         number);
    }
    requests.push_back(std::move(selector));
  }
  return requests;
}

std::vector<OMSObjectSelector> OMSRequestFile::ReadRecords(const std::string& path) {
  std::istringstream in(ReadAll(path, "OMSRequestFile::ReadRecords"));
  try {
    return ParseRecords(in);
  } catch (const OMSException& e) {
    throw OMSException(path + ": " + e.Message(), e.Value1(), e.Value2());
  }
}
