// Wait objects: who gets them, who is woken, and what happens when an owner dies.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <latch>
#include <memory>
#include <random>
#include <semaphore>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/sync/XpManualEvent.h"
#include "foundation/sync/XpMultiWaiter.h"
#include "foundation/sync/XpMutex.h"
#include "foundation/sync/XpRwLock.h"
#include "foundation/sync/XpSemaphore.h"

namespace {

constexpr std::int32_t kNoLimit = XpComboSyncObject::kNoLimit;
constexpr std::int32_t kLongSeconds = 20;  // only a wake that was lost takes as long
constexpr int kThreads = 8;

template <class Function>
auto OnOtherThread(Function function) {
  decltype(function()) result{};
  std::thread([&] { result = function(); }).join();
  return result;
}

/// What another thread gets from `lock`; it gives back what it took.
template <class Lock, class Take, class... Arguments>
XpResult Elsewhere(Lock& lock, Take take, Arguments... arguments) {
  return OnOtherThread([&] {
    const XpResult result = std::invoke(take, lock, arguments...);
    if (result == XpOk) lock.Unlock();
    return result;
  });
}

/// Counts how often a watched object wakes it, and gets no permits from that.
struct WakeCounter : XpSemaphore {
  XpResult Unlock() override {
    ++wakes;
    return XpOk;
  }
  int wakes = 0;
};

struct Watcher : XpMultiWaiterBase {
  explicit Watcher(XpComboSyncObject& sleepObject) : XpMultiWaiterBase(sleepObject) {}
};

void OnThreads(const std::function<void(int thread)>& body) {
  std::vector<std::jthread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(body, i);
}

/// A lock that is wanted by a thread which signals as soon as it has it.
struct WantedLock : XpSyncObject {
  explicit WantedLock(WakeEvent& signalled) : event(signalled) {}
  XpResult Lock() override { return XpOk; }
  XpResult TryLock() override { return XpOk; }
  XpResult Unlock() override {
    event.Signal();
    return XpOk;
  }
  WakeEvent& event;
};

TEST(WaitObjectTest, SignalBetweenUnlockAndSleepIsNotLost) {
  WakeEvent event;
  WantedLock lock(event);
  EXPECT_EQ(event.Sleep(lock, 1000), XpOk);
}

TEST(WaitObjectTest, EventIsWaitedForBySeveralUntilItIsCleared) {
  XpManualEvent event;
  EXPECT_EQ(event.TryLock(), XpErrTimeout);
  EXPECT_EQ(event.WaitMilliseconds(1), XpErrTimeout);
  {
    std::latch areStarted(kThreads);
    std::counting_semaphore<kThreads> awake(0);
    std::vector<std::jthread> sleepers;
    for (int i = 0; i < kThreads; ++i) {
      sleepers.emplace_back([&] {
        areStarted.count_down();
        EXPECT_EQ(event.Lock(), XpOk);
        awake.release();
      });
    }
    areStarted.wait();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));  // usually all are asleep then
    EXPECT_EQ(event.Unlock(), XpOk);
    int woken = 0;
    while (woken < kThreads && awake.try_acquire_for(std::chrono::seconds(kLongSeconds))) ++woken;
    EXPECT_EQ(woken, kThreads);
    while (woken++ < kThreads) event.Unlock();
  }
  EXPECT_EQ(event.Wait(5), XpOk);
  event.Set(false);
  EXPECT_EQ(event.TryLock(), XpErrTimeout);
}

TEST(WaitObjectTest, SemaphoreGivesAsManyPermitsAsItHasAndKeepsItsMaximum) {
  XpSemaphore semaphore(2, 2);
  EXPECT_EQ(semaphore.Unlock(), XpOk);
  EXPECT_EQ(semaphore.TryLock(), XpOk);
  EXPECT_EQ(semaphore.TryLock(), XpOk);
  EXPECT_EQ(semaphore.TryLock(), XpErrTimeout);
  XpSemaphore endless;
  for (int i = 0; i < 5; ++i) endless.Unlock();
  for (int i = 0; i < 5; ++i) EXPECT_EQ(endless.TryLock(), XpOk);
}

TEST(WaitObjectTest, MutexIsHeldByOneThreadUntilItsLastUnlock) {
  XpMutex other(u"WaitObjectTest_owner");
  for (const XpString& text : {XpString(), XpString(u"WaitObjectTest/owner")}) {
    XpMutex mutex(text);
    XpMutex second(text);
    EXPECT_EQ(mutex.Wait(5), XpErrNoHandle);
    EXPECT_EQ(mutex.Lock(), XpOk);
    EXPECT_EQ(mutex.TryLock(), XpOk);
    EXPECT_EQ(Elsewhere(mutex, &XpMutex::TryLock), XpErrTimeout);
    EXPECT_EQ(Elsewhere(second, &XpMutex::TryLock), text.IsEmpty() ? XpOk : XpErrTimeout) << text.Length();
    EXPECT_EQ(Elsewhere(other, &XpMutex::TryLock), XpOk);
    EXPECT_EQ(OnOtherThread([&] { return mutex.Unlock(); }), XpOk);
    EXPECT_EQ(mutex.Unlock(), XpOk);
    EXPECT_EQ(Elsewhere(mutex, &XpMutex::TryLock), XpErrTimeout) << "one hold is left";
    EXPECT_EQ(mutex.Unlock(), XpOk);
    EXPECT_EQ(Elsewhere(mutex, &XpMutex::TryLock), XpOk);
  }
}

/// A process that takes the mutex of a name and keeps it until it is killed.
class HoldingProcess {
 public:
  explicit HoldingProcess(const XpString& name) {
    std::array<int, 2> ends;
    EXPECT_EQ(pipe(ends.data()), 0);
    m_child = fork();
    if (m_child == 0) {
      XpMutex mutex(name);
      const XpResult result = mutex.Lock();
      [[maybe_unused]] const auto written = write(ends[1], &result, sizeof result);
      pause();
    }
    EXPECT_EQ(read(ends[0], &m_result, sizeof m_result), static_cast<ssize_t>(sizeof m_result));
    for (const int end : ends) close(end);
  }
  HoldingProcess(const HoldingProcess&) = delete;
  HoldingProcess& operator=(const HoldingProcess&) = delete;
  ~HoldingProcess() {
    kill(m_child, SIGKILL);
    waitpid(m_child, nullptr, 0);
  }
  XpResult GetLockResult() const { return m_result; }

 private:
  pid_t m_child = -1;
  XpResult m_result = XpErrFailed;
};

TEST(WaitObjectTest, MutexIsReleasedWhenItsThreadOrProcessDies) {
  XpMutex ofThread;
  EXPECT_EQ(OnOtherThread([&] { return ofThread.Lock() == XpOk ? ofThread.Lock() : XpErrFailed; }), XpOk);
  EXPECT_EQ(ofThread.Lock(), XpErrAbandoned);
  EXPECT_EQ(Elsewhere(ofThread, &XpMutex::TryLock), XpErrTimeout) << "it has an owner again";
  WakeCounter sleep;
  Watcher sleeper(sleep);
  ofThread.Watch(sleeper);
  ofThread.Unlock();
  ofThread.Unwatch(sleeper);
  EXPECT_EQ(sleep.wakes, 1) << "holds of the dead owner were kept";
  EXPECT_EQ(ofThread.TryLock(), XpOk);
  ofThread.Unlock();
  const XpString name(u"WaitObjectTest process");
  auto holder = std::make_unique<HoldingProcess>(name);
  ASSERT_EQ(holder->GetLockResult(), XpOk);
  XpMutex mutex(name);  // opened while the other process has it
  EXPECT_EQ(mutex.TryLock(), XpErrTimeout);
  holder.reset();
  EXPECT_EQ(mutex.Lock(), XpErrAbandoned);
  mutex.Unlock();
}

/// Does what a faulty program would: takes a mutex over from a dead owner and unlocks it without repairing
/// it, so that it cannot be locked any more. The name may have only letters.
void MakeUnrecoverable(const std::string& name) {
  struct Page {
    std::uint32_t state;
    pthread_mutex_t mutex;
  };
  const std::string file =
      "/vrx-mutex-" + std::to_string(getuid()) + "-" + std::getenv("VRX_NAMED_OBJECT_PREFIX") + name;
  const int handle = shm_open(file.c_str(), O_RDWR, 0);
  ASSERT_GE(handle, 0) << file;
  void* memory = mmap(nullptr, sizeof(Page), PROT_READ | PROT_WRITE, MAP_SHARED, handle, 0);
  ASSERT_NE(memory, MAP_FAILED);
  pthread_mutex_t* mutex = &static_cast<Page*>(memory)->mutex;
  EXPECT_EQ(OnOtherThread([&] { return pthread_mutex_lock(mutex); }), 0);
  EXPECT_EQ(pthread_mutex_lock(mutex), EOWNERDEAD);
  EXPECT_EQ(pthread_mutex_unlock(mutex), 0);
  EXPECT_EQ(pthread_mutex_lock(mutex), ENOTRECOVERABLE);
  munmap(memory, sizeof(Page));
  close(handle);
}

TEST(WaitObjectTest, UnrecoverableMutexIsMadeAgainForAllProcesses) {
  const XpString name(u"unrecoverable");
  XpMutex mutex(name);
  MakeUnrecoverable("unrecoverable");
  const HoldingProcess holder(name);
  EXPECT_EQ(holder.GetLockResult(), XpErrAbandoned);
  EXPECT_EQ(mutex.TryLock(), XpErrTimeout);
}

TEST(WaitObjectTest, TryOfAnUnrecoverableMutexBlocksNoOtherProcess) {
  const XpString name(u"unrecoverableTry");
  XpMutex mutex(name);
  MakeUnrecoverable("unrecoverableTry");
  std::array<int, 2> ends;
  ASSERT_EQ(pipe(ends.data()), 0);
  const pid_t later = fork();  // has the old mutex open
  if (later == 0) {
    char go = 0;
    [[maybe_unused]] const auto got = read(ends[0], &go, 1);
    alarm(20);
    _exit(mutex.Lock() == XpErrAbandoned ? 0 : 1);
  }
  EXPECT_EQ(mutex.TryLock(), XpErrAbandoned);
  mutex.Unlock();
  EXPECT_EQ(write(ends[1], "g", 1), 1);
  int status = -1;
  waitpid(later, &status, 0);
  EXPECT_EQ(status, 0);
  for (const int end : ends) close(end);
}

template <class Lock>
class ReadWriteTest : public testing::Test {};
using ReadWriteLocks = testing::Types<XpRwLock, XpRwLockEx>;
TYPED_TEST_SUITE(ReadWriteTest, ReadWriteLocks);

TYPED_TEST(ReadWriteTest, ReadersShareTheLockAndAWriterDoesNot) {
  TypeParam lock;
  EXPECT_EQ(lock.TryRead(), XpOk);
  EXPECT_EQ(Elsewhere(lock, &TypeParam::TryLock), XpErrTimeout);
  EXPECT_EQ(Elsewhere(lock, &TypeParam::TryRead), XpOk);
  lock.Unlock();
  EXPECT_EQ(lock.Lock(), XpOk);
  EXPECT_EQ(lock.TryLock(), XpOk) << "the writer takes it again";
  lock.Unlock();
  EXPECT_EQ(Elsewhere(lock, &TypeParam::TryRead), XpErrTimeout);
  EXPECT_EQ(Elsewhere(lock, &TypeParam::TryLock), XpErrTimeout);
  lock.Unlock();
  EXPECT_EQ(Elsewhere(lock, &TypeParam::TryLock), XpOk);
}

TYPED_TEST(ReadWriteTest, AWaitingWriterGoesBeforeNewReaders) {
  TypeParam lock;
  std::atomic<bool> hasWritten = false;
  ASSERT_EQ(lock.TryRead(), XpOk);
  std::jthread writer([&] {
    EXPECT_EQ(lock.WaitWrite(kNoLimit), XpOk);
    hasWritten = true;
    lock.Unlock();
  });
  // New readers get in until the writer waits, and none after that.
  while (Elsewhere(lock, &TypeParam::TryRead) == XpOk) {
  }
  std::jthread reader([&] {
    EXPECT_EQ(lock.WaitRead(kNoLimit), XpOk);
    EXPECT_TRUE(hasWritten);
    lock.Unlock();
  });
  lock.Unlock();
}

TYPED_TEST(ReadWriteTest, WriterThatTimesOutWakesTheReadersThatWaitedForIt) {
  TypeParam lock;
  ASSERT_EQ(lock.TryRead(), XpOk);
  std::atomic<bool> hasGivenUp = false;
  std::jthread writer([&] {
    EXPECT_EQ(lock.WaitWrite(1), XpErrTimeout);
    hasGivenUp = true;
  });
  while (Elsewhere(lock, &TypeParam::TryRead) == XpOk && !hasGivenUp) {  // until the writer waits
  }
  EXPECT_EQ(Elsewhere(lock, &TypeParam::WaitRead, kLongSeconds), XpOk);
  writer.join();
  lock.Unlock();
}

TEST(ReadWriteExTest, TheWriterMayReadAndALoneReaderMayRise) {
  XpRwLock plain;
  ASSERT_EQ(plain.Lock(), XpOk);
  EXPECT_EQ(plain.TryRead(), XpErrTimeout);
  plain.Unlock();
  XpRwLockEx lock;
  ASSERT_EQ(lock.Lock(), XpOk);
  EXPECT_EQ(lock.TryRead(), XpOk);
  lock.Unlock();
  EXPECT_EQ(Elsewhere(lock, &XpRwLockEx::TryRead), XpErrTimeout) << "one hold is left";
  lock.Unlock();
  ASSERT_EQ(lock.TryRead(), XpOk);
  ASSERT_EQ(lock.TryRead(), XpOk);
  EXPECT_EQ(lock.TryLock(), XpOk);
  EXPECT_EQ(Elsewhere(lock, &XpRwLockEx::TryRead), XpErrTimeout);
  lock.Unlock();
  EXPECT_EQ(OnOtherThread([&] { return lock.TryRead(); }), XpOk) << "back to reading";
  EXPECT_EQ(lock.TryLock(), XpErrTimeout) << "another thread reads too";
}

// Only the locks guard the plain numbers in these tests, so that a thread checker finds a lock that fails.
TYPED_TEST(ReadWriteTest, ManyThreadsNeverWriteAndReadAtOnce) {
  constexpr int kRounds = 4000;
  TypeParam lock;
  int written = 0;
  std::atomic<int> readers = 0;
  std::atomic<int> writers = 0;
  std::atomic<int> writes = 0;
  OnThreads([&](int thread) {
    std::mt19937 random(static_cast<unsigned>(thread));
    for (int i = 0; i < kRounds; ++i) {
      if (random() % 4 == 0) {
        if (lock.WaitWrite(random() % 2 == 0 ? 0 : kNoLimit) != XpOk) continue;
        EXPECT_EQ(++writers, 1);
        EXPECT_EQ(readers, 0);
        ++written;
        ++writes;
        --writers;
      } else {
        if (lock.WaitRead(random() % 2 == 0 ? 0 : kNoLimit) != XpOk) continue;
        ++readers;
        EXPECT_EQ(writers, 0);
        --readers;
      }
      lock.Unlock();
    }
  });
  EXPECT_EQ(written, writes);
}

TEST(WaitObjectTest, ManyThreadsNeverHoldMorePermitsThanThereAre) {
  constexpr int kRounds = 4000;
  constexpr int kPermits = 3;
  XpSemaphore semaphore(kPermits, kPermits);
  std::atomic<int> inside = 0;
  OnThreads([&](int) {
    for (int i = 0; i < kRounds; ++i) {
      semaphore.Lock();
      EXPECT_LE(++inside, kPermits);
      --inside;
      semaphore.Unlock();
    }
  });
}

TYPED_TEST(ReadWriteTest, FailedTryWakesNobody) {
  TypeParam lock;
  XpSemaphore permit(1);
  std::atomic<bool> isDone = false;
  std::binary_semaphore isHeld(0);
  std::jthread writer([&] {
    EXPECT_EQ(lock.Lock(), XpOk);
    isHeld.release();
    isDone.wait(false);
    lock.Unlock();
  });
  isHeld.acquire();
  WakeCounter sleep;
  EXPECT_EQ(XpMultiLockOne({&lock}, sleep, 0).GetResult(), XpErrTimeout);
  EXPECT_EQ(XpMultiLockAll({&lock, &permit}, sleep, 0).GetResult(), XpErrTimeout);
  // A wake would start the time-out of a sleeping thread again.
  Watcher sleeper(sleep);
  lock.Watch(sleeper);
  EXPECT_EQ(lock.TryLock(), XpErrTimeout);
  EXPECT_EQ(lock.TryRead(), XpErrTimeout);
  lock.Unwatch(sleeper);
  EXPECT_EQ(sleep.wakes, 0);
  isDone = true;
  isDone.notify_one();
}

TEST(MultiWaitTest, LockOneTakesTheFirstFreeObjectAndUnlocksItAtTheEnd) {
  XpSemaphore empty;
  XpSemaphore full(1);
  XpSemaphore sleep;
  {
    const XpMultiLockOne one({&empty, &full}, sleep, 0);
    EXPECT_TRUE(one.IsLocked());
    EXPECT_EQ(one.GetIndex(), 1);
    EXPECT_EQ(one.GetObject(), &full);
    EXPECT_EQ(full.TryLock(), XpErrTimeout);
  }
  EXPECT_EQ(full.TryLock(), XpOk);
  const XpMultiLockOne none({&empty, &full}, sleep, 0);
  EXPECT_EQ(none.GetResult(), XpErrTimeout);
  EXPECT_EQ(none.GetIndex(), XpMultiLockOne::kNone);
}

TEST(MultiWaitTest, LockAllThatFailsKeepsNoObject) {
  XpSemaphore first(1);
  XpSemaphore second;
  XpSemaphore sleep;
  const XpMultiLockAll all({&first, &second}, sleep, 0);
  EXPECT_EQ(all.GetResult(), XpErrTimeout);
  EXPECT_EQ(first.TryLock(), XpOk) << "what it had for a moment is free again";
}

/// Never free; does something when it is first tried.
struct NeverFree : XpSemaphore {
  explicit NeverFree(std::function<void()> whenTried) : onTry(std::move(whenTried)) {}
  XpResult Wait(std::int32_t) override {
    if (onTry) std::exchange(onTry, nullptr)();
    return XpErrTimeout;
  }
  std::function<void()> onTry;
};

TEST(MultiWaitTest, LockAllThatFailsLeavesAnEventAsItIs) {
  for (const bool isCleared : {false, true}) {
    XpManualEvent event;
    event.Set(true);
    NeverFree other([&] { event.Set(!isCleared); });
    XpSemaphore sleep;
    EXPECT_EQ(XpMultiLockAll({&event, &other}, sleep, 0).GetResult(), XpErrTimeout);
    EXPECT_EQ(event.TryLock(), isCleared ? XpErrTimeout : XpOk);
  }
}

// Neighbours at a round table share a fork. Each takes both or none, in an order in which plain locks would
// block each other.
TEST(MultiWaitTest, ManyThreadsWithObjectsInDifferentOrdersDoNotBlock) {
  constexpr int kRounds = 500;
  std::array<XpMutex, kThreads> forks;
  std::array<int, kThreads> meals{};
  XpMutex& spare = forks[0];
  int servings = 0;
  OnThreads([&](int thread) {
    const auto left = static_cast<std::size_t>(thread);
    const std::size_t right = (left + 1) % kThreads;
    XpSemaphore sleep;
    for (int i = 0; i < kRounds; ++i) {
      {
        const XpMultiLockAll both({&forks[left], &forks[right]}, sleep, kNoLimit);
        EXPECT_TRUE(both.IsLocked());
        ++meals[left];
        ++meals[right];
      }
      const XpMultiLockOne one({&spare}, sleep, kNoLimit);
      EXPECT_EQ(one.GetIndex(), 0);
      ++servings;
    }
  });
  for (const int count : meals) EXPECT_EQ(count, 2 * kRounds);
  EXPECT_EQ(servings, kThreads * kRounds);
}

}  // namespace
