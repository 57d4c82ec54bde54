#include "platform/stringtables/PathFactory.h"

#include <dlfcn.h>

#include <filesystem>
#include <mutex>
#include <system_error>

#include "platform/errors/OMSException.h"

namespace fs = std::filesystem;

// Sessions on different threads share this object, so its fields are read and written under
// one mutex.
struct PathFactory::Data {
  mutable std::mutex _mutex;
  std::string _explicitRoot;
  std::string _followedRoot;
  std::string _folder = kDefaultFolder;

  const std::string& RootLocked() const {
    return _explicitRoot.empty() ? _followedRoot : _explicitRoot;
  }
  ExtNameStr JoinLocked(const std::string& folder) const {
    const std::string& root = RootLocked();
    if (root.empty()) return ExtNameStr(folder);
    return ExtNameStr((fs::path(root) / folder).generic_string());
  }
};

namespace {
// The string-table root that a host's location implies: the location itself, its folder when it
// names a table file, and the folder above "lang/<code>" when it names a language folder.
std::string RootOfHostPath(const std::string& location) {
  fs::path path = fs::path(location).lexically_normal();
  if (path.has_parent_path() && path.filename().empty()) path = path.parent_path();
  std::error_code error;
  if (path.extension() == ".stt" || fs::is_regular_file(path, error)) path = path.parent_path();
  if (path.parent_path().filename() == "lang") path = path.parent_path().parent_path();
  return path.generic_string();
}
}  // namespace

PathFactory::PathFactory() : _my(std::make_unique<Data>()) {}
PathFactory::~PathFactory() = default;

PathFactory& PathFactory::getPathInstance(int kind) {
  if (kind != kStringTables) {
    throw OMSException("PathFactory::getPathInstance -- unknown path kind", kind);
  }
  static PathFactory stringTables;
  return stringTables;
}

void PathFactory::SetRoot(const std::string& dir) {
  PathFactory& self = getPathInstance(kStringTables);
  std::lock_guard lock(self._my->_mutex);
  self._my->_explicitRoot = dir;
}

void PathFactory::FollowHostPath(const std::string& path) {
  if (path.empty()) return;
  std::string root = RootOfHostPath(path);
  PathFactory& self = getPathInstance(kStringTables);
  std::lock_guard lock(self._my->_mutex);
  self._my->_followedRoot = std::move(root);
}

std::string PathFactory::Root() const {
  std::lock_guard lock(_my->_mutex);
  return _my->RootLocked();
}

ExtNameStr PathFactory::GetFullPath(const std::string& folder) {
  std::lock_guard lock(_my->_mutex);
  _my->_folder = folder;
  return _my->JoinLocked(folder);
}

ExtNameStr PathFactory::Directory() const {
  std::lock_guard lock(_my->_mutex);
  return _my->JoinLocked(_my->_folder);
}

std::string PathFactory::Folder() const {
  std::lock_guard lock(_my->_mutex);
  return _my->_folder;
}

void PathFactory::ResetFolder() {
  std::lock_guard lock(_my->_mutex);
  _my->_folder = kDefaultFolder;
}

namespace {

std::string FindInstalledStringTables() {
  namespace fs = std::filesystem;
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&FindInstalledStringTables), &info) == 0 ||
      info.dli_fname == nullptr) {
    return std::string();
  }
  std::error_code ec;
  const fs::path self = fs::canonical(fs::path(info.dli_fname), ec);
  if (ec) return std::string();
  // <prefix>/bin, <prefix>/lib or <prefix>/lib/<multiarch>: the prefix is one to two levels up.
  fs::path dir = self.parent_path();
  for (int up = 0; up < 2 && dir.has_parent_path() && dir != dir.parent_path(); ++up) {
    dir = dir.parent_path();
    const fs::path tables = dir / "share" / "omfactory" / "stringtables";
    if (fs::is_directory(tables / "lang", ec)) return tables.string();
  }
  return std::string();
}

}  // namespace

std::string PathFactory::InstalledStringTables() {
  // Looked up once per process: the code running this does not move, and the lookup (the
  // loader's table, a canonical path, directory probes) cost more than the rest of a session's
  // construction.
  static const std::string installed = FindInstalledStringTables();
  return installed;
}
