#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <limits>
#include <memory>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "foundation/platform/posix/FileStatus.h"

namespace vrx::platform {
namespace {

using posix::ErrnoCode;
using posix::LastCode;

constexpr mode_t kNewFolderMode = 0777;  // less the user's mask
constexpr unsigned long kNtfs3Magic = 0x7366746e;
constexpr unsigned long kNtfsMagic = 0x5346544e;
// FAT volumes of fewer clusters have 12 or 16 bits to an entry, larger ones 32.
constexpr std::uint64_t kFat32Clusters = 65525;

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

std::error_code EntryBytes(const XpString& folder, const XpString& name, std::string& bytes) {
  if (const auto error = posix::PathBytes(folder, bytes)) return error;
  bytes += '/' + textcodec::ToUtf8(name.AsView());
  return {};
}

std::int64_t Bytes(std::uint64_t blocks, std::uint64_t blockSize) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  return static_cast<std::int64_t>(blockSize != 0 && blocks > kMost / blockSize ? kMost : blocks * blockSize);
}

}  // namespace

std::error_code MakeFolder(const XpString& path) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  return mkdir(bytes.c_str(), kNewFolderMode) == 0 ? std::error_code() : LastCode();
}

std::error_code RemoveFolder(const XpString& path) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  struct stat state {};
  if (lstat(bytes.c_str(), &state) != 0) return LastCode();
  if (S_ISLNK(state.st_mode)) {
    struct stat target {};
    if (stat(bytes.c_str(), &target) != 0 || !S_ISDIR(target.st_mode)) return ErrnoCode(ENOTDIR);
    return unlink(bytes.c_str()) == 0 ? std::error_code() : LastCode();
  }
  return rmdir(bytes.c_str()) == 0 ? std::error_code() : LastCode();
}

std::error_code ListFolder(const XpString& path, std::vector<XpString>& names) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  const std::unique_ptr<DIR, FolderCloser> folder(opendir(bytes.c_str()));
  if (!folder) return LastCode();
  names.clear();
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(folder.get());
    if (entry == nullptr) return errno == 0 ? std::error_code() : LastCode();
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.push_back(PathFromNative(name));
  }
}

std::error_code StatEntry(const XpString& folder, const XpString& name, FileStatus& status) {
  std::string bytes;
  if (const auto error = EntryBytes(folder, name, bytes)) return error;
  if (const auto error = posix::Stat(AT_FDCWD, bytes.c_str(), AT_SYMLINK_NOFOLLOW, status)) return error;
  if (status.isLink) {
    FileStatus target;
    if (!posix::Stat(AT_FDCWD, bytes.c_str(), 0, target)) status = target;
    status.isLink = true;
  }
  status.isHidden = posix::IsDotName(bytes) || getxattr(bytes.c_str(), posix::kHiddenMark, nullptr, 0) >= 0;
  return {};
}

std::error_code RemoveEntry(const XpString& folder, const XpString& name) {
  std::string bytes;
  if (const auto error = EntryBytes(folder, name, bytes)) return error;
  std::error_code error;
  std::filesystem::remove_all(bytes, error);  // works on open folders and takes links as links
  return error.category() == std::generic_category() ? ErrnoCode(error.value()) : error;
}

bool IsRootFolder(const XpString& path) {
  std::string bytes;
  struct stat own {};
  struct stat root {};
  if (posix::PathBytes(path, bytes) || stat(bytes.c_str(), &own) != 0 || stat("/", &root) != 0) return false;
  return own.st_dev == root.st_dev && own.st_ino == root.st_ino;
}

std::error_code GetVolumeSpace(const XpString& path, VolumeSpace& space) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  struct statvfs volume {};
  if (statvfs(bytes.c_str(), &volume) != 0) return LastCode();
  space.total = Bytes(volume.f_blocks, volume.f_frsize);
  space.free = Bytes(volume.f_bfree, volume.f_frsize);
  space.available = Bytes(volume.f_bavail, volume.f_frsize);
  constexpr unsigned long kLargest = std::numeric_limits<std::int32_t>::max();
  space.clusterSize = static_cast<std::int32_t>(volume.f_frsize > kLargest ? kLargest : volume.f_frsize);
  return {};
}

VolumeFormat GetVolumeFormat(const XpString& path) {
  std::string bytes;
  struct statfs volume {};
  if (posix::PathBytes(path, bytes) || statfs(bytes.c_str(), &volume) != 0) return VolumeFormat::Other;
  switch (static_cast<unsigned long>(volume.f_type)) {
    case MSDOS_SUPER_MAGIC:
      return volume.f_blocks < kFat32Clusters ? VolumeFormat::Fat : VolumeFormat::Fat32;
    case EXFAT_SUPER_MAGIC:
      return VolumeFormat::ExFat;
    case kNtfs3Magic:
    case kNtfsMagic:
      return VolumeFormat::Ntfs;
    default:
      return VolumeFormat::Other;
  }
}

}  // namespace vrx::platform
