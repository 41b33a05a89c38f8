#include "foundation/platform/Paths.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <mutex>

#include "foundation/text/XpPath.h"

namespace vrx::platform {
namespace {

struct DriveTable {
  std::mutex mutex;
  std::array<std::string, 26> folders;
  DriveTable() { folders['Z' - 'A'] = "/"; }
};

DriveTable& Drives() {
  static DriveTable table;
  return table;
}

int DriveIndex(char letter) {
  if (letter >= 'a' && letter <= 'z') return letter - 'a';
  return letter >= 'A' && letter <= 'Z' ? letter - 'A' : -1;
}

}  // namespace

std::string NativePath(const XpString& path) {
  std::string bytes = textcodec::ToUtf8(path.AsView());
  if (bytes.find('\0') != std::string::npos) return {};
  if (XpPathIsNative(path)) return bytes;
  if (XpPathNamesServer(path)) return {};
  std::replace(bytes.begin(), bytes.end(), '\\', '/');
  const int drive = bytes.size() >= 2 && bytes[1] == ':' ? DriveIndex(bytes[0]) : -1;
  if (drive < 0) return bytes;
  DriveTable& table = Drives();
  const std::scoped_lock lock(table.mutex);
  const std::string& folder = table.folders[static_cast<std::size_t>(drive)];
  if (folder.empty()) return {};
  const std::size_t rest = std::min(bytes.find_first_not_of('/', 2), bytes.size());
  std::string native = folder;
  if (native.back() != '/') native.push_back('/');
  return native.append(bytes, rest);
}

XpString PathFromNative(std::string_view bytes) { return XpString(textcodec::ToUtf16(bytes)); }

void SetDriveFolder(char letter, std::string folder) {
  const int drive = DriveIndex(letter);
  if (drive < 0) return;
  DriveTable& table = Drives();
  const std::scoped_lock lock(table.mutex);
  table.folders[static_cast<std::size_t>(drive)] = std::move(folder);
}

XpString AbsolutePath(const XpString& path) {
  if (path.IsEmpty() || XpPathIsAbsolute(path)) return path;
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::current_path(error);
  if (error) return path;
  return PathFromNative((folder / NativePath(path)).native());
}

}  // namespace vrx::platform
