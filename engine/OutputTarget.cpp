#include "engine/OutputTarget.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <string_view>
#include <system_error>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr int kMaxLinks = 40;  // as many as Linux follows
constexpr mode_t kRightsMask = 0777;

Result Refuse(const std::string& path, const std::string& cause) {
  Log(VRXLogError, "output not writable: " + path + ": " + cause);
  return kOutputFailed;
}

/// The folder of `path` with its slash; "" for a bare name.
std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

/// False when `path` is no link.
bool ReadLink(const std::string& path, std::string& target) {
  std::array<char, PATH_MAX> text{};
  const ssize_t length = readlink(path.c_str(), text.data(), text.size());
  if (length <= 0) return false;
  target.assign(text.data(), static_cast<std::size_t>(length));
  if (target.front() != '/') target.insert(0, FolderOf(path));
  return true;
}

bool HasSameFile(const std::string& path, const struct stat& file) {
  struct stat other {};
  return stat(path.c_str(), &other) == 0 && other.st_dev == file.st_dev && other.st_ino == file.st_ino;
}

}  // namespace

Result FindOutputTarget(const std::string& path, OutputTarget& target) {
  target = {path, std::nullopt};
  int links = 0;
  for (std::string next; ReadLink(target.path, next); target.path = next) {
    if (++links > kMaxLinks) return Refuse(path, SystemErrorText(ELOOP));
  }
  struct stat status {};
  if (target.path.empty() || target.path.back() == '/') return Refuse(path, SystemErrorText(EISDIR));
  if (lstat(target.path.c_str(), &status) != 0) {
    return errno == ENOENT ? kOk : Refuse(path, SystemErrorText(errno));
  }
  if (S_ISDIR(status.st_mode)) return Refuse(path, SystemErrorText(EISDIR));
  if (!S_ISREG(status.st_mode)) return Refuse(path, "it is a device, a pipe or a socket");
  if (faccessat(AT_FDCWD, target.path.c_str(), W_OK, AT_EACCESS) != 0) {
    return Refuse(path, "the file there is write-protected");
  }
  target.rights = {status.st_mode & kRightsMask, status.st_uid, status.st_gid};
  return kOk;
}

bool IsSameFile(const std::string& one, const std::string& other) {
  struct stat file {};
  return stat(other.c_str(), &file) == 0 && HasSameFile(one, file);
}

Result RefuseSourceAsOutput(const TimelinePlan& plan, const std::string& output) {
  struct stat file {};
  if (stat(output.c_str(), &file) != 0) return kOk;  // nothing there yet
  const auto refuse = [&](VRXTrackKind track, std::size_t index) {
    const ClipLogScope scope(track, index);
    Log(VRXLogError, "the movie would replace the source of this clip: " + output);
    return kUnusableSettings;
  };
  for (std::size_t i = 0; i < plan.video.size(); ++i) {
    if (HasSameFile(plan.video[i].path, file)) return refuse(VRXVideoTrack, i);
  }
  for (std::size_t i = 0; i < plan.audio.size(); ++i) {
    if (HasSameFile(plan.audio[i].path, file)) return refuse(VRXAudioTrack, i);
  }
  return kOk;
}

}  // namespace vrx::engine
