#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "foundation/sync/XpCriticalSection.h"
#include "foundation/sync/XpThread.h"

namespace {

std::uint32_t ReturnArgument(void* argument) { return *static_cast<std::uint32_t*>(argument); }

TEST(ThreadTest, JoiningGivesTheExitCode) {
  std::uint32_t code = 0x8000;
  for (const std::size_t stack : {std::size_t{0}, std::size_t{1}, std::size_t{1} << 20}) {
    EXPECT_EQ(XpThreadJoin(XpThreadCreate(ReturnArgument, &code, stack)), code);
  }
  EXPECT_EQ(XpThreadJoin(nullptr), XpErrNoHandle);
  XpThread* none = nullptr;
  EXPECT_EQ(XpThreadJoinShared(&none), XpErrNoHandle);
  EXPECT_FALSE(XpThreadIsCurrent(nullptr));
}

struct SelfJoin {
  std::atomic<XpThread*> thread = nullptr;
  XpThread* field = nullptr;
  std::uint32_t plain = 0;
  std::uint32_t shared = 0;

  static std::uint32_t Run(void* argument) {
    auto* self = static_cast<SelfJoin*>(argument);
    self->thread.wait(nullptr);
    self->field = self->thread;
    EXPECT_TRUE(XpThreadIsCurrent(self->thread));
    self->plain = XpThreadJoin(self->thread);
    self->shared = XpThreadJoinShared(&self->field);
    return 5;
  }
};

TEST(ThreadTest, ThreadThatJoinsItselfGetsAnErrorAndStaysJoinable) {
  SelfJoin state;
  XpThread* thread = XpThreadCreate(SelfJoin::Run, &state, 0);
  EXPECT_FALSE(XpThreadIsCurrent(thread));
  state.thread = thread;
  state.thread.notify_one();
  EXPECT_EQ(XpThreadJoin(thread), 5u);
  EXPECT_EQ(state.plain, XpErrSelfWait);
  EXPECT_EQ(state.shared, XpErrSelfWait);
}

std::uint32_t WaitForFlag(void* argument) {
  static_cast<std::atomic<bool>*>(argument)->wait(false);
  return 77;
}

TEST(ThreadTest, SeveralThreadsMayJoinThroughOneField) {
  for (int round = 0; round < 50; ++round) {
    std::atomic<bool> mayEnd = false;
    XpThread* field = XpThreadCreate(WaitForFlag, &mayEnd, 0);
    std::atomic<int> joined = 0;
    std::vector<std::jthread> waiters;
    for (int i = 0; i < 4; ++i) {
      waiters.emplace_back([&] {
        const std::uint32_t code = XpThreadJoinShared(&field);
        if (code == 77u) ++joined;
        // The last one may find the field empty already.
        EXPECT_TRUE(code == 77u || code == XpErrNoHandle) << code;
      });
    }
    mayEnd = true;
    mayEnd.notify_all();
    waiters.clear();
    EXPECT_GE(joined, 1);
    EXPECT_EQ(field, nullptr);
  }
}

TEST(ThreadTest, ThreadIsDetachedWhenItsObjectIsDeleted) {
  std::atomic<bool> done = false;
  delete XpThreadCreate(
      [](void* argument) -> std::uint32_t {
        auto* flag = static_cast<std::atomic<bool>*>(argument);
        *flag = true;
        flag->notify_one();
        return 0;
      },
      &done, 0);
  done.wait(false);
  EXPECT_TRUE(done);
}

TEST(CriticalSectionTest, OneThreadHoldsItAndMayLockItAgain) {
  XpCriticalSection section;
  EXPECT_EQ(section.TryLock(), XpErrLockNotSupported);
  int counter = 0;
  std::vector<std::jthread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 1000; ++i) {
        XpSingleLock outer(&section);
        XpSingleLock inner(&section);
        ++counter;
      }
    });
  }
  threads.clear();
  EXPECT_EQ(counter, 4000);
}

struct RefusingLock : XpSyncObject {
  XpResult Lock() override { return XpErrTimeout; }
  XpResult Unlock() override {
    ++unlocked;
    return XpOk;
  }
  XpResult TryLock() override { return XpErrTimeout; }
  int unlocked = 0;
};

TEST(CriticalSectionTest, GuardUnlocksOnlyAfterASuccessfulLock) {
  RefusingLock refusing;
  { XpSingleLock guard(&refusing); }
  EXPECT_EQ(refusing.unlocked, 0);
  { XpSingleLock guard(nullptr); }
}

}  // namespace
