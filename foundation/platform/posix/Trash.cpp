// The trash of the desktop as FreeDesktop.org lays it out (Trash 1.0): the file in "files", where it came
// from in "info".
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/KnownFolders.h"
#include "foundation/platform/posix/FileStatus.h"

namespace vrx::platform {
namespace {

using posix::ErrnoCode;
using posix::LastCode;

constexpr mode_t kTrashMode = 0700;  // for the user alone
constexpr mode_t kInfoMode = 0600;
constexpr int kMostNames = 10000;

struct TrashPlace {
  std::string folder;      // holds "files" and "info"
  std::string originRoot;  // what the noted path is relative to; empty for an absolute one
};

std::string ParentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

/// Absolute path of an entry whose own name is not resolved when it is a link.
std::error_code ResolveFolder(const std::string& path, std::string& resolved) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : ParentOf(path);
  char buffer[PATH_MAX];
  if (realpath(folder.c_str(), buffer) == nullptr) return LastCode();
  resolved = buffer;
  if (resolved != "/") resolved += '/';
  resolved += slash == std::string::npos ? path : path.substr(slash + 1);
  return {};
}

std::error_code MakePrivateFolders(const std::string& path) {
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string part = path.substr(0, end);
    if (mkdir(part.c_str(), kTrashMode) != 0 && errno != EEXIST) return LastCode();
    if (end == std::string::npos) return {};
  }
}

/// The highest folder on the volume of `path`.
std::string TopFolder(const std::string& path, dev_t volume) {
  std::string top = ParentOf(path);
  for (;;) {
    struct stat state {};
    const std::string parent = ParentOf(top);
    if (top == "/" || stat(parent.c_str(), &state) != 0 || state.st_dev != volume) return top;
    top = parent;
  }
}

/// The home trash takes files of its own volume, so that nothing has to be copied; other volumes have one
/// each.
std::error_code FindTrash(const std::string& path, TrashPlace& place) {
  struct stat entry {};
  if (lstat(path.c_str(), &entry) != 0) return LastCode();
  const std::string data = UserDataFolder();
  place = {data + "/Trash", ""};
  struct stat home {};
  const bool homeWorks =
      !data.empty() && !MakePrivateFolders(place.folder) && stat(place.folder.c_str(), &home) == 0;
  if (!homeWorks || home.st_dev != entry.st_dev) {
    const std::string top = TopFolder(path, entry.st_dev);
    place.originRoot = top == "/" ? top : top + '/';
    place.folder = place.originRoot + ".Trash-" + std::to_string(getuid());
    struct stat own {};
    if (mkdir(place.folder.c_str(), kTrashMode) != 0 && errno != EEXIST) return LastCode();
    if (lstat(place.folder.c_str(), &own) != 0) return LastCode();
    if (!S_ISDIR(own.st_mode) || own.st_uid != getuid()) return ErrnoCode(EACCES);
  }
  const auto error = MakePrivateFolders(place.folder + "/files");
  return error ? error : MakePrivateFolders(place.folder + "/info");
}

std::string EscapePath(const std::string& path) {
  constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~/";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string escaped;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (kPlain.find(c) != std::string_view::npos) {
      escaped += c;
    } else {
      escaped += '%';
      escaped += kDigits[byte >> 4];
      escaped += kDigits[byte & 0xF];
    }
  }
  return escaped;
}

std::string InfoText(const std::string& path, const TrashPlace& place) {
  const time_t now = time(nullptr);
  tm local{};
  std::array<char, 32> date{};
  if (localtime_r(&now, &local) != nullptr) strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
  return "[Trash Info]\nPath=" + EscapePath(path.substr(place.originRoot.size())) +
         "\nDeletionDate=" + date.data() + "\n";
}

/// Writes the origin under the first free name, which reserves that name.
std::error_code ReserveName(const TrashPlace& place, const std::string& path, std::string& name) {
  const std::string base = path.substr(path.rfind('/') + 1);
  for (int i = 1; i <= kMostNames; ++i) {
    name = i == 1 ? base : base + '.' + std::to_string(i);
    const std::string info = place.folder + "/info/" + name + ".trashinfo";
    const int file = open(info.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kInfoMode);
    if (file < 0 && errno == EEXIST) continue;
    if (file < 0) return LastCode();
    const std::string text = InfoText(path, place);
    std::uint64_t written = 0;
    const auto error = WriteFile(file, text.data(), text.size(), written);
    close(file);
    if (error) unlink(info.c_str());
    return error;
  }
  return ErrnoCode(EEXIST);
}

}  // namespace

std::error_code MoveToTrash(const XpString& path) {
  std::string bytes;
  std::string absolute;
  TrashPlace place;
  std::string name;
  if (const auto error = posix::PathBytes(path, bytes)) return error;
  if (const auto error = ResolveFolder(bytes, absolute)) return error;
  if (const auto error = FindTrash(absolute, place)) return error;
  if (const auto error = ReserveName(place, absolute, name)) return error;
  const std::string target = place.folder + "/files/" + name;
  if (rename(absolute.c_str(), target.c_str()) == 0) return {};
  const auto error = LastCode();
  unlink((place.folder + "/info/" + name + ".trashinfo").c_str());
  return error;
}

}  // namespace vrx::platform
