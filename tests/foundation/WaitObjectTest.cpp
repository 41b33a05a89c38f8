#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <functional>
#include <random>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "foundation/sync/XpManualEvent.h"
#include "foundation/sync/XpMultiWaiter.h"
#include "foundation/sync/XpMutex.h"
#include "foundation/sync/XpRwLock.h"
#include "foundation/sync/XpSemaphore.h"
#include "foundation/text/XpFormat.h"

namespace {

constexpr std::int32_t kNoLimit = XpComboSyncObject::kNoLimit;
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

void OnThreads(const std::function<void(int thread)>& body) {
  std::vector<std::jthread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(body, i);
}

/// A name that no other run of the tests has.
struct MutexName {
  explicit MutexName(const char16_t* stem) { text.Format(u"%s_%d", XpString(stem), getpid()); }
  ~MutexName() { vrx::platform::RemoveNamedMutex(text); }
  XpString text;
};

TEST(WaitObjectTest, AnEventLetsEveryoneThroughUntilItIsCleared) {
  XpManualEvent event;
  EXPECT_EQ(event.TryLock(), XpErrTimeout);
  EXPECT_EQ(event.WaitMilliseconds(1), XpErrTimeout);
  std::jthread sleeper([&] { EXPECT_EQ(event.Lock(), XpOk); });
  EXPECT_EQ(event.Unlock(), XpOk);
  sleeper.join();
  EXPECT_EQ(event.Wait(5), XpOk);
  event.Set(false);
  EXPECT_EQ(event.TryLock(), XpErrTimeout);
}

TEST(WaitObjectTest, ASemaphoreGivesOutItsPermitsAndKeepsItsMaximum) {
  XpSemaphore semaphore(2, 2);
  EXPECT_EQ(semaphore.Unlock(), XpOk);
  EXPECT_EQ(semaphore.TryLock(), XpOk);
  EXPECT_EQ(semaphore.TryLock(), XpOk);
  EXPECT_EQ(semaphore.TryLock(), XpErrTimeout);
  XpSemaphore endless;
  for (int i = 0; i < 5; ++i) endless.Unlock();
  for (int i = 0; i < 5; ++i) EXPECT_EQ(endless.TryLock(), XpOk);
}

TEST(WaitObjectTest, AMutexBelongsToOneThreadAndOneNameHoweverOftenItIsTaken) {
  const MutexName name(u"WaitObjectTest/owner");
  const MutexName otherName(u"WaitObjectTest_owner");
  XpMutex other(otherName.text);
  for (const XpString& text : {XpString(), name.text}) {
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

TEST(WaitObjectTest, AMutexOfADeadThreadOrProcessPassesOnAndThatOfALiveOneDoesNot) {
  XpMutex ofThread;
  EXPECT_EQ(OnOtherThread([&] { return ofThread.Lock(); }), XpOk);
  EXPECT_EQ(ofThread.Lock(), XpErrAbandoned);
  EXPECT_EQ(Elsewhere(ofThread, &XpMutex::TryLock), XpErrTimeout) << "it has an owner again";
  ofThread.Unlock();
  EXPECT_EQ(ofThread.TryLock(), XpOk);
  ofThread.Unlock();
  const MutexName name(u"WaitObjectTest process");
  std::array<int, 2> held;
  ASSERT_EQ(pipe(held.data()), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  char taken = 0;
  if (child == 0) {
    XpMutex mutex(name.text);
    taken = mutex.Lock() == XpOk ? 'y' : 'n';
    [[maybe_unused]] const auto written = write(held[1], &taken, 1);
    pause();
  }
  ASSERT_EQ(read(held[0], &taken, 1), 1);
  ASSERT_EQ(taken, 'y');
  XpMutex mutex(name.text);  // opened while the other process has it
  EXPECT_EQ(mutex.TryLock(), XpErrTimeout);
  kill(child, SIGKILL);
  EXPECT_EQ(mutex.Lock(), XpErrAbandoned);
  mutex.Unlock();
  EXPECT_EQ(waitpid(child, nullptr, 0), child);
  for (const int file : held) close(file);
}

template <class Lock>
class ReadWriteTest : public testing::Test {};
using ReadWriteLocks = testing::Types<XpRwLock, XpRwLockEx>;
TYPED_TEST_SUITE(ReadWriteTest, ReadWriteLocks);

TYPED_TEST(ReadWriteTest, ReadersShareAndAWriterIsAlone) {
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

TYPED_TEST(ReadWriteTest, AWriterThatGivesUpLetsTheReadersBehindItGoOn) {
  TypeParam lock;
  ASSERT_EQ(lock.TryRead(), XpOk);
  std::jthread writer([&] { EXPECT_EQ(lock.WaitWrite(1), XpErrTimeout); });
  EXPECT_EQ(Elsewhere(lock, &TypeParam::WaitRead, kNoLimit), XpOk);
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

// The plain numbers in these tests are guarded by nothing but the locks, so that a thread checker sees a lock
// that fails.
TYPED_TEST(ReadWriteTest, HoldsUnderManyThreads) {
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

TEST(WaitObjectTest, ASemaphoreHoldsUnderManyThreads) {
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

/// Counts how often a watched object wakes it, and keeps no permit of it.
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

TYPED_TEST(ReadWriteTest, AFailedTryWakesNoMultiWait) {
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
  // The time-out of a thread that sleeps meanwhile would start again with each wake.
  Watcher sleeper(sleep);
  lock.Watch(sleeper);
  EXPECT_EQ(lock.TryLock(), XpErrTimeout);
  EXPECT_EQ(lock.TryRead(), XpErrTimeout);
  lock.Unwatch(sleeper);
  EXPECT_EQ(sleep.wakes, 0);
  isDone = true;
  isDone.notify_one();
}

TEST(MultiWaitTest, OneOfSeveralIsTheFirstThatCanBeHadAndIsGivenBack) {
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

TEST(MultiWaitTest, WhoCannotHaveAllHasNone) {
  XpSemaphore first(1);
  XpSemaphore second;
  XpSemaphore sleep;
  const XpMultiLockAll all({&first, &second}, sleep, 0);
  EXPECT_EQ(all.GetResult(), XpErrTimeout);
  EXPECT_EQ(first.TryLock(), XpOk) << "what it had for a moment is free again";
}

// Neighbours round a table share a fork; each takes both or none, in an order that would block a plain wait.
TEST(MultiWaitTest, HoldsUnderManyThreads) {
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
