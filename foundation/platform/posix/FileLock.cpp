#include "foundation/platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "foundation/platform/Paths.h"

namespace vrx::platform {

FileLock::FileLock(const XpString& path) {
  constexpr mode_t kMode = 0666;  // less the user's mask
  const std::string bytes = NativePath(path);
  const int file = bytes.empty() ? -1 : open(bytes.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kMode);
  if (file < 0) return;
  int result = 0;
  do {
    result = flock(file, LOCK_EX);
  } while (result != 0 && errno == EINTR);
  if (result == 0) {
    m_handle = file;
  } else {
    close(file);
  }
}

FileLock::~FileLock() {
  if (m_handle >= 0) close(static_cast<int>(m_handle));
}

}  // namespace vrx::platform
