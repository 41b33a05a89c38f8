// Each frame gets its own overlay, whether it was drawn anew or kept from the frame before.
#include <gtest/gtest.h>

#include "overlay/callback/BlendOverlay.h"
#include "overlay/callback/VRXIntermediateRawOutputCallback.h"
#include "tests/overlay/FakePainter.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::int32_t kWidth = 37;
constexpr std::int32_t kHeight = 11;
constexpr std::uint32_t kFrameBytes = kWidth * kHeight * 4;

class CallbackTest : public FakePaintersTest {
 protected:
  CallbackTest() {
    info.captionInfo.valid = true;
    painters->SetPainterInfo(&info);
  }
  OverlayContext Context() { return {kWidth, kHeight, {1, 10}, &info, painters.get()}; }

  /// The frame after a picture of its own was made for it.
  Bytes PlainFrame(std::uint64_t frame) {
    PixmapHolder holder(new XpPixmap32);
    holder->Allocate(kWidth, kHeight);
    const std::size_t noted = journal.size();
    painters->DrawAllForVideo(0, 0, 0, VRXCaptionTimeGenerate().Generate(frame, {1, 10}), holder);
    journal.resize(noted);
    Bytes bytes(kFrameBytes, 50);
    vrx::overlay::BlendOverlay(*holder, bytes.data(), kFrameBytes);
    return bytes;
  }

  PainterInfo info;
};

TEST_F(CallbackTest, KeptOverlaysEqualFreshOnesBitForBit) {
  for (const bool knowsContent : {true, false}) {
    Painter(0).knowsContent = knowsContent;
    VRXIntermediateRawOutputCallback callback(Context());
    callback.ResetTimeGenerators({});
    journal.clear();
    for (std::uint64_t frame = 0; frame < 95; ++frame) {
      Bytes bytes(kFrameBytes, 50);
      ASSERT_TRUE(callback.ProcessFrame(frame, bytes.data(), kFrameBytes, 2, 5));
      ASSERT_EQ(bytes, PlainFrame(frame)) << frame;
    }
    EXPECT_EQ(journal.size(), knowsContent ? 10u : 95u);
  }
}

TEST_F(CallbackTest, ChangedPaintersAreDrawnAnew) {
  VRXIntermediateRawOutputCallback callback(Context());
  Bytes bytes(kFrameBytes, 50);
  callback.ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5);
  EXPECT_NE(bytes, Bytes(kFrameBytes, 50));
  painters->EnablePainter(0, false);
  bytes.assign(kFrameBytes, 50);
  EXPECT_TRUE(callback.ProcessFrame(11, bytes.data(), kFrameBytes, 2, 5));
  EXPECT_EQ(bytes, Bytes(kFrameBytes, 50));
}

TEST_F(CallbackTest, RefusesWhatItCannotDo) {
  VRXIntermediateRawOutputCallback callback(Context());
  Bytes bytes(kFrameBytes, 50);
  EXPECT_FALSE(callback.ProcessFrame(10, bytes.data(), kFrameBytes, 1, 5));
  EXPECT_FALSE(callback.ProcessFrame(10, bytes.data(), kFrameBytes, 2, 4));
  OverlayContext noSize = Context();
  noSize.width = 0;
  EXPECT_FALSE(VRXIntermediateRawOutputCallback(noSize).ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5));
  OverlayContext huge = Context();
  huge.width = huge.height = 1 << 30;
  EXPECT_FALSE(VRXIntermediateRawOutputCallback(huge).ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5));
  EXPECT_FALSE(VRXIntermediateRawOutputCallback({}).ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5));
  EXPECT_TRUE(callback.ProcessFrame(10, bytes.data(), kWidth * kHeight - 1, 2, 5));  // too small to touch
  EXPECT_TRUE(callback.ProcessFrame(10, nullptr, kFrameBytes, 2, 5));
  vrx::overlay::BlendOverlay(XpPixmap32(), bytes.data(), kFrameBytes);
  info.captionInfo.valid = false;
  EXPECT_TRUE(callback.ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5));
  EXPECT_EQ(bytes, Bytes(kFrameBytes, 50));
}

}  // namespace
