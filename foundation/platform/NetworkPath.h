// Tells whether a path lies on a file system whose answers come from another machine or program and may never
// come. Asked before a test that must not hang.
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

/// Walks along `path`, absolute and in the system's bytes, following its links, until it comes to a network
/// mount, and touches nothing below one.
bool LiesOnNetwork(const std::string& path, const std::vector<Mount>& mounts);

/// The same for a path in any form, on the mounts of this moment. A path with a server counts whatever is
/// mounted; a path that has no bytes does not.
bool IsNetworkPath(const XpString& path);

}  // namespace vrx::platform
