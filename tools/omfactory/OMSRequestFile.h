// Reads the OMS requests that `omfactory render` hands to the factory session: a JSON list of
// requests (--oms; the README describes the schema) or a file of binary OMSObjectSelector
// records (--oms-record), as the server passes them between processes.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "backend/omsopmgr/OMSObjectSelector.h"

class OMSRequestFile {
public:
  // Parses a JSON list of requests. Texts are converted from UTF-8 to codePage, the session's
  // code page, in which the factory matches them. Any departure from the schema (unknown key or
  // type name, instance 0, a string where a list belongs...) is an OMSException naming the
  // request and the key.
  static std::vector<OMSObjectSelector> ParseJson(const std::string& json,
                                                  const std::string& codePage = "UTF-8");
  // ParseJson on a file's text; a file that cannot be read is an OMSException naming it.
  static std::vector<OMSObjectSelector> ReadJson(const std::string& path,
                                                 const std::string& codePage = "UTF-8");

  // Reads records one after the other until the end of the input (an empty input holds no
  // requests). A record that ends early or whose strings are too long is an OMSException with
  // value 1 = the record's number, from 1.
  static std::vector<OMSObjectSelector> ParseRecords(std::istream& in);
  static std::vector<OMSObjectSelector> ReadRecords(const std::string& path);

  // The object type bit of a type name ("tables" 16, "headings" 32...), "all" for every type;
  // 0 for a name that is none of them.
  static unsigned TypeBits(const std::string& name);
};
