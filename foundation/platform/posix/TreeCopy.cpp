#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "foundation/platform/posix/FileStatus.h"
#include "foundation/platform/posix/NewNames.h"

namespace vrx::platform {
namespace {

using posix::ErrnoCode;
using posix::LastCode;

std::error_code CopyLink(const std::string& from, const std::string& to) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = readlink(from.c_str(), target.data(), target.size());
  if (length < 0) return LastCode();
  const std::string text(target.data(), static_cast<std::size_t>(length));
  return symlink(text.c_str(), to.c_str()) == 0 ? std::error_code() : LastCode();
}

std::error_code CopyFolderState(const std::string& from, const std::string& to) {
  const posix::Descriptor source(open(from.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const posix::Descriptor copy(open(to.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  struct stat state {};
  if (source.Get() < 0 || copy.Get() < 0 || fstat(source.Get(), &state) != 0) return LastCode();
  return posix::CopyState(source.Get(), copy.Get(), state);
}

/// Copies one entry and everything below it. The longest path that the system takes bounds the recursion.
class TreeCopier {
 public:
  std::error_code Copy(const std::string& from, const std::string& to) {
    struct stat state {};
    if (lstat(from.c_str(), &state) != 0) return LastCode();
    if (S_ISLNK(state.st_mode)) return CopyLink(from, to);
    if (!S_ISDIR(state.st_mode)) return CopyFile(PathFromNative(from), PathFromNative(to), {});
    return CopyFolder(from, to, state);
  }

 private:
  std::error_code CopyFolder(const std::string& from, const std::string& to, const struct stat& state) {
    constexpr mode_t kPrivateMode = 0700;  // until it is complete
    // The target volume may be mounted inside the source folder; its new copy must not be copied again.
    if (m_isCopying && state.st_dev == m_top.st_dev && state.st_ino == m_top.st_ino) return ErrnoCode(EINVAL);
    if (mkdir(to.c_str(), kPrivateMode) != 0) return LastCode();
    if (!m_isCopying && lstat(to.c_str(), &m_top) != 0) return LastCode();
    m_isCopying = true;
    std::vector<XpString> names;
    if (const auto error = ListFolder(PathFromNative(from), names)) return error;
    for (const XpString& name : names) {
      const std::string bytes = '/' + textcodec::ToUtf8(name.AsView());
      if (const auto error = Copy(from + bytes, to + bytes)) return error;
    }
    return CopyFolderState(from, to);
  }

  struct stat m_top {};  // the copy of the folder that was asked for
  bool m_isCopying = false;
};

}  // namespace

std::error_code CopyTree(const XpString& from, const XpString& to) {
  std::string source;
  std::string target;
  std::string partial;
  if (const auto error = posix::PathBytes(from, source)) return error;
  if (const auto error = posix::PathBytes(to, target)) return error;
  if (const auto error = posix::RandomPathBeside(target, partial)) return error;
  std::error_code error = TreeCopier().Copy(source, partial);
  if (!error) error = Rename(PathFromNative(partial), to, false);
  std::error_code ignored;  // the first error is the one to report
  if (error) std::filesystem::remove_all(partial, ignored);
  return error;
}

}  // namespace vrx::platform
