#include "engine/OutputFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <random>
#include <string_view>
#include <system_error>

#include "engine/EngineLog.h"
#include "engine/OutputTarget.h"

namespace vrx::engine {
namespace {

constexpr int kNameAttempts = 100;
constexpr std::size_t kRandomLetters = 6;
constexpr std::size_t kMaxNameInTemporary = 200;  // bytes, so that the whole name stays below 255
constexpr mode_t kNewFileMode = 0666;             // less what the process's mask takes away

/// Keeps the signal for a file over its size limit from ending the process: the write then fails with EFBIG.
class FileSizeSignalGuard {
 public:
  FileSizeSignalGuard() {
    sigemptyset(&m_signals);
    sigaddset(&m_signals, SIGXFSZ);
    sigset_t pending;
    m_wasPending = sigpending(&pending) == 0 && sigismember(&pending, SIGXFSZ) == 1;
    m_blocked = pthread_sigmask(SIG_BLOCK, &m_signals, &m_before) == 0;
  }
  FileSizeSignalGuard(const FileSizeSignalGuard&) = delete;
  FileSizeSignalGuard& operator=(const FileSizeSignalGuard&) = delete;
  ~FileSizeSignalGuard() {
    if (!m_blocked) return;
    // A signal that a write raised is pending and would end the process once it is unblocked.
    const timespec noWait{};
    if (!m_wasPending) sigtimedwait(&m_signals, nullptr, &noWait);
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
  }

 private:
  sigset_t m_signals{};
  sigset_t m_before{};
  bool m_wasPending = false;
  bool m_blocked = false;
};

Result ResultOf(int systemError) {
  if (systemError == 0) return kOk;
  const bool full = systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG;
  return full ? kDiskFull : kOutputFailed;
}

std::string SystemText(int systemError) { return std::generic_category().message(systemError); }

Result Fail(const std::string& path, int systemError) {
  Log(VRXLogError, "output not writable: " + path + ": " + SystemText(systemError));
  return ResultOf(systemError);
}

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";

/// The temporary names of a movie, without the random letters.
std::string TemporaryPrefix(const std::string& name) {
  return "." + name.substr(0, kMaxNameInTemporary) + ".part-";
}

std::string RandomLetters(std::random_device& random) {
  std::string letters;
  for (std::size_t i = 0; i < kRandomLetters; ++i) {
    letters.push_back(kLetters[random() % static_cast<unsigned>(kLetters.size())]);
  }
  return letters;
}

/// A render holds the lock on its temporary file as long as it lives, so one that can be locked is a
/// leftover.
bool Lock(int descriptor) { return flock(descriptor, LOCK_EX | LOCK_NB) == 0; }

/// Whether the file still has a name: before it was locked, another render may have removed it as a leftover.
bool HasName(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

/// Gives the movie the owner, group and rights of the file that it replaces, as far as the system allows. If
/// the group cannot be kept, the movie's own group gets no rights.
void TakeOver(FileRights rights, int descriptor) {
  const bool sameGroup = fchown(descriptor, rights.owner, rights.group) == 0 ||
                         fchown(descriptor, static_cast<uid_t>(-1), rights.group) == 0;
  constexpr mode_t kGroupRights = 0070;
  if (fchmod(descriptor, sameGroup ? rights.mode : rights.mode & ~kGroupRights) != 0) {
    Log(VRXLogWarning, "the movie cannot take over the rights of the file that it replaces");
  }
}

/// Removes the temporary files of killed renders of the same movie.
void RemoveLeftovers(const std::string& folder, const std::string& prefix) {
  struct CloseFolder {
    void operator()(DIR* open) const { closedir(open); }
  };
  const std::unique_ptr<DIR, CloseFolder> entries(opendir(folder.empty() ? "." : folder.c_str()));
  if (entries == nullptr) return;
  while (const dirent* entry = readdir(entries.get())) {
    const std::string_view name = entry->d_name;
    if (!name.starts_with(prefix) || name.size() != prefix.size() + kRandomLetters ||
        name.find_first_not_of(kLetters, prefix.size()) != name.npos) {
      continue;
    }
    const std::string path = folder + entry->d_name;
    const int descriptor = open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) continue;
    struct stat status {};
    const bool isLeftover = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                            status.st_uid == geteuid() && Lock(descriptor);
    if (isLeftover) unlink(path.c_str());
    close(descriptor);
  }
}

}  // namespace

OutputFile::~OutputFile() { Discard(); }

Result OutputFile::Create(const std::string& path, const std::string& series) {
  m_systemError = 0;
  OutputTarget target;
  VRX_TRY(FindOutputTarget(path, target));
  m_path = path;
  m_finalPath = target.path;
  const std::size_t nameStart = m_finalPath.rfind('/') + 1;  // 0 without a slash
  const std::string folder = m_finalPath.substr(0, nameStart);
  const std::string prefix = TemporaryPrefix(series.empty() ? m_finalPath.substr(nameStart) : series);
  if (folder + prefix != m_tidied) RemoveLeftovers(folder, prefix);
  m_tidied = folder + prefix;
  std::random_device random;
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    m_temporaryPath = folder + prefix + RandomLetters(random);
    m_descriptor = open(m_temporaryPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
    if (m_descriptor < 0) {
      if (errno != EEXIST && errno != EINTR) break;
      continue;
    }
    // On a file system without locks the file is used unlocked. Nothing there is taken for a leftover either.
    const bool isOurs = Lock(m_descriptor) || errno != EWOULDBLOCK;
    if (isOurs && HasName(m_descriptor)) {
      if (target.rights) TakeOver(*target.rights, m_descriptor);
      return kOk;
    }
    Discard();
  }
  const int cause = errno;
  m_temporaryPath.clear();
  return Fail(path, cause);
}

bool OutputFile::Write(const std::uint8_t* data, std::size_t size) {
  if (m_descriptor < 0 || m_systemError != 0) return false;
  const FileSizeSignalGuard guard;
  while (size > 0) {
    const ssize_t written = write(m_descriptor, data, size);
    if (written < 0) {
      if (errno == EINTR) continue;
      Remember(errno);
      return false;
    }
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

std::int64_t OutputFile::Seek(std::int64_t offset, int whence) {
  const off_t position = lseek(m_descriptor, offset, whence);
  if (position >= 0) return position;
  Remember(errno);
  return -std::int64_t{errno};
}

std::int64_t OutputFile::GetSize() const {
  struct stat status {};
  return fstat(m_descriptor, &status) == 0 ? status.st_size : -std::int64_t{errno};
}

Result OutputFile::Commit() {
  if (m_descriptor < 0) return kOutputFailed;
  if (m_systemError == 0 && fdatasync(m_descriptor) != 0) Remember(errno);
  // Some file systems report a full disk only now. The second descriptor keeps the lock until the file has
  // its name.
  const int lock = fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0);
  const int descriptor = m_descriptor;
  m_descriptor = -1;
  if (close(descriptor) != 0 && errno != EINTR) Remember(errno);
  if (m_systemError == 0 && std::rename(m_temporaryPath.c_str(), m_finalPath.c_str()) != 0) Remember(errno);
  if (lock >= 0) close(lock);
  if (m_systemError == 0) {
    m_temporaryPath.clear();
    return kOk;
  }
  Discard();
  return ReportError();
}

void OutputFile::Discard() {
  if (m_descriptor >= 0) close(m_descriptor);
  m_descriptor = -1;
  if (!m_temporaryPath.empty()) unlink(m_temporaryPath.c_str());
  m_temporaryPath.clear();
}

Result OutputFile::GetError() const { return ResultOf(m_systemError); }

Result OutputFile::ReportError() const { return m_systemError == 0 ? kOk : Fail(m_path, m_systemError); }

void OutputFile::Remember(int systemError) {
  if (m_systemError == 0) m_systemError = systemError;
}

}  // namespace vrx::engine
