#include <gtest/gtest.h>

#include "src/manager/ProgressFilter.h"

namespace {

TEST(ProgressFilterTest, ChangesPassAtOnceAndRepeatsWait) {
  vrx::render::ProgressFilter filter(1000);
  EXPECT_FALSE(filter.Passes(0, 1200));
  EXPECT_TRUE(filter.Passes(0, 1201));
  EXPECT_TRUE(filter.Passes(1, 1201));
  EXPECT_TRUE(filter.Passes(0, 1201));
  EXPECT_FALSE(filter.Passes(0, 1401));
  EXPECT_TRUE(filter.Passes(0, 1402));
}

TEST(ProgressFilterTest, RepeatPassesWhileTheClockWraps) {
  vrx::render::ProgressFilter filter(0xFFFFFFF0);
  EXPECT_TRUE(filter.Passes(0, 0xFFFFFFF1));
}

}  // namespace
