// The one place where a path of this system becomes bytes for the operating system and back.
#pragma once

#include <string>
#include <string_view>

#include "vrx/XpString.h"

namespace vrx::platform {

/// The bytes that name `path` to the system: a native path as it is, every other one with slashes and its
/// drive letter replaced by the folder of the drive table. Empty when the path has no such form: the empty
/// path, an unknown drive, a server, or a NUL inside.
std::string NativePath(const XpString& path);

/// The native path that the system's bytes spell.
XpString PathFromNative(std::string_view bytes);

/// Maps a drive letter to a folder; an empty folder removes the drive. At first Z: is "/". Thread-safe.
void SetDriveFolder(char letter, std::string folder);

/// Absolute form of a relative path, against the working folder; other paths are given back.
XpString AbsolutePath(const XpString& path);

}  // namespace vrx::platform
