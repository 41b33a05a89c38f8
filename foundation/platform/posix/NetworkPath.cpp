#include "foundation/platform/NetworkPath.h"

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>

#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"

namespace vrx::platform {
namespace {

bool IsNetworkType(std::string_view type) {
  constexpr std::string_view kTypes[] = {"nfs", "nfs4",  "cifs", "smb3",   "smbfs",   "ncpfs",
                                         "afs", "coda",  "ceph", "lustre", "davfs",   "glusterfs",
                                         "9p",  "ocfs2", "gfs2", "beegfs", "orangefs"};
  // An automatic mount may be a share, and access waits until it is mounted. A file system in user space
  // depends on its program.
  return type == "autofs" || type.starts_with("fuse.") || std::ranges::find(kTypes, type) != std::end(kTypes);
}

/// The table has blanks, tabs, line feeds and backslashes as a backslash and three octal digits.
std::string Unescape(std::string_view text) {
  constexpr std::size_t kDigits = 3;
  const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view digits = text.substr(std::min(i + 1, text.size()), kDigits);
    if (text[i] != '\\' || digits.size() < kDigits || !std::ranges::all_of(digits, isOctal)) {
      result += text[i];
      continue;
    }
    result += static_cast<char>(((digits[0] - '0') << 6) | ((digits[1] - '0') << 3) | (digits[2] - '0'));
    i += kDigits;
  }
  return result;
}

std::optional<std::string> LinkTarget(const std::string& path) {
  std::array<char, PATH_MAX> buffer;
  const ssize_t length = readlink(path.c_str(), buffer.data(), buffer.size());
  if (length <= 0 || static_cast<std::size_t>(length) >= buffer.size()) return std::nullopt;
  return std::string(buffer.data(), static_cast<std::size_t>(length));
}

/// Later entries hide earlier ones at the same folder.
bool IsNetworkMount(const std::string& folder, const std::vector<Mount>& mounts) {
  const auto found = std::find_if(mounts.rbegin(), mounts.rend(),
                                  [&](const Mount& mount) { return mount.folder == folder; });
  return found != mounts.rend() && found->isNetwork;
}

/// Puts the parts of `path` on `rest`, a stack with the next part on top.
void PushParts(const std::string& path, std::vector<std::string>& rest) {
  std::istringstream stream(path);
  std::vector<std::string> parts;
  for (std::string part; std::getline(stream, part, '/');) {
    if (!part.empty() && part != ".") parts.push_back(part);
  }
  rest.insert(rest.end(), parts.rbegin(), parts.rend());
}

}  // namespace

std::vector<Mount> ParseMountTable(std::string_view text) {
  constexpr int kFieldsBeforeFolder = 4;
  std::vector<Mount> mounts;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string field;
    for (int i = 0; i < kFieldsBeforeFolder; ++i) fields >> field;
    std::string folder;
    fields >> folder;
    // Some optional fields, a single dash, then the type.
    while (fields >> field && field != "-") {
    }
    std::string type;
    if (fields >> type) mounts.push_back({Unescape(folder), IsNetworkType(type)});
  }
  return mounts;
}

bool LiesOnNetwork(const std::string& path, const std::vector<Mount>& mounts) {
  constexpr int kMostLinks = 40;  // as the system itself follows
  std::vector<std::string> rest;
  PushParts(path, rest);
  std::string at;  // without links; empty is the root
  if (IsNetworkMount("/", mounts)) return true;
  for (int links = 0; !rest.empty();) {
    const std::string part = rest.back();
    rest.pop_back();
    if (part == "..") {
      at.resize(std::min(at.rfind('/'), at.size()));
      continue;
    }
    const std::string next = at + "/" + part;
    if (IsNetworkMount(next, mounts)) return true;
    const std::optional<std::string> target = LinkTarget(next);
    if (!target) {
      at = next;
      continue;
    }
    if (++links > kMostLinks) return false;
    if (target->front() == '/') at.clear();
    PushParts(*target, rest);
  }
  return false;
}

bool IsNetworkPath(const XpString& path) {
  if (XpPathNamesServer(path)) return true;
  const std::string native = NativePath(AbsolutePath(path));
  if (native.empty()) return false;
  std::ifstream file("/proc/self/mountinfo", std::ios::binary);
  const std::string table{std::istreambuf_iterator<char>(file), {}};
  return LiesOnNetwork(native, ParseMountTable(table));
}

}  // namespace vrx::platform
