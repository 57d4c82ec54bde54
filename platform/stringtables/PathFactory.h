// Process-wide locations of the server's resource folders. Kind 3 is the string-table root: the
// factory session asks it for the full path of a language folder ("lang/de") when the output
// language changes, and pooling asks it for the folder of the language chosen last.
#pragma once

#include <memory>
#include <string>

#include "platform/stringtables/ExtNameStr.h"

// Where the root comes from. The library reads no environment variable: a host either sets the
// root with SetRoot (the tools pass --string-tables DIR), or the root follows the string-table
// location that the host gives when it constructs a FacSTDictionary (through the factory session):
// that location itself, or the folder above "lang/<code>" when it names a language folder.
// An explicit root wins over the followed one until SetRoot("") clears it. With no root at all,
// paths are relative to the working directory.
class PathFactory {
public:
  static constexpr int kStringTables = 3;
  // The language folder that Directory names until a language is chosen.
  static constexpr const char* kDefaultFolder = "lang/en";

  // The path object of a kind. Only kStringTables exists; any other kind is an OMSException
  // "PathFactory::getPathInstance -- unknown path kind", value 1 = kind.
  static PathFactory& getPathInstance(int kind);

  // The string tables installed with the library: <prefix>/share/omfactory/stringtables beside
  // the <prefix>/lib, <prefix>/lib/<multiarch> or <prefix>/bin that holds the code running this,
  // when it has a lang/ folder;
  // "" otherwise (a build tree, or tables not installed). A session given no location uses it.
  // Found on the first call; tables installed while the process runs are not seen.
  static std::string InstalledStringTables();

  // Sets the string-table root for the whole process; "" returns to following the host's path.
  static void SetRoot(const std::string& dir);
  // Lets the root follow a string-table location given by a host, unless SetRoot fixed it.
  static void FollowHostPath(const std::string& path);

  PathFactory(const PathFactory&) = delete;
  PathFactory& operator=(const PathFactory&) = delete;
  ~PathFactory();

  // The root, "" when none is known.
  std::string Root() const;
  // root/folder for a language folder such as "lang/de"; the folder becomes the current one.
  ExtNameStr GetFullPath(const std::string& folder);
  // root/current folder: the string tables of the language chosen last (kDefaultFolder at first).
  ExtNameStr Directory() const;
  // The current language folder.
  std::string Folder() const;
  // Forgets the chosen language: the current folder becomes kDefaultFolder again.
  void ResetFolder();

private:
  PathFactory();
  struct Data;
  std::unique_ptr<Data> _my;
};
