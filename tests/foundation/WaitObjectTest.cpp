#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "foundation/sync/XpManualEvent.h"
#include "foundation/sync/XpMultiWaiter.h"
#include "foundation/sync/XpMutex.h"
#include "foundation/sync/XpRwLock.h"
#include "foundation/sync/XpRwLockEx.h"
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

void OnThreads(const std::function<void(int thread)>& body) {
  std::vector<std::jthread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(body, i);
}

/// A name that no other run of the tests has.
class MutexName {
 public:
  explicit MutexName(const char16_t* stem) { m_name.Format(u"%s_%d", XpString(stem), getpid()); }
  ~MutexName() { vrx::platform::RemoveNamedMutex(m_name); }
  const XpString& Get() const { return m_name; }

 private:
  XpString m_name;
};

TEST(WaitObjectTest, AnEventLetsEveryoneThroughUntilItIsCleared) {
  XpManualEvent event;
  EXPECT_EQ(event.TryLock(), XpErrTimeout);
  EXPECT_EQ(event.WaitMilliseconds(1), XpErrTimeout);
  std::jthread sleeper([&] { EXPECT_EQ(event.Lock(), XpOk); });
  EXPECT_EQ(event.Unlock(), XpOk);
  sleeper.join();
  EXPECT_EQ(event.TryLock(), XpOk);
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
  EXPECT_EQ(endless.TryLock(), XpErrTimeout);
}

TEST(WaitObjectTest, AMutexBelongsToOneThreadHoweverOftenItTookIt) {
  const MutexName name(u"WaitObjectTest owner");
  for (const XpString& text : {XpString(), name.Get()}) {
    XpMutex mutex(text);
    EXPECT_EQ(mutex.Wait(5), XpErrNoHandle);
    EXPECT_EQ(mutex.Lock(), XpOk);
    EXPECT_EQ(mutex.TryLock(), XpOk);
    EXPECT_EQ(OnOtherThread([&] { return mutex.TryLock(); }), XpErrTimeout);
    EXPECT_EQ(OnOtherThread([&] { return mutex.Unlock(); }), XpOk);
    EXPECT_EQ(mutex.Unlock(), XpOk);
    EXPECT_EQ(OnOtherThread([&] { return mutex.TryLock(); }), XpErrTimeout) << "one hold is left";
    EXPECT_EQ(mutex.Unlock(), XpOk);
    EXPECT_EQ(OnOtherThread([&] {
                const XpResult result = mutex.TryLock();
                mutex.Unlock();
                return result;
              }),
              XpOk);
  }
}

TEST(WaitObjectTest, MutexesOfOneNameAreOneAndOthersAreNot) {
  const MutexName name(u"WaitObjectTest/shared");
  const MutexName other(u"WaitObjectTest_shared");
  XpMutex first(name.Get());
  XpMutex second(name.Get());
  XpMutex third(other.Get());
  EXPECT_EQ(first.Lock(), XpOk);
  EXPECT_EQ(OnOtherThread([&] { return second.TryLock(); }), XpErrTimeout);
  EXPECT_EQ(OnOtherThread([&] {
              const XpResult result = third.TryLock();
              third.Unlock();
              return result;
            }),
            XpOk);
  first.Unlock();
}

TEST(WaitObjectTest, AMutexWhoseOwnerEndedIsReportedAndPassesOn) {
  XpMutex mutex;
  EXPECT_EQ(OnOtherThread([&] { return mutex.Lock(); }), XpOk);
  EXPECT_EQ(mutex.Lock(), XpErrAbandoned);
  EXPECT_EQ(OnOtherThread([&] { return mutex.TryLock(); }), XpErrTimeout) << "it has an owner again";
  mutex.Unlock();
  EXPECT_EQ(mutex.TryLock(), XpOk);
  mutex.Unlock();
}

TEST(WaitObjectTest, AMutexOfADeadProcessPassesOnAndThatOfALiveOneDoesNot) {
  const MutexName name(u"WaitObjectTest process");
  std::array<int, 2> held;
  std::array<int, 2> mayEnd;
  ASSERT_EQ(pipe(held.data()), 0);
  ASSERT_EQ(pipe(mayEnd.data()), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  char byte = 0;
  if (child == 0) {
    XpMutex mutex(name.Get());
    const bool taken = mutex.Lock() == XpOk && write(held[1], &byte, 1) == 1;
    _exit(taken && read(mayEnd[0], &byte, 1) == 1 ? 0 : 1);
  }
  ASSERT_EQ(read(held[0], &byte, 1), 1);
  XpMutex mutex(name.Get());  // opened while the other process has it
  EXPECT_EQ(mutex.TryLock(), XpErrTimeout);
  ASSERT_EQ(write(mayEnd[1], &byte, 1), 1);
  EXPECT_EQ(mutex.Lock(), XpErrAbandoned);
  mutex.Unlock();
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  for (const int file : {held[0], held[1], mayEnd[0], mayEnd[1]}) close(file);
}

template <class Lock>
class ReadWriteTest : public testing::Test {};
using ReadWriteLocks = testing::Types<XpRwLock, XpRwLockEx>;
TYPED_TEST_SUITE(ReadWriteTest, ReadWriteLocks);

TYPED_TEST(ReadWriteTest, ReadersShareAndAWriterIsAlone) {
  TypeParam lock;
  EXPECT_EQ(lock.TryRead(), XpOk);
  EXPECT_EQ(OnOtherThread([&] { return lock.TryLock(); }), XpErrTimeout);
  EXPECT_EQ(OnOtherThread([&] {
              const XpResult result = lock.TryRead();
              lock.Unlock();
              return result;
            }),
            XpOk);
  lock.Unlock();
  EXPECT_EQ(lock.Lock(), XpOk);
  EXPECT_EQ(lock.TryLock(), XpOk) << "the writer takes it again";
  lock.Unlock();
  EXPECT_EQ(OnOtherThread([&] { return lock.TryRead(); }), XpErrTimeout);
  EXPECT_EQ(OnOtherThread([&] { return lock.TryLock(); }), XpErrTimeout);
  lock.Unlock();
  EXPECT_EQ(lock.TryRead(), XpOk);
  lock.Unlock();
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
  while (OnOtherThread([&] {
           const XpResult result = lock.TryRead();
           if (result == XpOk) lock.Unlock();
           return result;
         }) == XpOk) {
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
  EXPECT_EQ(OnOtherThread([&] {
              const XpResult result = lock.WaitRead(kNoLimit);
              lock.Unlock();
              return result;
            }),
            XpOk);
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
  EXPECT_EQ(OnOtherThread([&] { return lock.TryRead(); }), XpErrTimeout) << "one hold is left";
  lock.Unlock();

  ASSERT_EQ(lock.TryRead(), XpOk);
  ASSERT_EQ(lock.TryRead(), XpOk);
  EXPECT_EQ(lock.TryLock(), XpOk);
  EXPECT_EQ(OnOtherThread([&] { return lock.TryRead(); }), XpErrTimeout);
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
        EXPECT_LE(written, kThreads * kRounds);
        --readers;
      }
      lock.Unlock();
    }
  });
  EXPECT_EQ(written, writes);
}

TEST(WaitObjectTest, MutexAndSemaphoreHoldUnderManyThreads) {
  constexpr int kRounds = 4000;
  constexpr int kPermits = 3;
  XpMutex mutex;
  XpSemaphore semaphore(kPermits, kPermits);
  int counted = 0;
  std::atomic<int> inside = 0;
  OnThreads([&](int) {
    for (int i = 0; i < kRounds; ++i) {
      mutex.Lock();
      ++counted;
      mutex.Unlock();
      semaphore.Lock();
      EXPECT_LE(++inside, kPermits);
      --inside;
      semaphore.Unlock();
    }
  });
  EXPECT_EQ(counted, kThreads * kRounds);
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
  EXPECT_FALSE(none.IsLocked());
}

TEST(MultiWaitTest, AllOrNone) {
  XpSemaphore first(1);
  XpSemaphore second;
  XpSemaphore sleep;
  {
    const XpMultiLockAll all({&first, &second}, sleep, 0);
    EXPECT_EQ(all.GetResult(), XpErrTimeout);
    EXPECT_EQ(first.TryLock(), XpOk) << "what it had for a moment is free again";
    first.Unlock();
  }
  std::jthread giver([&] { second.Unlock(); });
  {
    const XpMultiLockAll all({&first, &second}, sleep, kNoLimit);
    EXPECT_TRUE(all.IsLocked());
    EXPECT_EQ(first.TryLock(), XpErrTimeout);
  }
  EXPECT_EQ(first.TryLock(), XpOk);
  EXPECT_EQ(second.TryLock(), XpOk);
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
