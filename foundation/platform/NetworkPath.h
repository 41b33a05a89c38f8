// Finds out whether a path is on a file system of another machine or of a program, which may never answer.
// Used before a test that must not hang.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vrx/XpString.h"

namespace vrx::platform {

struct Mount {
  std::string folder;
  bool isNetwork = false;
};

/// Reads a mount table in the form of /proc/self/mountinfo, see proc(5). Lines that don't follow it are
/// skipped.
std::vector<Mount> ParseMountTable(std::string_view text);

/// Follows `path`, absolute and in the system's bytes, and its links part by part up to a network mount.
/// Nothing below such a mount is accessed.
bool LiesOnNetwork(const std::string& path, const std::vector<Mount>& mounts);

/// The same for a path in any form, on the mounts of this moment. A path with a server is one in any case; a
/// path without a native form is none.
bool IsNetworkPath(const XpString& path);

}  // namespace vrx::platform
