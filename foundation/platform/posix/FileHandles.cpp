#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/posix/FileStatus.h"

namespace vrx::platform {

using posix::ErrnoCode;
using posix::LastCode;

namespace {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "files above 2 GiB need 64-bit offsets");

constexpr mode_t kNewFileMode = 0666;                 // less the user's mask
constexpr std::uint64_t kLargestTransfer = 1u << 30;  // the kernel takes no more than 2 GiB in a call

using posix::DescriptorOf;

int AccessFlag(FileAccess access) {
  switch (access) {
    case FileAccess::Write:
      return O_WRONLY;
    case FileAccess::ReadWrite:
      return O_RDWR;
    default:
      return O_RDONLY;
  }
}

/// What must hold of a file that was just opened.
int CheckOpened(int file, FileAccess access) {
  struct stat state {};
  if (fstat(file, &state) != 0) return errno;
  if (S_ISDIR(state.st_mode)) return EISDIR;
  if (S_ISFIFO(state.st_mode) || S_ISSOCK(state.st_mode)) return EINVAL;
  const bool writes = access != FileAccess::Read;
  if (writes && S_ISREG(state.st_mode) && (state.st_mode & S_IWUSR) == 0) return EACCES;
  // Opening did not wait; reading from a device may.
  const int flags = fcntl(file, F_GETFL);
  return flags < 0 || fcntl(file, F_SETFL, flags & ~O_NONBLOCK) != 0 ? errno : 0;
}

/// Runs `transfer` on ever smaller rests of a block until all is done, it gives 0, or it fails.
template <class Transfer>
std::error_code TransferAll(std::uint64_t count, std::uint64_t& done, Transfer transfer) {
  done = 0;
  while (done < count) {
    const auto piece = static_cast<std::size_t>(std::min(count - done, kLargestTransfer));
    const ssize_t moved = transfer(done, piece);
    if (moved < 0 && errno == EINTR) continue;
    if (moved < 0) return LastCode();
    if (moved == 0) break;
    done += static_cast<std::uint64_t>(moved);
  }
  return {};
}

}  // namespace

std::error_code OpenFile(const XpString& path, FileAccess access, FileScan scan, FileHandle& handle) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  int file = -1;
  do {
    file = open(bytes.c_str(), AccessFlag(access) | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  } while (file < 0 && errno == EINTR);
  if (file < 0) return LastCode();
  if (const int refused = CheckOpened(file, access)) {
    close(file);
    return ErrnoCode(refused);
  }
  if (scan != FileScan::Normal) {
    posix_fadvise(file, 0, 0, scan == FileScan::Sequential ? POSIX_FADV_SEQUENTIAL : POSIX_FADV_RANDOM);
  }
  handle = file;
  return {};
}

std::error_code MakeFile(const XpString& path) {
  std::string bytes;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  const int file = open(bytes.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
  if (file < 0) return errno == EEXIST ? std::error_code() : LastCode();
  close(file);
  return {};
}

std::error_code CloseFile(FileHandle handle) {
  // After an interruption the handle is gone as well, and another thread may have been given its number.
  return close(DescriptorOf(handle)) == 0 || errno == EINTR ? std::error_code() : LastCode();
}

std::error_code ReadFile(FileHandle handle, void* buffer, std::uint64_t count, std::uint64_t& done) {
  return TransferAll(count, done, [&](std::uint64_t from, std::size_t piece) {
    return read(DescriptorOf(handle), static_cast<char*>(buffer) + from, piece);
  });
}

std::error_code WriteFile(FileHandle handle, const void* buffer, std::uint64_t count, std::uint64_t& done) {
  const auto error = TransferAll(count, done, [&](std::uint64_t from, std::size_t piece) {
    return write(DescriptorOf(handle), static_cast<const char*>(buffer) + from, piece);
  });
  return !error && done < count ? ErrnoCode(ENOSPC) : error;
}

std::error_code SeekFile(FileHandle handle, std::int64_t offset, FileOrigin origin, std::int64_t& position) {
  const int whence = origin == FileOrigin::Start     ? SEEK_SET
                     : origin == FileOrigin::Current ? SEEK_CUR
                                                     : SEEK_END;
  const off_t reached = lseek(DescriptorOf(handle), offset, whence);
  if (reached < 0) return LastCode();
  position = reached;
  return {};
}

std::error_code ResizeFile(FileHandle handle, std::int64_t size) {
  int result = 0;
  do {
    result = ftruncate(DescriptorOf(handle), size);
  } while (result != 0 && errno == EINTR);
  return result == 0 ? std::error_code() : LastCode();
}

std::error_code FlushFile(FileHandle handle) {
  int result = 0;
  do {
    result = fsync(DescriptorOf(handle));
  } while (result != 0 && errno == EINTR);
  return result == 0 ? std::error_code() : LastCode();
}

std::error_code StatFile(FileHandle handle, FileStatus& status) {
  return posix::Stat(DescriptorOf(handle), "", AT_EMPTY_PATH, status);
}

}  // namespace vrx::platform
