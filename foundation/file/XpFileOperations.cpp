#include "foundation/file/XpFileOperations.h"

#include <system_error>
#include <vector>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/SystemError.h"
#include "foundation/sync/XpThread.h"
#include "foundation/text/XpPath.h"

namespace platform = vrx::platform;

namespace {

constexpr std::int64_t kComplete = 100;
constexpr int kRenameTries = 10;
constexpr std::uint32_t kRenamePause = 300;  // milliseconds

/// True when `to` must not be replaced: it is write-protected, or a device, FIFO or socket.
bool IsProtected(const XpString& from, const XpString& to) {
  platform::FileStatus status;
  if (platform::StatPath(to, platform::Links::Keep, status) || status.isDirectory) return false;
  return (status.isReadOnly || status.isSpecial) && !platform::IsSameFile(from, to);
}

std::error_code RenamePatiently(const XpString& from, const XpString& to) {
  if (IsProtected(from, to)) return std::make_error_code(std::errc::permission_denied);
  // Only a busy file is worth another try: a denied access stays denied.
  std::error_code error = platform::Rename(from, to, true);
  for (int i = 0; i < kRenameTries && platform::IsBusy(error); ++i) {
    XpSleep(kRenamePause);
    error = platform::Rename(from, to, true);
  }
  return error;
}

XpResult MoveByCopy(const XpString& from, const XpString& to, XpFileProgress* progress) {
  const auto report = [&](std::int64_t done, std::int64_t total) {
    // In floating point, since 100 * done could overflow.
    if (progress == nullptr || total <= 0) return;
    const double part = static_cast<double>(done) / static_cast<double>(total);
    progress->done = part < 1.0 ? static_cast<std::int64_t>(part * kComplete) : kComplete;
  };
  if (const auto error = platform::CopyFile(from, to, report)) return platform::PathErrorResult(error, from);
  return XpFileDelete(from);
}

/// Moves a file, link or folder; fails when something exists at `to`.
bool MoveToFreePlace(const XpString& from, const XpString& to) {
  platform::FileStatus status;
  if (!platform::StatPath(to, platform::Links::Keep, status)) return false;
  const auto error = platform::Rename(from, to, false);
  if (error != std::errc::cross_device_link) return !error;
  if (platform::CopyTree(from, to)) return false;
  if (platform::StatPath(from, platform::Links::Keep, status)) return false;
  const XpResult removed = status.isDirectory ? XpPathRemove(from, true, nullptr) : XpFileDelete(from);
  return removed == XpOk;
}

bool IsSeparator(char16_t c, bool native) { return c == u'/' || (!native && c == u'\\'); }

std::int32_t NextSeparator(const XpString& path, std::int32_t from) {
  const bool native = XpPathIsNative(path);
  while (from < path.Length() && !IsSeparator(path[from], native)) ++from;
  return from;
}

/// Length of the root, which is never made; 0 when the path has none.
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

bool XpPathIsDirectory(const XpString& path) {
  bool isDirectory = false;
  return XpPathExists(path, &isDirectory) && isDirectory;
}

bool XpPathExists(const XpString& path, bool* isDirectory) {
  platform::FileStatus status;
  const bool exists = !platform::StatPath(path, platform::Links::Follow, status);
  if (isDirectory != nullptr) *isDirectory = exists && status.isDirectory;
  return exists;
}

bool XpPathIsFile(const XpString& path) {
  bool isDirectory = false;
  return XpPathExists(path, &isDirectory) && !isDirectory;
}

XpResult XpPathClearReadOnly(const XpString& path) {
  return platform::PathErrorResult(platform::SetReadOnly(path, false), path);
}

bool XpPathIsReadOnly(const XpString& path) {
  platform::FileStatus status;
  return !platform::StatPath(path, platform::Links::Follow, status) && status.isReadOnly;
}

XpResult XpPathSetHidden(const XpString& path) {
  return platform::MarkHidden(path) ? XpErrAccessDenied : XpOk;
}

XpResult XpFileDelete(const XpString& path) {
  const XpResult result = platform::PathErrorResult(platform::RemoveFile(path), path);
  return result == XpErrFailed || result == XpErrFileSystem ? XpErrDeleteFailed : result;
}

XpResult XpFileToRecycleBin(const XpString& path) {
  return platform::MoveToTrash(path) ? XpErrDeleteFailed : XpOk;
}

XpResult XpFilesToRecycleBin(std::span<const XpString> paths, bool useShell) {
  for (const XpString& path : paths) {
    const XpResult result = useShell ? XpFileToRecycleBin(path) : XpFileDelete(path);
    if (result != XpOk) return result;
  }
  return XpOk;
}

XpResult XpFilesMove(std::span<const XpString> paths, const XpString& target) {
  if (!XpPathIsDirectory(target) && XpPathMake(target) != XpOk) return XpErrShellMoveFailed;
  for (const XpString& path : paths) {
    XpString stem;
    XpString extension;
    XpPathSplit(path, nullptr, &stem, &extension);
    const XpString moved = XpPathJoin(target, stem + extension);
    if (!MoveToFreePlace(path, moved)) return XpErrShellMoveFailed;
  }
  return XpOk;
}

XpResult XpFileRename(const XpString& from, const XpString& to) {
  return platform::PathErrorResult(RenamePatiently(from, to), from);
}

XpResult XpFileCopyOrMove(const XpString& from, const XpString& to, XpFileProgress* progress) {
  if (progress != nullptr) {
    progress->total = kComplete;
    progress->done = 0;
  }
  XpResult result = XpOk;
  if (XpPathIsDirectory(from)) {
    result = platform::PathErrorResult(platform::Rename(from, to, false), from);
  } else {
    const auto error = RenamePatiently(from, to);
    const bool otherVolume = error == std::errc::cross_device_link;
    result = otherVolume ? MoveByCopy(from, to, progress) : platform::PathErrorResult(error, from);
  }
  if (progress != nullptr && result == XpOk) progress->done = kComplete;
  return result;
}

XpResult XpFileMove(const XpString& from, const XpString& to, XpFileProgress* progress) {
  return XpFileCopyOrMove(from, to, progress);
}

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
