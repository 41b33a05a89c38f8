#include "foundation/platform/NamedMutex.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <ctime>
#include <functional>
#include <map>
#include <mutex>
#include <string>

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

/// The name in the system's space of shared memory, which knows no slashes and ends early. Each user has
/// names of their own, since what another user writes there could not be trusted.
std::string SharedName(const XpString& name) {
  constexpr std::size_t kLongest = 200;
  std::string result = "/vrx-mutex-" + std::to_string(getuid()) + "-";
  for (const char16_t unit : name.AsView()) {
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

Shared* OpenShared(const std::string& name) {
  constexpr mode_t kOwnerOnly = 0600;
  const File file(shm_open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
  // Held while the block is made; a maker that dies meanwhile lets go and leaves the work to the next.
  if (file.Get() < 0 || flock(file.Get(), LOCK_EX) != 0) return nullptr;
  struct stat info {};
  if (fstat(file.Get(), &info) != 0 || info.st_uid != geteuid()) return nullptr;
  if (info.st_size < static_cast<off_t>(sizeof(Shared)) && ftruncate(file.Get(), sizeof(Shared)) != 0) {
    return nullptr;
  }
  Shared* shared = MapReady(file.Get());
  // The mapping keeps the open file, and with it the lock, beyond the close.
  flock(file.Get(), LOCK_UN);
  return shared;
}

timespec Deadline(std::int64_t milliseconds) {
  constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const std::int64_t nanoseconds = now.tv_nsec + milliseconds % 1000 * kNanosecondsPerMillisecond;
  now.tv_sec += static_cast<time_t>(milliseconds / 1000 + nanoseconds / kNanosecondsPerSecond);
  now.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
  return now;
}

int LockWithin(pthread_mutex_t& mutex, std::int64_t milliseconds) {
  if (milliseconds < 0) return pthread_mutex_lock(&mutex);
  if (milliseconds == 0) return pthread_mutex_trylock(&mutex);
  const timespec deadline = Deadline(milliseconds);
  return pthread_mutex_timedlock(&mutex, &deadline);
}

}  // namespace

struct NamedMutex::Block {
  explicit Block(Shared* page) : shared(page) {}
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { munmap(shared, sizeof(Shared)); }
  Shared* shared;
};

namespace {

/// A mutex has one address in a process, however many objects share its name. The pages stay until the end:
/// a thread that still held a mutex would keep a pointer into its page.
struct OpenBlocks {
  std::mutex lock;
  std::map<std::string, std::shared_ptr<NamedMutex::Block>> blocks;
};

OpenBlocks& Open() {
  static OpenBlocks* open = new OpenBlocks;  // never destroyed: logs are written until the very end
  return *open;
}

std::shared_ptr<NamedMutex::Block> OpenBlock(const XpString& name) {
  if (name.IsEmpty()) {
    Shared* shared = MapReady(-1);
    return shared == nullptr ? nullptr : std::make_shared<NamedMutex::Block>(shared);
  }
  const std::string sharedName = SharedName(name);
  OpenBlocks& open = Open();
  const std::scoped_lock guard(open.lock);
  std::shared_ptr<NamedMutex::Block>& block = open.blocks[sharedName];
  if (block == nullptr) {
    Shared* shared = OpenShared(sharedName);
    if (shared != nullptr) block = std::make_shared<NamedMutex::Block>(shared);
  }
  return block;
}

}  // namespace

NamedMutex::NamedMutex(const XpString& name) : m_block(OpenBlock(name)) {}
NamedMutex::~NamedMutex() = default;

MutexWait NamedMutex::Wait(std::int64_t milliseconds) {
  if (!m_block) return MutexWait::InvalidHandle;
  pthread_mutex_t& mutex = m_block->shared->mutex;
  switch (LockWithin(mutex, milliseconds)) {
    case 0:
      return MutexWait::Taken;
    case EOWNERDEAD:
      pthread_mutex_consistent(&mutex);
      return MutexWait::Abandoned;
    case EBUSY:
    case ETIMEDOUT:
      return MutexWait::TimedOut;
    default:
      return MutexWait::Failed;
  }
}

bool NamedMutex::Release() { return m_block && pthread_mutex_unlock(&m_block->shared->mutex) == 0; }

void RemoveNamedMutex(const XpString& name) {
  if (name.IsEmpty()) return;
  const std::string sharedName = SharedName(name);
  OpenBlocks& open = Open();
  const std::scoped_lock guard(open.lock);
  open.blocks.erase(sharedName);
  shm_unlink(sharedName.c_str());
}

}  // namespace vrx::platform
