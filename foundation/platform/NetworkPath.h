// Whether a path lies on a file system of another machine or program, which may never answer. Asked before a
// test that must not hang.
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

/// The same for a path in any form, with the present mounts. Always true for a path with a server, and false
/// for one that the system cannot express.
bool IsNetworkPath(const XpString& path);

}  // namespace vrx::platform
