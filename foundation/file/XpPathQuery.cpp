#include "foundation/file/XpPathQuery.h"

#include "foundation/platform/FileSystem.h"

namespace platform = vrx::platform;

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
