#include "foundation/file/XpPathOperations.h"

#include <system_error>
#include <vector>

#include "foundation/file/XpPathQuery.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/SystemError.h"
#include "foundation/text/XpPath.h"

namespace platform = vrx::platform;

namespace {

bool IsSeparator(char16_t c, bool native) { return c == u'/' || (!native && c == u'\\'); }

std::int32_t NextSeparator(const XpString& path, std::int32_t from) {
  const bool native = XpPathIsNative(path);
  while (from < path.Length() && !IsSeparator(path[from], native)) ++from;
  return from;
}

/// Length of the root, which is there or cannot be made; 0 when the path has none.
std::int32_t RootLength(const XpString& path) {
  if (XpPathIsNative(path)) return 1;
  if (!XpPathIsAbsolute(path)) return 0;
  if (path[1] == u':') return IsSeparator(path[2], false) ? 3 : 2;
  if (!XpPathNamesServer(path)) return 0;
  constexpr std::int32_t kServer = 2;
  const std::int32_t serverEnd = NextSeparator(path, kServer);
  const std::int32_t shareEnd = NextSeparator(path, serverEnd + 1);
  const bool complete = serverEnd > kServer && shareEnd > serverEnd + 1;
  return complete ? shareEnd : 0;
}

XpResult MakeOne(const XpString& path) {
  if (XpPathIsDirectory(path)) return XpOk;
  const auto error = platform::MakeFolder(path);
  if (!error) return XpOk;
  if (error == std::errc::file_exists) return XpPathIsDirectory(path) ? XpOk : XpErrAlreadyExists;
  if (error == std::errc::no_such_file_or_directory) return XpErrPathNotFound;
  if (error == std::errc::read_only_file_system || error == std::errc::permission_denied ||
      error == std::errc::operation_not_permitted) {
    return XpErrAccessDenied;
  }
  return XpPathIsDirectory(XpPathDirectory(path)) ? XpErrPathForm : XpErrPathNotFound;
}

/// True for the root of the tree, of a drive or of a share.
bool IsRoot(const XpString& path) {
  const std::int32_t root = RootLength(path);
  const bool named = root != 0 && XpPathStripTrailingSlash(path).Length() <= root;
  return named || platform::IsRootFolder(path);
}

}  // namespace

XpResult XpPathMake(const XpString& path) {
  const std::int32_t root = RootLength(path);
  if (root == 0) return XpErrPathForm;
  const XpString whole = XpPathStripTrailingSlash(path);
  if (whole.Length() <= root) return XpPathIsDirectory(path) ? XpOk : XpErrPathNotFound;
  std::int32_t end = root;
  while (end < whole.Length()) {
    end = NextSeparator(whole, end + 1);
    if (const XpResult result = MakeOne(whole.Left(end))) return result;
  }
  return XpOk;
}

XpResult XpPathRemove(const XpString& path, bool recursive, XpFileProgress* progress) {
  if (path.IsEmpty() || IsRoot(path)) return XpErrInvalidArgument;
  platform::FileStatus status;
  if (const auto error = platform::StatPath(path, platform::Links::Keep, status)) {
    return platform::PathErrorResult(error, path);
  }
  if (recursive && status.isDirectory) {
    std::vector<XpString> names;
    if (const auto error = platform::ListFolder(path, names)) return platform::PathErrorResult(error, path);
    if (progress != nullptr) {
      progress->done = 0;
      progress->total = static_cast<std::int64_t>(names.size());
    }
    for (const XpString& name : names) {
      if (const auto error = platform::RemoveEntry(path, name)) return platform::LastErrorResult(error);
      if (progress != nullptr) ++progress->done;
    }
  }
  return platform::PathErrorResult(platform::RemoveFolder(path), path);
}
