#include "foundation/file/XpReplaceFile.h"

#include "foundation/file/XpFile.h"
#include "foundation/file/XpMemoryFile.h"
#include "foundation/platform/FileReplacement.h"
#include "foundation/platform/Paths.h"
#include "foundation/platform/SystemError.h"

namespace platform = vrx::platform;

namespace {

using Write = std::function<XpResult(XpAbstractFile&)>;

/// The new file, which the replacement has opened under its random name.
class NewFile : public XpFile {
 public:
  explicit NewFile(platform::FileReplacement& replacement)
      : XpFile(platform::PathFromNative(replacement.GetNewPath())) {
    Adopt(replacement.TakeNewFile(), XpOpenReadWrite);
  }

  XpResult FlushAndClose() {
    if (const XpResult result = FlushToDisk()) return result;
    return Close();
  }
};

/// As opening the file for writing would answer.
XpResult BeginResult(const std::error_code& error) {
  if (error == std::errc::invalid_argument) return XpErrNotAFile;
  if (error == std::errc::is_a_directory) return XpErrAccessDenied;
  XpResult result = platform::ErrnoResult(error);
  if (result == XpErrFileSystem) result = platform::LastErrorResult(error);
  return result == XpErrFailed ? XpErrNoSuchFile : result;
}

XpResult WriteBeside(platform::FileReplacement& replacement, const Write& write) {
  NewFile file(replacement);
  if (const XpResult result = write(file)) return result;
  if (const XpResult result = file.FlushAndClose()) return result;
  return platform::LastErrorResult(replacement.Commit());
}

XpResult WriteInPlace(platform::FileReplacement& replacement, const Write& write) {
  XpMemoryFile file;
  if (const XpResult result = write(file)) return result;
  const auto size = static_cast<std::size_t>(file.GetSize());
  return platform::LastErrorResult(
      replacement.WriteInPlace({static_cast<const std::byte*>(file.GetData()), size}));
}

}  // namespace

XpResult XpReplaceFile(const XpString& path, std::span<const std::byte> content) {
  return XpReplaceFile(path, [&](XpAbstractFile& file) {
    return content.empty() ? XpOk : file.Write(content.data(), content.size(), nullptr);
  });
}

XpResult XpReplaceFile(const XpString& path, const Write& write, XpReplaceWay way) {
  platform::FileReplacement replacement;
  if (const auto error = replacement.Begin(path)) return BeginResult(error);
  if (!replacement.IsInPlace()) return WriteBeside(replacement, write);
  return way == XpReplaceWay::RenameOnly ? XpResult{XpErrAccessDenied} : WriteInPlace(replacement, write);
}
