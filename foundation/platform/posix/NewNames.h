// Random names for files and folders that are built beside their final place. Shared by the POSIX sources.
#pragma once

#include <sys/types.h>

#include <string>
#include <system_error>

namespace vrx::platform::posix {

/// The folder part of a path with its slash; empty for a bare name.
std::string FolderOf(const std::string& path);

/// A random path in the folder of `target`. It does not contain the target's name, which may already be as
/// long as a name can be.
std::error_code RandomPathBeside(const std::string& target, std::string& path);

/// Makes a file at such a path and opens it for reading and writing. `mode` is reduced by the user's mask.
std::error_code MakeFileBeside(const std::string& target, mode_t mode, std::string& path, int& file);

}  // namespace vrx::platform::posix
