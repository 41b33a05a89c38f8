// What the file layer asks of the operating system: handles, the state of paths, folders and volumes. An
// error is the system's own number; SystemError.h turns it into a result code. Paths are in any form of this
// system.
#pragma once

#include <cstdint>
#include <functional>
#include <system_error>
#include <vector>

#include "vrx/XpResult.h"
#include "vrx/XpString.h"

namespace vrx::platform {

using FileHandle = std::int64_t;
inline constexpr FileHandle kNoFile = -1;

enum class FileAccess { Read, Write, ReadWrite };
enum class FileScan { Normal, Sequential, Random };
enum class FileOrigin { Start, Current, End };
enum class Links { Follow, Keep };

/// Times are units of 100 ns since 1601, UTC. A system that keeps no creation time gives the time of the last
/// change of the file's state instead.
struct FileStatus {
  bool isDirectory = false;
  bool isLink = false;      // only seen with Links::Keep
  bool isSpecial = false;   // a device, FIFO or socket
  bool isReadOnly = false;  // the owner has no write permission, also when root asks
  bool isHidden = false;    // the name begins with a dot, or the file is marked as hidden
  std::int64_t size = 0;    // 0 for a directory
  std::uint64_t created = 0;
  std::uint64_t written = 0;
  std::uint64_t accessed = 0;
};

struct VolumeSpace {
  std::int64_t total = 0;  // bytes
  std::int64_t free = 0;
  std::int64_t available = 0;  // free bytes that this user may take
  std::int32_t clusterSize = 0;
};

enum class VolumeFormat { Other, Fat, Fat32, ExFat, Ntfs };

// Handles. A FIFO or socket is refused, since opening one could block; so is writing to a read-only file,
// even for a superuser.
std::error_code OpenFile(const XpString& path, FileAccess access, FileScan scan, FileHandle& handle);
/// Makes an empty file. An existing one is no failure and keeps its content.
std::error_code MakeFile(const XpString& path);
std::error_code CloseFile(FileHandle handle);
/// Reads until `count` bytes are there or the file ends; `done` says how many, also after an error.
std::error_code ReadFile(FileHandle handle, void* buffer, std::uint64_t count, std::uint64_t& done);
std::error_code WriteFile(FileHandle handle, const void* buffer, std::uint64_t count, std::uint64_t& done);
std::error_code SeekFile(FileHandle handle, std::int64_t offset, FileOrigin origin, std::int64_t& position);
std::error_code ResizeFile(FileHandle handle, std::int64_t size);
/// Returns once the content is on the disk.
std::error_code FlushFile(FileHandle handle);
std::error_code StatFile(FileHandle handle, FileStatus& status);

// Paths.
std::error_code StatPath(const XpString& path, Links links, FileStatus& status);
/// True when both paths are the same file or folder, links followed; false when either is missing.
bool IsSameFile(const XpString& a, const XpString& b);
/// LastErrorResult, but a missing file and a missing folder have codes of their own.
XpResult PathErrorResult(const std::error_code& error, const XpString& path);
std::error_code SetReadOnly(const XpString& path, bool readOnly);
/// Marks the file in an extended attribute, which not every file system has. Its name, and so the way to find
/// it, stays the same.
std::error_code MarkHidden(const XpString& path);
/// A null time stays as it is. The creation time cannot be set.
std::error_code SetFileTimes(const XpString& path, const std::uint64_t* written,
                             const std::uint64_t* accessed);
/// A link is removed itself, never what it points to.
std::error_code RemoveFile(const XpString& path);
std::error_code Rename(const XpString& from, const XpString& to, bool replace);
/// A symbolic link at `path` to `target`. A link that is there is replaced; EEXIST for anything else.
std::error_code ReplaceLink(const XpString& target, const XpString& path);
/// True for an error that may go away soon, because another program is using the file.
bool IsBusy(const std::error_code& error);
/// Copies a file with its permissions, mark and time of writing; replaces an older file only when
/// complete. `report` is called with the bytes done and their total.
std::error_code CopyFile(const XpString& from, const XpString& to,
                         const std::function<void(std::int64_t, std::int64_t)>& report);
/// Copies a file, a link (as a link) or a folder with everything in it. The copy is renamed to `to` only when
/// complete. EEXIST when something exists there; EINVAL for a device, FIFO or socket.
std::error_code CopyTree(const XpString& from, const XpString& to);
/// Moves a file or folder to the user's trash, from where a desktop restores it.
std::error_code MoveToTrash(const XpString& path);

// Folders.
std::error_code MakeFolder(const XpString& path);
/// Removes an empty folder, or a link to one.
std::error_code RemoveFolder(const XpString& path);
/// Names in a folder without "." and "..", in no particular order.
std::error_code ListFolder(const XpString& path, std::vector<XpString>& names);
/// The state of one entry of a folder, by its exact name. For a link, the state of its target if
/// that exists, marked as a link.
std::error_code StatEntry(const XpString& folder, const XpString& name, FileStatus& status);
/// Removes a file, link, or folder with all that it holds; never follows a link.
std::error_code RemoveEntry(const XpString& folder, const XpString& name);
/// True for the root folder of the system, however the path spells it.
bool IsRootFolder(const XpString& path);

// Volumes.
std::error_code GetVolumeSpace(const XpString& path, VolumeSpace& space);
VolumeFormat GetVolumeFormat(const XpString& path);

}  // namespace vrx::platform
