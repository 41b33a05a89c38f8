// An overlay lies over the frame as its alpha says, the right way up; each frame gets its own, whether it was
// drawn anew or kept from the frame before.
#include <random>

#include <gtest/gtest.h>

#include "overlay/callback/BlendOverlay.h"
#include "overlay/callback/DrawnArea.h"
#include "overlay/callback/VRXIntermediateRawOutputCallback.h"
#include "tests/overlay/FakePainter.h"

namespace {

using vrx::overlay::BlendOverlay;
using vrx::overlay::DrawnArea;
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
    BlendOverlay(*holder, bytes.data(), kFrameBytes);
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
  BlendOverlay(XpPixmap32(), bytes.data(), kFrameBytes);
  info.captionInfo.valid = false;
  EXPECT_TRUE(callback.ProcessFrame(10, bytes.data(), kFrameBytes, 2, 5));
  EXPECT_EQ(bytes, Bytes(kFrameBytes, 50));
}

/// The rule, pixel by pixel.
void PlainBlend(const XpPixmap32& overlay, Bytes& frame, int pixelBytes) {
  for (int row = 0; row < overlay.height; ++row) {
    for (int x = 0; x < overlay.width; ++x) {
      const unsigned char* s = overlay.data + ((overlay.height - 1 - row) * overlay.width + x) * 4;
      unsigned char* d = frame.data() + (row * overlay.width + x) * pixelBytes;
      for (int c = 0; c < 3; ++c)
        d[c] = static_cast<unsigned char>((d[c] * (255 - s[3]) + s[c] * s[3]) / 255);
    }
  }
}

/// Mostly empty, as overlays are, with runs of all kinds of alpha.
void FillSparse(XpPixmap32& overlay, std::mt19937& random, int emptyInTen) {
  for (std::uint32_t i = 0; i < overlay.size;) {
    const std::uint32_t run = std::min(overlay.size - i, static_cast<std::uint32_t>(4 * (1 + random() % 40)));
    const bool isEmpty = static_cast<int>(random() % 10) < emptyInTen;
    for (std::uint32_t end = i + run; i < end; ++i) {
      const bool isAlpha = i % 4 == 3;
      const auto byte = static_cast<unsigned char>(isAlpha && random() % 3 == 0 ? 255 : random());
      overlay.data[i] = isEmpty ? 0 : byte;
    }
  }
}

TEST(BlendOverlayTest, EqualsThePlainRuleForEverySizeAndPixel) {
  std::mt19937 random(7);
  for (const auto& [width, height] :
       {std::pair{1, 1}, {1, 7}, {3, 2}, {16, 4}, {17, 5}, {301, 5}, {640, 48}}) {
    for (const int pixelBytes : {3, 4, 5}) {
      for (const int emptyInTen : {0, 8, 10}) {
        XpPixmap32 overlay;
        ASSERT_EQ(overlay.Allocate(width, height), XpOk);
        FillSparse(overlay, random, emptyInTen);
        Bytes frame(static_cast<std::size_t>(width * height * pixelBytes));
        for (auto& byte : frame) byte = static_cast<unsigned char>(random());
        Bytes plain = frame;
        Bytes byArea = frame;
        PlainBlend(overlay, plain, pixelBytes);
        BlendOverlay(overlay, frame.data(), static_cast<std::uint32_t>(frame.size()));
        DrawnArea area;
        area.Find(overlay);
        BlendOverlay(overlay, area, byArea.data(), static_cast<std::uint32_t>(byArea.size()));
        EXPECT_EQ(frame, plain) << width << "x" << height << ", " << pixelBytes << " bytes";
        EXPECT_EQ(byArea, plain) << width << "x" << height << ", " << pixelBytes << " bytes";
      }
    }
  }
}

TEST(BlendOverlayTest, EveryAlphaAndColourIsExact) {
  XpPixmap32 overlay;
  ASSERT_EQ(overlay.Allocate(256, 256), XpOk);
  for (int d = 0; d < 256; d += 5) {
    for (int i = 0; i < 256 * 256; ++i) {
      for (int c = 0; c < 3; ++c) overlay.data[i * 4 + c] = static_cast<unsigned char>(i % 256);
      overlay.data[i * 4 + 3] = static_cast<unsigned char>(i / 256);
    }
    Bytes frame(256 * 256 * 4, static_cast<unsigned char>(d));
    Bytes plain = frame;
    PlainBlend(overlay, plain, 4);
    BlendOverlay(overlay, frame.data(), static_cast<std::uint32_t>(frame.size()));
    ASSERT_EQ(frame, plain) << "frame byte " << d;
  }
}

TEST(DrawnAreaTest, ClearingLeavesNothingBehind) {
  std::mt19937 random(3);
  for (const int emptyInTen : {0, 5, 9, 10}) {
    XpPixmap32 picture;
    ASSERT_EQ(picture.Allocate(301, 9), XpOk);
    FillSparse(picture, random, emptyInTen);
    // A colour without alpha is invisible, but a painter could build on it.
    picture.data[301 * 4 * 8 + 300 * 4] = emptyInTen < 10 ? 1 : 0;
    DrawnArea area;
    area.Find(picture);
    EXPECT_EQ(area.IsEmpty(), emptyInTen == 10);
    area.Clear(picture);
    EXPECT_TRUE(std::all_of(picture.data, picture.data + picture.size, [](auto byte) { return byte == 0; }));
    EXPECT_TRUE(area.IsEmpty());
  }
}

}  // namespace
