#include "foundation/platform/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "foundation/platform/Paths.h"
#include "foundation/platform/posix/FileStatus.h"
#include "foundation/platform/posix/NewNames.h"

namespace vrx::platform {
namespace {

using posix::DescriptorOf;
using posix::ErrnoCode;
using posix::FolderOf;
using posix::LastCode;

constexpr int kMostLinks = 40;         // as many as the kernel follows
constexpr mode_t kUsualMode = 0666;    // less the user's mask
constexpr mode_t kPrivateMode = 0600;  // until the old file's permissions are carried over
constexpr mode_t kModeBits = 0777;
constexpr std::size_t kLargestAttribute = 65536;  // the kernel takes no more

/// True for a link of another user in a shared sticky folder, which could lead to any file of this user. The
/// kernel refuses to follow such links, too.
bool IsForeignLink(const std::string& path, const struct stat& link) {
  const std::string folder = FolderOf(path);
  struct stat parent {};
  if (stat(folder.empty() ? "." : folder.c_str(), &parent) != 0) return true;
  constexpr mode_t kOpenToAll = S_ISVTX | S_IWOTH;
  return (parent.st_mode & kOpenToAll) == kOpenToAll && link.st_uid != geteuid() &&
         link.st_uid != parent.st_uid;
}

/// Replaces `path` by what it finally links to, which need not be there.
std::error_code FollowLinks(std::string& path) {
  for (int i = 0; i < kMostLinks; ++i) {
    struct stat state {};
    if (lstat(path.c_str(), &state) != 0) return errno == ENOENT ? std::error_code() : LastCode();
    if (!S_ISLNK(state.st_mode)) return {};
    if (IsForeignLink(path, state)) return ErrnoCode(EACCES);
    std::array<char, 4096> link;
    const ssize_t length = readlink(path.c_str(), link.data(), link.size());
    if (length < 0) return LastCode();
    if (length == static_cast<ssize_t>(link.size())) return ErrnoCode(ENAMETOOLONG);
    const std::string_view to(link.data(), static_cast<std::size_t>(length));
    path = to.starts_with('/') ? std::string(to) : FolderOf(path).append(to);
  }
  return ErrnoCode(ELOOP);
}

/// Marks and the access list. What the file system refuses is left out, and so are privileges of the old
/// file.
void CopyAttributes(int from, int to) {
  const ssize_t size = flistxattr(from, nullptr, 0);
  if (size <= 0) return;
  std::vector<char> names(static_cast<std::size_t>(size));
  const ssize_t listed = flistxattr(from, names.data(), names.size());
  if (listed <= 0) return;
  names.resize(static_cast<std::size_t>(listed));
  std::vector<char> value(kLargestAttribute);
  for (auto name = names.begin(); name != names.end(); name = std::find(name, names.end(), '\0') + 1) {
    const std::string_view kind = &*name;
    if (!kind.starts_with("user.") && kind != "system.posix_acl_access") continue;
    const ssize_t length = fgetxattr(from, &*name, value.data(), value.size());
    if (length >= 0) fsetxattr(to, &*name, value.data(), static_cast<std::size_t>(length), 0);
  }
}

/// Makes room for the content; on failure the file keeps its size.
std::error_code ReserveSpace(int file, std::size_t size) {
  struct stat state {};
  if (fstat(file, &state) != 0) return LastCode();
  const auto wanted = static_cast<off_t>(size);
  if (wanted <= state.st_size) return {};
  if (fallocate(file, 0, 0, wanted) == 0 || errno == EOPNOTSUPP) return {};
  const auto error = LastCode();
  ResizeFile(file, state.st_size);
  return error;
}

}  // namespace

FileReplacement::~FileReplacement() {
  Discard();
  if (m_old != kNoFile) CloseFile(m_old);
}

void FileReplacement::Discard() {
  if (m_new != kNoFile) CloseFile(std::exchange(m_new, kNoFile));
  if (!m_newPath.empty()) unlink(m_newPath.c_str());
  m_newPath.clear();
}

std::error_code FileReplacement::Begin(const XpString& path) {
  if (const auto error = posix::PathBytes(path, m_target)) return error;
  if (const auto error = FollowLinks(m_target)) return error;
  if (const auto error = OpenTarget()) return error;
  const auto error = OpenNew();
  const bool folderIsClosed =
      error == std::errc::permission_denied || error == std::errc::operation_not_permitted;
  if (error) return folderIsClosed && m_old != kNoFile ? std::error_code() : error;
  if (m_old != kNoFile && !CarryOverState()) Discard();
  return {};
}

/// Opens the old file, if there is one, which says whether it may be written to.
std::error_code FileReplacement::OpenTarget() {
  struct stat state {};
  // Looked at first, since merely opening a device can have an effect.
  if (lstat(m_target.c_str(), &state) != 0) return errno == ENOENT ? std::error_code() : LastCode();
  if (S_ISDIR(state.st_mode)) return ErrnoCode(EISDIR);
  if (!S_ISREG(state.st_mode)) return ErrnoCode(EINVAL);
  return OpenFile(PathFromNative(m_target), FileAccess::Write, FileScan::Normal, m_old);
}

std::error_code FileReplacement::OpenNew() {
  const mode_t mode = m_old != kNoFile ? kPrivateMode : kUsualMode;
  std::string path;
  int file = -1;
  if (const auto error = posix::MakeFileBeside(m_target, mode, path, file)) return error;
  m_new = file;
  m_newPath = path;
  return {};
}

/// False when the new file could not be given to the old one's owner.
bool FileReplacement::CarryOverState() const {
  const int from = DescriptorOf(m_old);
  const int to = DescriptorOf(m_new);
  struct stat old {};
  struct stat made {};
  if (fstat(from, &old) != 0 || fstat(to, &made) != 0) return false;
  const bool sameOwner = old.st_uid == made.st_uid && old.st_gid == made.st_gid;
  if (!sameOwner && fchown(to, old.st_uid, old.st_gid) != 0) return false;
  if (fchmod(to, old.st_mode & kModeBits) != 0) return false;
  CopyAttributes(from, to);
  return true;
}

std::error_code FileReplacement::WriteInPlace(std::span<const std::byte> content) {
  const int file = DescriptorOf(m_old);
  if (const auto error = ReserveSpace(file, content.size())) return error;
  std::uint64_t written = 0;
  if (const auto error = WriteFile(m_old, content.data(), content.size(), written)) return error;
  if (const auto error = ResizeFile(m_old, static_cast<std::int64_t>(content.size()))) return error;
  return FlushFile(m_old);
}

FileHandle FileReplacement::TakeNewFile() { return std::exchange(m_new, kNoFile); }

std::error_code FileReplacement::Commit() {
  if (rename(m_newPath.c_str(), m_target.c_str()) != 0) return LastCode();
  m_newPath.clear();
  // The file is complete and in place, also when its folder cannot be flushed.
  const std::string folder = FolderOf(m_target);
  const int file = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return {};
  fsync(file);
  close(file);
  return {};
}

}  // namespace vrx::platform
