#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/posix/FileStatus.h"
#include "foundation/platform/posix/NewNames.h"

namespace vrx::platform {
namespace posix {

std::error_code CopyState(int source, int target, const struct stat& state) {
  constexpr mode_t kModeBits = 0777;
  if (fchmod(target, state.st_mode & kModeBits) != 0) return LastCode();
  const timespec times[] = {state.st_atim, state.st_mtim};
  if (futimens(target, times) != 0) return LastCode();
  // Not every file system holds the mark; a copy that is not hidden is better than no copy.
  if (fgetxattr(source, kHiddenMark, nullptr, 0) >= 0) fsetxattr(target, kHiddenMark, "1", 1, 0);
  return {};
}

}  // namespace posix

namespace {

using posix::ErrnoCode;
using posix::LastCode;
using Report = std::function<void(std::int64_t, std::int64_t)>;

constexpr std::size_t kCopyBlock = 1u << 20;

std::error_code CopyBytes(int source, int target, std::int64_t size, const Report& report) {
  std::vector<char> block(kCopyBlock);
  std::int64_t copied = 0;
  for (;;) {
    std::uint64_t got = 0;
    if (const auto error = ReadFile(source, block.data(), block.size(), got)) return error;
    if (got == 0) return {};
    std::uint64_t put = 0;
    if (const auto error = WriteFile(target, block.data(), got, put)) return error;
    copied += static_cast<std::int64_t>(put);
    if (report) report(copied, size);
  }
}

}  // namespace

std::error_code CopyFile(const XpString& from, const XpString& to, const Report& report) {
  std::string target;
  if (const auto error = posix::PathBytes(to, target)) return error;
  FileHandle handle = kNoFile;
  if (const auto error = OpenFile(from, FileAccess::Read, FileScan::Sequential, handle)) return error;
  const posix::Descriptor source(static_cast<int>(handle));
  struct stat state {};
  if (fstat(source.Get(), &state) != 0) return LastCode();
  if (!S_ISREG(state.st_mode)) return ErrnoCode(EINVAL);

  constexpr mode_t kPrivateMode = 0600;
  std::string partial;
  int made = -1;
  if (const auto failed = posix::MakeFileBeside(target, kPrivateMode, partial, made)) return failed;
  const posix::Descriptor copy(made);
  std::error_code error = CopyBytes(source.Get(), copy.Get(), state.st_size, report);
  if (!error) error = posix::CopyState(source.Get(), copy.Get(), state);
  // The source may be deleted next, so the copy has to be on the disk.
  if (!error && fsync(copy.Get()) != 0) error = LastCode();
  if (!error && rename(partial.c_str(), target.c_str()) != 0) error = LastCode();
  if (error) unlink(partial.c_str());
  return error;
}

}  // namespace vrx::platform
