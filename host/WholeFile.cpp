#include "host/WholeFile.h"

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "host/Console.h"
#include "host/FileCauses.h"

namespace vrx::host {

bool ReadWholeFile(const XpString& path, std::int64_t mostMiB, const char* kind, std::string& bytes,
                   std::string& cause) {
  constexpr std::int64_t kMiB = std::int64_t{1} << 20;
  XpFile file(path);
  XpResult result = XpPathIsDirectory(path) ? XpErrNotAFile : file.Open(XpOpenRead, XpShareRead);
  const std::int64_t size = result == XpOk ? file.GetSize() : 0;
  if (size > mostMiB * kMiB) {
    cause = Utf8(path) + " is larger than " + std::to_string(mostMiB) + " MiB, which is no " + kind;
    return false;
  }
  bytes.resize(static_cast<std::size_t>(size));
  std::uint64_t read = 0;
  if (result == XpOk && size > 0) result = file.Read(bytes.data(), bytes.size(), &read);
  if (result != XpOk) cause = Utf8(path) + " cannot be read: " + ReadCause(result);
  bytes.resize(static_cast<std::size_t>(read));
  return result == XpOk;
}

}  // namespace vrx::host
