// Shared and weak pointers: when the object is destroyed, also by several threads.
#include "foundation/memory/XpSharedPtr.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace {

struct Base {
  virtual ~Base() = default;
};
struct Counted : Base {
  explicit Counted(std::atomic<int>& alive) : m_alive(alive) { ++m_alive; }
  ~Counted() override { --m_alive; }
  std::atomic<int>& m_alive;
};

TEST(SharedPtrTest, TheLastOwnerDestroysTheObject) {
  std::atomic<int> alive = 0;
  XpSharedPtr<Base> base;
  EXPECT_FALSE(base);
  {
    const XpSharedPtr<Counted> derived(new Counted(alive));
    base = derived;
    EXPECT_TRUE(base == XpSharedPtr<Base>(derived));
  }
  EXPECT_EQ(alive, 1);
  const XpSharedPtr<Base>& self = base;
  base = self;
  EXPECT_EQ(alive, 1);
  base = nullptr;
  EXPECT_EQ(alive, 0);
}

TEST(SharedPtrTest, AWeakPointerGivesTheObjectOnlyWhileItLives) {
  std::atomic<int> alive = 0;
  std::optional<XpSharedPtr<Counted>> strong(new Counted(alive));
  XpWeakPtr<Counted> weak(*strong);
  const XpWeakPtr<Counted> copy = weak;
  EXPECT_EQ(XpSharedPtr<Counted>(weak).Get(), strong->Get());
  strong.reset();
  EXPECT_EQ(alive, 0);
  EXPECT_TRUE(weak.IsExpired());
  EXPECT_THROW(XpSharedPtr<Counted>{weak}, tagBadWeakPtr);
  EXPECT_THROW(XpSharedPtr<Counted>{copy}, tagBadWeakPtr);
  weak = copy;
}

TEST(SharedPtrTest, ThreadsMayReleaseTheLastOwnerAtOnce) {
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> alive = 0;
    XpSharedPtr<Counted> strong(new Counted(alive));
    const XpWeakPtr<Counted> weak(strong);
    std::vector<std::jthread> threads;
    for (int t = 0; t < 2; ++t) {
      threads.emplace_back([mine = strong]() mutable { mine = nullptr; });
      threads.emplace_back([weak] {
        try {
          EXPECT_EQ(XpSharedPtr<Counted>(weak)->m_alive, 1);
        } catch (const tagBadWeakPtr&) {
          EXPECT_TRUE(weak.IsExpired());
        }
      });
    }
    strong = nullptr;
    threads.clear();
    EXPECT_EQ(alive, 0);
  }
}

}  // namespace
