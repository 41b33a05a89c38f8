#include "foundation/platform/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "foundation/platform/Paths.h"

namespace vrx::platform {

MemoryFile::MemoryFile(std::span<const char> bytes) : m_file(memfd_create("vrx", MFD_CLOEXEC)) {
  if (m_file < 0) return;
  while (!bytes.empty()) {
    const ssize_t written = write(m_file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  m_path = PathFromNative("/proc/self/fd/" + std::to_string(m_file));
}

MemoryFile::~MemoryFile() {
  if (m_file >= 0) close(m_file);
}

}  // namespace vrx::platform
