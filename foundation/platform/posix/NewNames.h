// Shared by the POSIX sources that build something beside the place where it shall be: names that nobody else
// can have taken or foreseen.
#pragma once

#include <sys/types.h>

#include <string>
#include <system_error>

namespace vrx::platform::posix {

/// The folder part of a path with its slash; empty for a bare name.
std::string FolderOf(const std::string& path);

/// A path in the folder of `target`. Not made from the target's name, which may be as long as a name can be.
std::error_code RandomPathBeside(const std::string& target, std::string& path);

/// Makes a file at such a path and opens it for reading and writing. `mode` is less the user's mask.
std::error_code MakeFileBeside(const std::string& target, mode_t mode, std::string& path, int& file);

}  // namespace vrx::platform::posix
