#include "foundation/platform/NamedMutex.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vrx::platform {
namespace {

/// What lies in the shared memory. A block that is not ready yet holds zeros.
struct Shared {
  static constexpr std::uint32_t kReady = 0x4D585256;
  std::uint32_t state;
  pthread_mutex_t mutex;
};

class File {
 public:
  explicit File(int handle) : m_handle(handle) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    if (m_handle >= 0) close(m_handle);
  }
  int Get() const { return m_handle; }

 private:
  int m_handle;
};

bool MakeMutex(pthread_mutex_t& mutex) {
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return false;
  const bool made = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                    pthread_mutex_init(&mutex, &attributes) == 0;
  pthread_mutexattr_destroy(&attributes);
  return made;
}

/// The name in the system's space of shared memory, which knows no slashes and limits the length. Each user
/// has names of their own, since what another user writes there could not be trusted. The prefix from the
/// environment keeps programs that set it, such as tests, apart from all others.
std::string SharedName(const XpString& name) {
  constexpr std::size_t kLongest = 200;
  const char* prefix = std::getenv("VRX_NAMED_OBJECT_PREFIX");
  const XpString whole = XpNarrowString(prefix == nullptr ? "" : prefix).ToWide() + name;
  std::string result = "/vrx-mutex-" + std::to_string(getuid()) + "-";
  for (const char16_t unit : whole.AsView()) {
    const bool plain = unit < 0x80 && (std::isalnum(static_cast<unsigned char>(unit)) != 0 || unit == u'_');
    result += plain ? std::string(1, static_cast<char>(unit)) : "%" + std::to_string(unit) + ".";
  }
  if (result.size() <= kLongest) return result;
  return result.substr(0, kLongest) + "-" + std::to_string(std::hash<std::string>{}(result));
}

Shared* MapPage(int handle) {
  const int flags = handle < 0 ? MAP_SHARED | MAP_ANONYMOUS : MAP_SHARED;
  void* page = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, flags, handle, 0);
  return page == MAP_FAILED ? nullptr : static_cast<Shared*>(page);
}

Shared* MapReady(int handle) {
  Shared* shared = MapPage(handle);
  if (shared == nullptr || shared->state == Shared::kReady) return shared;
  if (!MakeMutex(shared->mutex)) {
    munmap(shared, sizeof(Shared));
    return nullptr;
  }
  shared->state = Shared::kReady;
  return shared;
}

/// The memory of a mutex. The inode tells its file from a later one of the same name.
struct Page {
  Shared* shared = nullptr;
  ino_t inode = 0;
};

Page OpenPage(const std::string& name) {
  constexpr mode_t kOwnerOnly = 0600;
  for (;;) {
    const File file(shm_open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
    // Held while the mutex is made. When its maker dies meanwhile, the next process makes it.
    if (file.Get() < 0 || flock(file.Get(), LOCK_EX) != 0) return {};
    struct stat info {};
    if (fstat(file.Get(), &info) != 0 || info.st_uid != geteuid()) return {};
    if (info.st_nlink == 0) continue;  // removed while this process waited for the lock
    if (info.st_size < static_cast<off_t>(sizeof(Shared)) && ftruncate(file.Get(), sizeof(Shared)) != 0) {
      return {};
    }
    Shared* shared = MapReady(file.Get());
    // The mapping keeps the open file, and with it the lock, after the close.
    flock(file.Get(), LOCK_UN);
    return {shared, info.st_ino};
  }
}

/// Opens the mutex of this name again after that with `brokenInode` failed, and removes the latter unless
/// another process has done so. The caller still maps it, so that no new file can have its number.
Page ReopenPage(const std::string& name, ino_t brokenInode) {
  {
    const File file(shm_open(name.c_str(), O_RDWR | O_CLOEXEC, 0));
    struct stat info {};
    if (file.Get() >= 0 && flock(file.Get(), LOCK_EX) == 0 && fstat(file.Get(), &info) == 0 &&
        info.st_nlink > 0 && info.st_ino == brokenInode) {
      shm_unlink(name.c_str());
    }
  }
  return OpenPage(name);
}

timespec Deadline(std::int64_t milliseconds) {
  constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const std::int64_t nanoseconds = now.tv_nsec + milliseconds % 1000 * kNanosecondsPerMillisecond;
  now.tv_sec += static_cast<time_t>(milliseconds / 1000 + nanoseconds / kNanosecondsPerSecond);
  now.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
  return now;
}

/// pthread_mutex_trylock is not used, even to wait no time: with glibc it leaves a mutex that is not
/// recoverable locked, and other processes that have it open would wait for ever.
int LockWithin(pthread_mutex_t& mutex, std::int64_t milliseconds) {
  if (milliseconds < 0) return pthread_mutex_lock(&mutex);
  const timespec deadline = Deadline(milliseconds);
  return pthread_mutex_clocklock(&mutex, CLOCK_MONOTONIC, &deadline);
}

}  // namespace

/// A mutex as this process has it open. A page is unmapped with the block: while a thread holds a mutex, the
/// system keeps a pointer into its page.
struct NamedMutex::Block {
  Block(std::string blockName, const Page& page)
      : name(std::move(blockName)), pages{page}, current(page.shared) {}
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() {
    for (const Page& page : pages) munmap(page.shared, sizeof(Shared));
  }

  /// Replaces a mutex that cannot be locked any more by a new one. False when that cannot be made.
  bool Replace(const Shared* broken) {
    const std::scoped_lock guard(lock);
    if (current != broken) return true;  // by another thread
    const Page page = name.empty() ? Page{MapReady(-1)} : ReopenPage(name, pages.back().inode);
    if (page.shared == nullptr) return false;
    pages.push_back(page);
    current = page.shared;
    return true;
  }

  const std::string name;  // empty for one without a name
  std::mutex lock;         // of the pages
  std::vector<Page> pages;
  std::atomic<Shared*> current;
};

namespace {

std::shared_ptr<NamedMutex::Block> MakeBlock(const std::string& name) {
  const Page page = name.empty() ? Page{MapReady(-1)} : OpenPage(name);
  return page.shared == nullptr ? nullptr : std::make_shared<NamedMutex::Block>(name, page);
}

/// A mutex has one address in a process, however many objects share its name. Blocks with a name stay until
/// the process ends.
struct OpenBlocks {
  std::mutex lock;
  std::map<std::string, std::shared_ptr<NamedMutex::Block>> blocks;
};

std::shared_ptr<NamedMutex::Block> OpenBlock(const XpString& name) {
  if (name.IsEmpty()) return MakeBlock({});
  static OpenBlocks* open = new OpenBlocks;  // never destroyed: logs are written until the very end
  const std::string sharedName = SharedName(name);
  const std::scoped_lock guard(open->lock);
  std::shared_ptr<NamedMutex::Block>& block = open->blocks[sharedName];
  if (block == nullptr) block = MakeBlock(sharedName);
  return block;
}

}  // namespace

NamedMutex::NamedMutex(const XpString& name) : m_block(OpenBlock(name)) {}
NamedMutex::~NamedMutex() = default;

MutexWait NamedMutex::Wait(std::int64_t milliseconds) {
  constexpr int kMostTries = 3;
  if (!m_block) return MutexWait::InvalidHandle;
  for (int i = 0; i < kMostTries; ++i) {
    Shared* const shared = m_block->current;
    switch (LockWithin(shared->mutex, milliseconds)) {
      case 0:
        return i == 0 ? MutexWait::Taken : MutexWait::Abandoned;
      case EOWNERDEAD:
        pthread_mutex_consistent(&shared->mutex);
        return MutexWait::Abandoned;
      case ENOTRECOVERABLE:  // another program unlocked it after a dead owner without repairing it
        if (!m_block->Replace(shared)) return MutexWait::Failed;
        break;
      case ETIMEDOUT:
        return MutexWait::TimedOut;
      default:
        return MutexWait::Failed;
    }
  }
  return MutexWait::Failed;
}

bool NamedMutex::Release() { return m_block && pthread_mutex_unlock(&m_block->current.load()->mutex) == 0; }

}  // namespace vrx::platform
