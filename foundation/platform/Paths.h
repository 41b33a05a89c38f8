// Converts paths of this system to bytes for the operating system and back. Nothing else does.
#pragma once

#include <string>
#include <string_view>

#include "vrx/XpString.h"

namespace vrx::platform {

/// The path in the system's bytes: a native path unchanged, any other one with slashes, and with the drive's
/// folder in place of its letter. Empty when the path has no such form: the empty
/// path, an unknown drive, a server, or a NUL inside.
std::string NativePath(const XpString& path);

/// The native path that the system's bytes spell.
XpString PathFromNative(std::string_view bytes);

/// Maps a drive letter to a folder; an empty folder removes the drive. By default Z: is "/". Thread-safe.
void SetDriveFolder(char letter, std::string folder);

/// A relative path joined to the working folder; other paths as they are.
XpString AbsolutePath(const XpString& path);

}  // namespace vrx::platform
