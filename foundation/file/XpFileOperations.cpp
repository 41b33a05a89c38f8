#include "foundation/file/XpFileOperations.h"

#include <system_error>

#include "foundation/file/XpPathOperations.h"
#include "foundation/file/XpPathQuery.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/SystemError.h"
#include "foundation/sync/XpThread.h"
#include "foundation/text/XpPath.h"

namespace platform = vrx::platform;

namespace {

constexpr std::int64_t kComplete = 100;
constexpr int kRenameTries = 10;
constexpr std::uint32_t kRenamePause = 300;  // milliseconds

/// What lies at `to` may not be replaced: its owner may not write it, or it is no file at all.
bool IsProtected(const XpString& from, const XpString& to) {
  platform::FileStatus status;
  if (platform::StatPath(to, platform::Links::Keep, status) || status.isDirectory) return false;
  return (status.isReadOnly || status.isSpecial) && !platform::IsSameFile(from, to);
}

std::error_code RenamePatiently(const XpString& from, const XpString& to) {
  if (IsProtected(from, to)) return std::make_error_code(std::errc::permission_denied);
  // Unlike on systems with enforced sharing, a plain refusal does not go away here; only a busy file may.
  std::error_code error = platform::Rename(from, to, true);
  for (int i = 0; i < kRenameTries && platform::IsBusy(error); ++i) {
    XpSleep(kRenamePause);
    error = platform::Rename(from, to, true);
  }
  return error;
}

XpResult MoveByCopy(const XpString& from, const XpString& to, XpFileProgress* progress) {
  const auto report = [&](std::int64_t done, std::int64_t total) {
    // A percentage in floating point has no product that could overflow.
    if (progress == nullptr || total <= 0) return;
    const double part = static_cast<double>(done) / static_cast<double>(total);
    progress->done = part < 1.0 ? static_cast<std::int64_t>(part * kComplete) : kComplete;
  };
  if (const auto error = platform::CopyFile(from, to, report)) return platform::PathErrorResult(error, from);
  return XpFileDelete(from);
}

/// Moves a file, link or folder to a place where nothing is.
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

}  // namespace

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
