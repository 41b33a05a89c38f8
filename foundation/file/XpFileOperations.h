// What lies at a path, and whole files and folders: making, deleting, renaming and moving them.
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

/// How far a long operation is; another thread may read it meanwhile.
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
/// copying each whole before it is deleted. Nothing that lies there is replaced. XpErrShellMoveFailed on the
/// first failure; what was moved by then stays moved.
XpResult XpFilesMove(std::span<const XpString> paths, const XpString& target);

/// Takes the place of an older file. XpErrAccessDenied when its owner may not write that one, or when it is a
/// device, FIFO or socket. When another program holds one of the two, tries again for up to three seconds.
XpResult XpFileRename(const XpString& from, const XpString& to);

/// Moves a file, to another volume by copying it, and takes the place of an older one only when the copy is
/// complete; it refuses the same ones as XpFileRename. A folder moves within its volume, and not onto
/// something that is there. `progress`, which may be null, runs from 0 to 100.
XpResult XpFileCopyOrMove(const XpString& from, const XpString& to, XpFileProgress* progress);
XpResult XpFileMove(const XpString& from, const XpString& to, XpFileProgress* progress);

/// Makes a directory with all its parents. The path has to be absolute: native, with a drive, or with a
/// server and a share; any other form is XpErrPathForm. A directory that is there already is no failure.
XpResult XpPathMake(const XpString& path);

/// Removes a directory: an empty one, or with all that it holds. A link is removed itself and what it points
/// to stays. XpErrInvalidArgument for the empty path and for a root. `progress`, which may be null, gets the
/// number of direct entries and a step for each.
XpResult XpPathRemove(const XpString& path, bool recursive, XpFileProgress* progress);
