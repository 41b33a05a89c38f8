// Movies of every codec show their frames in order, and settings of a codec reach its encoder.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "engine/RenderOverrides.h"
#include "samples/clipmaker/FramePattern.h"
#include "tests/engine/RenderJob.h"
#include "tests/support/MovieReader.h"

namespace vrx::engine {
namespace {

using namespace test_support;
using testing::HasSubstr;

class CodecTest : public EngineRenderTest {
 protected:
  ~CodecTest() override { VRX_SetRenderOverrides(nullptr); }

  static VRXRenderOverrides Of(VRXVideoCodec codec) {
    VRXRenderOverrides overrides;
    overrides.codec = codec;
    return overrides;
  }
  /// The bytes of 30 frames of `source`, with constant quality, large enough for each encoder.
  std::string Render(const VRXRenderOverrides& overrides) {
    EXPECT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
    RenderJob job(Path("out.mp4"));
    job.output.video->width = 128;
    job.output.video->height = 96;
    job.output.video->averageBitrate = 0;
    job.AddClip(source, 0, 30);
    EXPECT_EQ(job.Run(), kOk) << job.log;
    log = job.log;
    return folder.Read("out.mp4");
  }
  const std::string source = Write("source.mp4", {.frames = 50});
  std::string log;
};

TEST_F(CodecTest, EveryCodecHoldsItsFramesInOrderWithTheirColours) {
  struct Case {
    const char* file;
    VRXVideoCodec codec;
    int width, height;
    int bitrate;
    const char *container, *name;
  };
  for (const Case& c : {Case{"a.mp4", VRXVideoCodecHevc, 64, 48, 0, "mp4", "hevc"},
                        {"b.mov", VRXVideoCodecHevc, 130, 98, 300'000, "mov", "hevc"},
                        {"c.ts", VRXVideoCodecHevc, 64, 48, 0, "mpegts", "hevc"},
                        {"d.mp4", VRXVideoCodecAv1, 128, 96, 0, "mp4", "av1"},
                        {"e.mp4", VRXVideoCodecAv1, 130, 98, 300'000, "mp4", "av1"},
                        // Smaller than one of the encoders takes.
                        {"f.mp4", VRXVideoCodecAv1, 64, 48, 0, "mp4", "av1"},
                        {"g.mp4", VRXVideoCodecAv1, 64, 48, 300'000, "mp4", "av1"},
                        {"h.mp4", VRXVideoCodecH264, 64, 48, 0, "mp4", "h264"}}) {
    SCOPED_TRACE(c.file);
    const VRXRenderOverrides overrides = Of(c.codec);
    ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
    RenderJob job(Path(c.file));
    job.output.video->width = c.width;
    job.output.video->height = c.height;
    job.output.video->averageBitrate = c.bitrate;
    job.AddSound(2, 48000, 1);
    job.AddClip(source, 0, 50);
    testing::internal::CaptureStderr();
    const Result result = job.Run();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_EQ(result, kOk) << job.log;
    MovieReader movie(Path(c.file));
    MovieFrame frame;
    double first = 0;
    for (int n = 0; n < 50; ++n) {
      ASSERT_TRUE(movie.NextFrame(frame)) << n;
      if (n == 0) first = frame.seconds;
      EXPECT_EQ(ReadPattern(frame.image).number, n);
      EXPECT_NEAR(frame.seconds - first, n / 25.0, 0.0001);
      EXPECT_EQ(frame.image.Width(), c.width);
      EXPECT_EQ(frame.image.Height(), c.height);
    }
    EXPECT_FALSE(movie.NextFrame(frame));
    EXPECT_EQ(movie.Info().videoCodec, c.name);
    EXPECT_THAT(movie.Info().container, HasSubstr(c.container));
    EXPECT_EQ(movie.Info().range, AVCOL_RANGE_MPEG);
    EXPECT_EQ(movie.Info().matrix, AVCOL_SPC_SMPTE170M);
    VRXRenderSummary summary;
    ASSERT_EQ(VRX_GetRenderSummary(&summary), kOk);
    EXPECT_EQ(summary.frames, 50u);
    const std::string bytes = folder.Read(c.file);
    EXPECT_EQ(summary.bytes, bytes.size());
    if (c.container == std::string("mpegts")) continue;
    EXPECT_LT(bytes.find("moov"), bytes.find("mdat")) << "no index first";
    EXPECT_EQ(bytes.find("hvc1") != std::string::npos, c.codec == VRXVideoCodecHevc);
  }
}

TEST_F(CodecTest, PresetAndQualityReachTheEncoder) {
  for (const VRXVideoCodec codec : {VRXVideoCodecH264, VRXVideoCodecHevc, VRXVideoCodecAv1}) {
    SCOPED_TRACE(codec);
    VRXRenderOverrides overrides = Of(codec);
    const std::string usual = Render(overrides);
    EXPECT_EQ(Render(overrides), usual);
    overrides.preset = "superfast";  // what the record says
    EXPECT_EQ(Render(overrides), usual);
    overrides.preset = "medium";
    EXPECT_NE(Render(overrides), usual);
    overrides.preset = nullptr;
    std::vector<std::size_t> sizes;
    for (const double crf : {0.0, 12.0, 45.0}) {
      overrides.crf = crf;
      sizes.push_back(Render(overrides).size());
    }
    EXPECT_GT(sizes[0], sizes[1]);
    EXPECT_GT(sizes[1], usual.size());
    EXPECT_GT(usual.size(), sizes[2]);
  }
}

TEST_F(CodecTest, OverridesThatCannotBeAreRefusedAndKeepThoseBefore) {
  VRXRenderOverrides usable = Of(VRXVideoCodecAv1);
  usable.crf = 63;
  ASSERT_EQ(VRX_SetRenderOverrides(&usable), kOk);
  using Change = void (*)(VRXRenderOverrides&);
  const std::pair<Result, Change> refused[] = {
      {kInvalidArgument, [](auto& o) { o.structSize = sizeof(o) - 1; }},
      {kUnusableSettings, [](auto& o) { o.overlays = static_cast<decltype(o.overlays)>(2); }},
      {kUnusableSettings, [](auto& o) { o.codec = static_cast<VRXVideoCodec>(4); }},
      {kUnusableSettings, [](auto& o) { o.preset = "fats"; }},
      {kUnusableSettings, [](auto& o) { o.crf = 51.5; }},
      {kUnusableSettings, [](auto& o) { o.crf = std::numeric_limits<double>::quiet_NaN(); }},
      {kUnusableSettings, [](auto& o) { o.firstFrame = std::uint64_t{1} << 63; }},
      {kUnusableSettings, [](auto& o) { o.frameCount = std::uint64_t{1} << 63; }},
      {kUnusableSettings, [](auto& o) { o.smart = static_cast<VRXSmartRendering>(4); }},
      {kUnusableSettings, [](auto& o) { o.tracks = static_cast<VRXTrackChoice>(3); }},
      {kUnusableSettings, [](auto& o) { o.pieceOf = "a b", o.tracks = VRXPictureAlone; }},
      {kUnusableSettings, [](auto& o) { o.pieceOf = "a"; }},
      {kUnusableSettings, [](auto& o) { o.pieceOf = "a", o.piece = 3, o.tracks = VRXPictureAlone; }},
      {kUnusableSettings, [](auto& o) { o.pieceOf = "a", o.piece = 0, o.tracks = VRXPictureAlone; }},
  };
  for (const auto& [result, change] : refused) {
    VRXRenderOverrides overrides = Of(VRXVideoCodecHevc);
    overrides.piece = overrides.pieceCount = 2;
    change(overrides);
    EXPECT_EQ(VRX_SetRenderOverrides(&overrides), result);
    EXPECT_EQ(CurrentRenderOverrides().codec, VideoCodec::Av1);
  }
}

TEST_F(CodecTest, WithoutHardwareTheLogSaysWhyAndTheMovieIsThatOfSoftware) {
  for (const auto& [codec, candidate, software] :
       {std::tuple{VRXVideoCodecH264, "h264_v4l2m2m: needs a bitrate", "libx264"},
        {VRXVideoCodecHevc, "hevc_vaapi: ", "libx265"},
        {VRXVideoCodecAv1, "av1_qsv: ", "libsvtav1"}}) {
    VRXRenderOverrides overrides = Of(codec);
    const std::string usual = Render(overrides);
    EXPECT_EQ(log, "");
    overrides.hardware = true;
    testing::internal::CaptureStderr();
    const std::string bytes = Render(overrides);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    if (log.starts_with("the pictures are encoded in hardware")) GTEST_SKIP() << log;
    EXPECT_EQ(bytes, usual);
    EXPECT_THAT(log, HasSubstr(std::string("by ") + software + ", since no encoder in hardware works ("));
    EXPECT_THAT(log, HasSubstr(candidate));
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1);
  }
}

TEST_F(CodecTest, RenderThatIsGivenUpEndsAtOnceInEveryCodec) {
  for (const VRXVideoCodec codec : {VRXVideoCodecH264, VRXVideoCodecHevc, VRXVideoCodecAv1}) {
    const VRXRenderOverrides overrides = Of(codec);
    ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
    for (const int slices : {0, 1, 3}) {
      RenderJob job(Path("out.mp4"));
      job.output.video->width = 128;
      job.output.video->height = 96;
      job.AddClip(source, 0, 50);
      ASSERT_EQ(job.Create(), kOk) << job.log;
      for (int i = 0; i < slices; ++i) ASSERT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), kOk);
      ASSERT_EQ(VRX_ReleaseSequence(job.handle, &job.sequence), kOk);
      EXPECT_EQ(folder.Count(), 1);
    }
  }
}

}  // namespace
}  // namespace vrx::engine
