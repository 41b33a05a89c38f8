// Shared by the POSIX sources of the file system: errors, times and the state of a file.
#pragma once

#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <system_error>

#include "foundation/platform/FileSystem.h"

namespace vrx::platform::posix {

inline constexpr char kHiddenMark[] = "user.vrx.hidden";

inline int DescriptorOf(FileHandle handle) { return static_cast<int>(handle); }

inline std::error_code ErrnoCode(int error) { return {error, std::system_category()}; }
inline std::error_code LastCode() { return ErrnoCode(errno); }

/// Closes its file at the end of the scope; may hold none.
class Descriptor {
 public:
  explicit Descriptor(int file) : m_file(file) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (m_file >= 0) close(m_file);
  }
  int Get() const { return m_file; }

 private:
  int m_file;
};

/// Bytes of a path without trailing slashes, so that a link is taken as a link; ENOENT when it has none.
std::error_code PathBytes(const XpString& path, std::string& bytes);

std::uint64_t TicksOf(std::int64_t seconds, std::uint32_t nanoseconds);
timespec TimeOf(const std::uint64_t* ticks);

/// `path` may be relative to the open folder `folder`, or empty for `folder` itself.
std::error_code Stat(int folder, const char* path, int flags, FileStatus& status);

/// Gives an open file or folder the permissions, times and mark of another, whose `state` is known.
std::error_code CopyState(int source, int target, const struct stat& state);

bool IsDotName(const std::string& path);

}  // namespace vrx::platform::posix
