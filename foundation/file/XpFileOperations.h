// Looks up what exists at a path; makes, deletes, renames and moves files and folders.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>

#include "vrx/XpResult.h"
#include "vrx/XpString.h"

bool XpPathIsDirectory(const XpString& path);
/// `isDirectory` may be null, and is false when nothing is there. A link to nothing does not exist.
bool XpPathExists(const XpString& path, bool* isDirectory);
bool XpPathIsFile(const XpString& path);

/// Gives the owner the permission to write.
XpResult XpPathClearReadOnly(const XpString& path);
/// True when the owner may not write, also for a user whom permissions do not bind.
bool XpPathIsReadOnly(const XpString& path);
/// Marks a file as hidden without changing its name. XpErrAccessDenied where the file system cannot keep the
/// mark.
XpResult XpPathSetHidden(const XpString& path);

/// Progress of a long operation; another thread may read it at any time.
struct XpFileProgress {
  std::atomic<std::int64_t> total = 0;
  std::atomic<std::int64_t> done = 0;
};

/// Deletes a file, also a read-only one. XpErrDeleteFailed when there is no finer code.
XpResult XpFileDelete(const XpString& path);

/// Moves a file or folder to the user's trash. XpErrDeleteFailed on failure.
XpResult XpFileToRecycleBin(const XpString& path);
/// With `useShell` moves all to the trash; otherwise deletes each. Stops at the first failure.
XpResult XpFilesToRecycleBin(std::span<const XpString> paths, bool useShell);

/// Moves files and folders into the folder `target`, which is made when it is missing; to another volume by
/// copying each whole before it is deleted. Existing files and folders there are not replaced.
/// XpErrShellMoveFailed on the first failure; what was moved by then stays moved.
XpResult XpFilesMove(std::span<const XpString> paths, const XpString& target);

/// Renames a file and replaces an older one at `to`. XpErrAccessDenied when the older one is write-protected,
/// or is a device, FIFO or socket. While another program keeps one of the two busy, tries again for up to
/// three seconds.
XpResult XpFileRename(const XpString& from, const XpString& to);

/// Moves a file; to another volume by copying it, which replaces an older file only when the copy is
/// complete. Refuses the same targets as XpFileRename. A folder moves only within its volume, and only to a
/// path where nothing exists. `progress`, which may be null, runs from 0 to 100.
XpResult XpFileCopyOrMove(const XpString& from, const XpString& to, XpFileProgress* progress);
XpResult XpFileMove(const XpString& from, const XpString& to, XpFileProgress* progress);

/// Makes a directory with all its parents. The path has to be absolute: native, with a drive, or with a
/// server and a share; any other form is XpErrPathForm. A directory that is there already is no failure.
XpResult XpPathMake(const XpString& path);

/// Removes an empty directory or, with `recursive`, a directory with everything in it. Of a link, only the
/// link is removed. XpErrInvalidArgument for the empty path and for a root. `progress`, which may be null,
/// counts the direct entries.
XpResult XpPathRemove(const XpString& path, bool recursive, XpFileProgress* progress);
