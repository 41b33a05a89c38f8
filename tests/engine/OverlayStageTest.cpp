// Overlays reach exactly the frames and pixels that they are meant for.
#include "engine/OverlayStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <utility>

#include "engine/FramePool.h"

namespace vrx::engine {
namespace {

constexpr int kWidth = 100, kHeight = 70;  // no whole number of blocks

class Painter : public IVRXIntermediateRawOutputCallback {
 public:
  bool ProcessFrame(std::uint64_t frame, void* buffer, std::uint32_t size, std::int32_t stage,
                    std::int32_t format) override {
    EXPECT_EQ(size, static_cast<std::uint32_t>(kWidth * kHeight * 4));
    calls.push_back({static_cast<int>(frame), stage, format});
    if (paint) paint(static_cast<std::uint8_t*>(buffer));
    return result;
  }
  std::vector<std::array<int, 3>> calls;
  void GetChangedRows(std::int32_t& first, std::int32_t& end) const override {
    if (!rows) return IVRXIntermediateRawOutputCallback::GetChangedRows(first, end);
    first = rows->first;
    end = rows->second;
  }
  std::function<void(std::uint8_t*)> paint;
  bool result = true;
  std::optional<std::pair<int, int>> rows;  // that it says it changed; not set: all
};

FramePtr Gradient(FramePool& pool) {
  FramePtr frame = pool.Get(kWidth, kHeight);
  FillBlack(*frame);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x)
      frame->data[0][y * frame->linesize[0] + x] = static_cast<std::uint8_t>(20 + x + y);
  }
  return frame;
}

int Luma(const AVFrame& frame, int x, int y) { return frame.data[0][y * frame.linesize[0] + x]; }

TEST(OverlayStageTest, CallsOnceForEachFrameOfTheSpans) {
  Painter painter;
  OverlayStage stage(&painter, {{2, 3, 2, 5}, {4, 4, 7, 8}, {9, 9, 1, 1}}, kWidth, kHeight);
  FramePool pool;
  for (int n = 0; n < 12; ++n) {
    FramePtr frame = Gradient(pool);
    const auto* picture = frame->data[0];
    stage.Apply(n, frame);
    EXPECT_EQ(frame->data[0], picture);
  }
  EXPECT_THAT(painter.calls, testing::ElementsAre(std::array{2, 2, 5}, std::array{3, 2, 5},
                                                  std::array{4, 7, 8}, std::array{9, 1, 1}));
}

TEST(OverlayStageTest, LooksForChangesWhereTheCallbackMadeThem) {
  Painter painter;
  painter.paint = [](std::uint8_t* bytes) { std::memset(bytes, 255, kWidth * kHeight * 4); };
  for (const auto& [first, end] :
       {std::pair{0, 0}, {20, 31}, {21, 22}, {-5, 3}, {60, 1000}, {69, 70}, {9, 4}}) {
    painter.rows = {first, end};
    OverlayStage stage(&painter, {{0, 0, 2, 5}}, kWidth, kHeight);
    FramePool pool;
    FramePtr frame = Gradient(pool);
    stage.Apply(0, frame);
    for (int y = 0; y < kHeight; ++y) {
      // Rows go in pairs, which share their chroma.
      const bool isLookedAt =
          y >= std::max(first, 0) / 2 * 2 && first < end && y < (std::min(end, kHeight) + 1) / 2 * 2;
      ASSERT_EQ(Luma(*frame, 50, y) == 235, isLookedAt) << y << " of " << first << " to " << end;
    }
  }
}

TEST(OverlayStageTest, TakesExactlyTheDrawnPixelsUnlessTheCallbackFails) {
  Painter painter;
  painter.paint = [](std::uint8_t* bytes) {
    // A white 3 by 2 patch with its lower left corner at (50, 10) counted from the bottom left.
    for (int y = 10; y < 12; ++y) std::memset(bytes + (y * kWidth + 50) * 4, 255, 3 * 4);
  };
  for (const bool succeeds : {true, false}) {
    painter.result = succeeds;
    OverlayStage stage(&painter, {{0, 0, 2, 5}}, kWidth, kHeight);
    FramePool pool;
    FramePtr frame = Gradient(pool);
    const FramePtr decoders = ShareFrame(*frame);  // as the decoder keeps its reference pictures
    stage.Apply(0, frame);
    const FramePtr original = Gradient(pool);
    EXPECT_EQ(frame->data[0] != decoders->data[0], succeeds);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        const bool in = succeeds && x >= 50 && x < 53 && y >= kHeight - 12 && y < kHeight - 10;
        ASSERT_EQ(Luma(*frame, x, y), in ? 235 : Luma(*original, x, y)) << x << "," << y;
        ASSERT_EQ(Luma(*decoders, x, y), Luma(*original, x, y)) << x << "," << y;
      }
    }
  }
}

}  // namespace
}  // namespace vrx::engine
