// The one-pass way from a photograph to the movie's picture gives what turning, mirroring and scaling one
// after the other gives.
#include <array>
#include <cstring>

#include <gtest/gtest.h>

#include "imaging/pixmap/XpPixmapBlock.h"
#include "imaging/pixmap/XpPixmapRotate.h"
#include "src/baseband/BasebandPicture.h"

namespace {

using namespace vrx::baseband;
using vrx::imaging::StillImage;
using vrx::imaging::StillImageRequest;

StillImage NoiseImage(int width, int height) {
  StillImage image;
  image.pixmap = std::make_unique<XpPixmap24NoHandle>();
  EXPECT_EQ(image.pixmap->Allocate(width, height), XpOk);
  std::uint32_t state = 7;
  for (int y = 0; y < height; ++y) {
    unsigned char* row = image.pixmap->GetPlane(0)->Row(y);
    for (int at = 0; at < width * 3; ++at) {
      state = state * 1664525 + 1013904223;
      row[at] = static_cast<unsigned char>(state >> 24);
    }
  }
  image.fullWidth = width;
  image.fullHeight = height;
  return image;
}

/// Step by step, on whole pictures.
std::unique_ptr<XpPixmap24NoHandle> PlainSteps(const DecodeJob& job, const StillImage& image, int width,
                                               int height) {
  std::unique_ptr<XpPixmap24NoHandle> turned;
  if (job.rotation == 1) turned = RotatePixmap90CW(*image.pixmap);
  if (job.rotation == 2) turned = RotatePixmap180(*image.pixmap);
  if (job.rotation == 3) turned = RotatePixmap90CCW(*image.pixmap);
  if (job.mirror) turned = MirrorPixmap(turned ? *turned : *image.pixmap);
  const XpPixmapBase& source = turned ? *turned : *image.pixmap;
  const FitRect fit = FitIntoTarget(source.width, source.height, width, height);
  if (fit.IsEmpty()) return nullptr;
  auto target = std::make_unique<XpPixmap24NoHandle>();
  EXPECT_EQ(target->Allocate(width, height), XpOk);
  FillPixmap(*target, 0, 0, 0);
  StretchPixmapBlock(*target, fit.x, fit.y, fit.width, fit.height, source, 0, 0, source.width, source.height);
  return target;
}

TEST(BasebandPictureTest, ComposingInOnePassEqualsTheSeparateSteps) {
  const std::array<int, 4> sizes[] = {{1, 1, 16, 16},   {1, 7, 16, 18},    {301, 5, 64, 36},
                                      {37, 53, 64, 36}, {64, 36, 64, 36},  {36, 64, 64, 36},
                                      {63, 35, 34, 62}, {128, 72, 64, 36}, {500, 1, 17, 400}};
  for (const auto& [w, h, targetWidth, targetHeight] : sizes) {
    const StillImage image = NoiseImage(w, h);
    for (int rotation = -1; rotation <= 4; ++rotation) {
      for (const bool mirror : {false, true}) {
        DecodeJob job;
        job.rotation = rotation;
        job.mirror = mirror;
        SCOPED_TRACE(testing::Message() << w << "x" << h << " rotation " << rotation << " mirror " << mirror);
        XpString problem;
        const auto fast = ComposePicture(job, image, targetWidth, targetHeight, problem);
        const auto plain = PlainSteps(job, image, targetWidth, targetHeight);
        ASSERT_EQ(fast == nullptr, plain == nullptr);
        if (!fast) continue;
        ASSERT_EQ(fast->size, plain->size);
        EXPECT_EQ(std::memcmp(fast->data, plain->data, fast->size), 0);
      }
    }
  }
}

TEST(BasebandPictureTest, BarsAreComputedByTruncation) {
  struct Case {
    int width, height, targetWidth, targetHeight;
    std::array<int, 4> fit;
  };
  const Case cases[] = {{1000, 500, 1920, 1080, {0, 60, 1920, 960}},
                        {500, 1000, 1920, 1080, {690, 0, 540, 1080}},
                        {3, 2, 16, 16, {0, 3, 16, 10}},
                        {10000, 1, 64, 36, {0, 18, 64, 0}},
                        {0, 5, 64, 36, {}}};
  for (const Case& c : cases) {
    const FitRect fit = FitIntoTarget(c.width, c.height, c.targetWidth, c.targetHeight);
    EXPECT_EQ((std::array{fit.x, fit.y, fit.width, fit.height}), c.fit) << c.width << "x" << c.height;
  }
}

TEST(BasebandPictureTest, SmallerDecodedPictureKeepsItsPlace) {
  StillImageRequest asked;
  PictureReader reader;
  reader.measure = [](const XpString&, const auto&, std::int32_t& width, std::int32_t& height, XpString*) {
    width = 3000;
    height = 4001;
    return XpResult{XpOk};
  };
  reader.load = [&](const XpString&, const StillImageRequest& request, StillImage& image, XpString*) {
    asked = request;
    image = NoiseImage(375, 501);  // an eighth, rounded up
    for (std::uint32_t at = 0; at < image.pixmap->size; ++at) image.pixmap->data[at] |= 1;
    image.fullWidth = 3000;
    image.fullHeight = 4001;
    return XpResult{XpOk};
  };
  DecodeJob job;
  job.rotation = RotateQuarterCw;
  XpString problem;
  const auto picture = DecodePicture(job, 640, 360, reader, problem);
  ASSERT_NE(picture, nullptr);
  // Turned it is 4001 by 3000 and fits as 480 by 359 or 360; the request counts before the turn.
  const FitRect fit = FitIntoTarget(4001, 3000, 640, 360);
  EXPECT_EQ(asked.rows, vrx::imaging::RowOrder::BottomUp);
  EXPECT_EQ(asked.enoughWidth, fit.height);
  EXPECT_EQ(asked.enoughHeight, fit.width);
  const unsigned char* middle = picture->GetPlane(0)->Row(180);
  for (int x = 0; x < 640; ++x) {
    EXPECT_EQ(middle[x * 3] != 0, x >= fit.x && x < fit.x + fit.width) << x;
  }
}

}  // namespace
