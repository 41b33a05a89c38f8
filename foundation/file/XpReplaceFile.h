// Replaces the content of a file so that a failure or a crash never loses the old one. Everything that saves
// documents, settings or pictures uses it.
#pragma once

#include <cstddef>
#include <functional>
#include <span>

#include "foundation/file/XpAbstractFile.h"

/// Writes a new file beside `path`, under a random name, and renames it into place when it is complete and on
/// the disk. Links are followed to their target. An older file's permissions, owner and marks carry over, but
/// not the right to run as its owner or group; a new file gets the usual permissions. After a failure the old
/// file is whole and nothing is left beside it.
///
/// Where the old file may be written to but its folder may not, or the owner cannot be carried over, the
/// content is collected in memory and then written over the old file. That is not done in one step: a crash
/// or a disk fault during it leaves a damaged file.
///
/// Refused are a folder (XpErrAccessDenied), a device, FIFO or socket (XpErrNotAFile), and a file whose owner
/// may not write or that this user may not write (XpErrAccessDenied). Other codes are those of XpFile::Open
/// for writing and of XpFile::Write.
XpResult XpReplaceFile(const XpString& path, std::span<const std::byte> content);

/// Whether the old file may be overwritten where no new file can be made beside it.
enum class XpReplaceWay { RenameOrOverwrite, RenameOnly };

/// The same with `write`, which is called once the file for the new content is open. It may read and seek in
/// what it wrote, must leave the file open, and its failure is the result. Where overwriting would be the
/// only way but is not allowed, XpErrAccessDenied.
XpResult XpReplaceFile(const XpString& path, const std::function<XpResult(XpAbstractFile&)>& write,
                       XpReplaceWay way = XpReplaceWay::RenameOrOverwrite);
