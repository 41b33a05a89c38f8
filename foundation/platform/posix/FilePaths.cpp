#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "foundation/platform/SystemError.h"
#include "foundation/platform/posix/FileStatus.h"

namespace vrx::platform {
namespace posix {

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kNanosecondsPerTick = 100;
constexpr std::int64_t kUnixEpoch = 11'644'473'600;  // seconds from 1601 to 1970
constexpr std::int64_t kLastSecond = INT64_MAX / kTicksPerSecond - kUnixEpoch - 1;

}  // namespace

std::error_code PathBytes(const XpString& path, std::string& bytes) {
  bytes = NativePath(path);
  while (bytes.size() > 1 && bytes.back() == '/') bytes.pop_back();
  return bytes.empty() ? ErrnoCode(ENOENT) : std::error_code();
}

std::uint64_t TicksOf(std::int64_t seconds, std::uint32_t nanoseconds) {
  // A damaged file system can state any time at all.
  const std::int64_t clamped = std::clamp(seconds, -kUnixEpoch, kLastSecond);
  return static_cast<std::uint64_t>((clamped + kUnixEpoch) * kTicksPerSecond +
                                    nanoseconds / kNanosecondsPerTick);
}

timespec TimeOf(const std::uint64_t* ticks) {
  if (ticks == nullptr) return {0, UTIME_OMIT};
  const auto seconds = static_cast<std::int64_t>(*ticks / kTicksPerSecond) - kUnixEpoch;
  return {seconds, static_cast<long>(*ticks % kTicksPerSecond) * kNanosecondsPerTick};
}

bool IsDotName(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  return name.size() > 1 && name.front() == '.' && name != "..";
}

std::error_code Stat(int folder, const char* path, int flags, FileStatus& status) {
  struct statx state {};
  if (statx(folder, path, flags, STATX_BASIC_STATS | STATX_BTIME, &state) != 0) return LastCode();
  const auto ticks = [](const statx_timestamp& time) { return TicksOf(time.tv_sec, time.tv_nsec); };
  status.isDirectory = S_ISDIR(state.stx_mode);
  status.isLink = S_ISLNK(state.stx_mode);
  status.isSpecial = !S_ISDIR(state.stx_mode) && !S_ISREG(state.stx_mode) && !status.isLink;
  status.isReadOnly = (state.stx_mode & S_IWUSR) == 0;
  status.size =
      status.isDirectory ? 0 : static_cast<std::int64_t>(std::min<std::uint64_t>(state.stx_size, INT64_MAX));
  status.created = ticks((state.stx_mask & STATX_BTIME) != 0 ? state.stx_btime : state.stx_ctime);
  status.written = ticks(state.stx_mtime);
  status.accessed = ticks(state.stx_atime);
  return {};
}

}  // namespace posix

using posix::ErrnoCode;
using posix::LastCode;

std::error_code StatPath(const XpString& path, Links links, FileStatus& status) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  const int flags = links == Links::Keep ? AT_SYMLINK_NOFOLLOW : 0;
  if (const auto error = posix::Stat(AT_FDCWD, bytes.c_str(), flags, status)) return error;
  status.isHidden = posix::IsDotName(bytes) || getxattr(bytes.c_str(), posix::kHiddenMark, nullptr, 0) >= 0;
  return {};
}

bool IsSameFile(const XpString& a, const XpString& b) {
  std::string first;
  std::string second;
  struct stat one {};
  struct stat other {};
  if (posix::PathBytes(a, first) || posix::PathBytes(b, second)) return false;
  if (stat(first.c_str(), &one) != 0 || stat(second.c_str(), &other) != 0) return false;
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

XpResult PathErrorResult(const std::error_code& error, const XpString& path) {
  if (error != std::errc::no_such_file_or_directory) return LastErrorResult(error);
  std::string bytes;
  if (posix::PathBytes(path, bytes)) return XpErrPathNotFound;
  const std::filesystem::path folder = std::filesystem::path(bytes).parent_path();
  std::error_code ignored;  // a folder that cannot be looked at is not found either
  const bool folderIsThere = folder.empty() || std::filesystem::is_directory(folder, ignored);
  return folderIsThere ? XpErrFileNotFound : XpErrPathNotFound;
}

std::error_code SetReadOnly(const XpString& path, bool readOnly) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  struct stat state {};
  if (stat(bytes.c_str(), &state) != 0) return LastCode();
  constexpr mode_t kAllWrite = S_IWUSR | S_IWGRP | S_IWOTH;
  constexpr mode_t kModeBits = 07777;
  const mode_t mode = state.st_mode & kModeBits;
  const mode_t wanted = readOnly ? mode & ~kAllWrite : mode | S_IWUSR;
  return wanted == mode || chmod(bytes.c_str(), wanted) == 0 ? std::error_code() : LastCode();
}

std::error_code MarkHidden(const XpString& path) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  if (posix::IsDotName(bytes)) return access(bytes.c_str(), F_OK) == 0 ? std::error_code() : LastCode();
  return setxattr(bytes.c_str(), posix::kHiddenMark, "1", 1, 0) == 0 ? std::error_code() : LastCode();
}

std::error_code SetFileTimes(const XpString& path, const std::uint64_t* written,
                             const std::uint64_t* accessed) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  const timespec times[] = {posix::TimeOf(accessed), posix::TimeOf(written)};
  return utimensat(AT_FDCWD, bytes.c_str(), times, 0) == 0 ? std::error_code() : LastCode();
}

std::error_code RemoveFile(const XpString& path) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  return unlink(bytes.c_str()) == 0 ? std::error_code() : LastCode();
}

std::error_code Rename(const XpString& from, const XpString& to, bool replace) {
  std::string source;
  std::string target;
  if (const auto error = posix::PathBytes(from, source)) return error;
  if (const auto error = posix::PathBytes(to, target)) return error;
  if (replace) return rename(source.c_str(), target.c_str()) == 0 ? std::error_code() : LastCode();
  if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL && errno != ENOSYS) return LastCode();
  // The file system cannot do both in one step.
  struct stat state {};
  if (lstat(target.c_str(), &state) == 0) return ErrnoCode(EEXIST);
  return rename(source.c_str(), target.c_str()) == 0 ? std::error_code() : LastCode();
}

std::error_code ReplaceLink(const XpString& target, const XpString& path) {
  std::string targetBytes, bytes;
  if (const auto error = posix::PathBytes(target, targetBytes)) return error;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  struct stat state {};
  if (lstat(bytes.c_str(), &state) == 0 && S_ISLNK(state.st_mode) && unlink(bytes.c_str()) != 0)
    return LastCode();
  return symlink(targetBytes.c_str(), bytes.c_str()) == 0 ? std::error_code() : LastCode();
}

bool IsBusy(const std::error_code& error) {
  return error == std::errc::device_or_resource_busy || error == std::errc::text_file_busy;
}

}  // namespace vrx::platform
