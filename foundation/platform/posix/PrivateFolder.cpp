#include "foundation/platform/PrivateFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "foundation/platform/KnownFolders.h"
#include "foundation/platform/Paths.h"
#include "foundation/platform/posix/FileStatus.h"

namespace vrx::platform {
namespace {

constexpr mode_t kOwnerOnly = 0700;
constexpr uid_t kSystem = 0;

bool IsPrivate(const std::string& bytes, bool isLast) {
  struct stat state {};
  if (lstat(bytes.c_str(), &state) != 0 || !S_ISDIR(state.st_mode)) return false;
  if (state.st_uid != geteuid() && state.st_uid != kSystem) return false;
  if ((state.st_mode & S_IWOTH) == 0) return true;
  // In a sticky folder, others cannot rename or remove this entry.
  return !isLast && (state.st_mode & S_ISVTX) != 0;
}

std::error_code MakeNewFolder(const XpString& parent, const char* nameStart, XpString& path) {
  std::string bytes;
  if (const auto error = posix::PathBytes(parent, bytes)) return error;
  bytes += nameStart + std::string("XXXXXX");
  if (mkdtemp(bytes.data()) == nullptr) return {errno, std::generic_category()};
  path = PathFromNative(bytes);
  return {};
}

}  // namespace

bool MakePrivateFolder(const XpString& path) {
  std::string bytes;
  if (posix::PathBytes(path, bytes)) return false;
  if (mkdir(bytes.c_str(), kOwnerOnly) != 0 && errno != EEXIST) return false;
  return IsPrivateFolder(path, 1);
}

std::error_code MakeTemporaryFolder(XpString& path) {
  return MakeNewFolder(TemporaryFolder(), "/vrx-", path);
}

std::error_code MakeTemporaryFolderIn(const XpString& folder, XpString& path) {
  return MakeNewFolder(folder, "/.vrx-", path);
}

bool IsPrivateFolder(const XpString& path, int levels) {
  std::string bytes;
  if (posix::PathBytes(path, bytes)) return false;
  for (int level = 0; level < levels; ++level) {
    while (bytes.size() > 1 && bytes.back() == '/') bytes.pop_back();
    if (!IsPrivate(bytes, level == 0)) return false;
    const std::size_t separator = bytes.rfind('/');
    if (bytes == "/" || separator == bytes.npos) return true;
    bytes.resize(separator + 1);
  }
  return true;
}

XpString UserNumber() { return PathFromNative(std::to_string(geteuid())); }

}  // namespace vrx::platform
