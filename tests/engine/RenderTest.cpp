// Movies come out frame for frame as the timeline says, whatever the sources are made of.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <cstring>
#include <numeric>

#include "tests/engine/RenderJob.h"
#include "tests/engine/TinyMovie.h"

namespace vrx::engine::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<int> Count(int first, int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), first);
  return numbers;
}

std::vector<int> Join(std::vector<int> a, const std::vector<int>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

struct SourceCase {
  const char* name;
  const char* format;
  const char* codec;
  const char* options;
  int bFrames;
  int group;
  int pixelFormat;
};

class SourceKinds : public testing::TestWithParam<SourceCase> {};

TEST_P(SourceKinds, GiveExactlyTheFramesOfEachCut) {
  const SourceCase& source = GetParam();
  const Folder folder;
  TinyMovie movie{.path = folder / "source", .frames = 200};
  movie.format = source.format;
  movie.codec = source.codec;
  movie.codecOptions = source.options;
  movie.bFrames = source.bFrames;
  movie.group = source.group;
  movie.pixelFormat = source.pixelFormat;
  Write(movie);
  RenderJob job(folder / "out.mp4");
  job.AddClip(movie.path, 137, 163);  // deep in a group
  job.AddClip(movie.path, 0, 5);      // backwards, to the beginning
  job.AddClip(movie.path, 5, 9);      // on without a jump
  job.AddClip(movie.path, 190, 205);  // over the end
  job.AddClip(movie.path, 0, 0);      // the whole source
  ASSERT_EQ(job.Run(), kOk) << job.log;
  std::vector<int> expected = Join(Join(Count(137, 26), Count(0, 9)), Count(190, 10));
  expected.insert(expected.end(), 5, 199);
  expected = Join(expected, Count(0, 200));
  EXPECT_EQ(ReadMovie(folder / "out.mp4").Numbers(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Render, SourceKinds,
    testing::Values(SourceCase{"Mp4", "mp4", "libx264", "", 2, 12, 0},
                    SourceCase{"Mp4LongGroup", "mp4", "libx264", "", 3, 250, 0},
                    SourceCase{"Mp4OpenGroup", "mp4", "libx264",
                               "x264-params=open-gop=1:keyint=20:min-keyint=20", 3, 20, 0},
                    SourceCase{"TsOpenGroup", "mpegts", "libx264",
                               "x264-params=open-gop=1:keyint=20:min-keyint=20", 3, 20, 0},
                    SourceCase{"TsMpeg2", "mpegts", "mpeg2video", "", 2, 15, 0},
                    SourceCase{"Matroska", "matroska", "libx264", "", 3, 50, 0},
                    SourceCase{"Mp4TenBit", "mp4", "libx264", "", 2, 25, AV_PIX_FMT_YUV420P10LE},
                    SourceCase{"AviIntra", "avi", "mjpeg", "", 0, 1, AV_PIX_FMT_YUVJ420P},
                    SourceCase{"RawStream", "h264", "libx264", "", 0, 25, 0}),
    [](const auto& kind) { return std::string(kind.param.name); });

TEST(Render, ConvertsTheFrameRateByWhatIsOnDisplay) {
  const Folder folder;
  Write({.path = folder / "source.mp4", .frames = 50});
  RenderJob job(folder / "out.mp4");
  job.output.video->frameDuration = VRXTimeInfo(1, 50);
  job.AddClip(folder / "source.mp4", 10, 20, 50);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_THAT(ReadMovie(folder / "out.mp4").Numbers(), ElementsAre(5, 5, 6, 6, 7, 7, 8, 8, 9, 9));
}

TEST(Render, HoldsFramesOfASourceWithVariableRate) {
  const Folder folder;
  TinyMovie movie{.path = folder / "source.mkv", .frames = 5};
  movie.format = "matroska";
  movie.ticks = {0, 1, 4, 5, 9};
  Write(movie);
  RenderJob job(folder / "out.mp4");
  job.AddClip(movie.path, 0, 11);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_THAT(ReadMovie(folder / "out.mp4").Numbers(), ElementsAre(0, 1, 1, 1, 2, 3, 3, 3, 3, 4, 4));
}

TEST(Render, KeepsGoodFramesOfACutOffSourceAndSaysSoOnce) {
  const Folder folder;
  TinyMovie movie{.path = folder / "source.ts", .frames = 60};
  movie.format = "mpegts";
  Write(movie);
  std::filesystem::resize_file(movie.path, std::filesystem::file_size(movie.path) / 2);
  RenderJob job(folder / "out.mp4");
  job.AddClip(movie.path, 0, 60);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  const std::vector<int> numbers = ReadMovie(folder / "out.mp4").Numbers();
  ASSERT_EQ(numbers.size(), 60u);
  EXPECT_EQ(std::vector<int>(numbers.begin(), numbers.begin() + 15), Count(0, 15));
  EXPECT_LT(numbers.back(), 45);
  EXPECT_EQ(numbers.back(), numbers[numbers.size() - 10]);
}

struct OutputCase {
  const char* name;
  const char* file;
  int videoCodec;
  int audioCodec;
  bool interlaced;
  const char* format;
};

class OutputKinds : public testing::TestWithParam<OutputCase> {};

TEST_P(OutputKinds, HoldPictureSoundAndTimes) {
  const OutputCase& kind = GetParam();
  const Folder folder;
  Write({.path = folder / "source.mp4", .frames = 50});
  RenderJob job(folder / kind.file);
  job.output.video->codecType = kind.videoCodec;
  job.output.video->interlace = kind.interlaced;
  job.output.video->averageBitrate = 0;
  job.AddSound(2, 48000, kind.audioCodec);
  job.AddClip(folder / "source.mp4", 0, 50);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  const MovieContent movie = ReadMovie(folder / kind.file);
  EXPECT_EQ(movie.Numbers(), Count(0, 50));
  EXPECT_TRUE(movie.hasSound);
  EXPECT_NEAR(static_cast<double>(movie.soundSamples), 96000, kind.audioCodec == 3 ? 0 : 3 * 1536);
  EXPECT_EQ(movie.colorRange, AVCOL_RANGE_MPEG);
  EXPECT_EQ(movie.colorSpace, AVCOL_SPC_SMPTE170M);
  EXPECT_EQ(movie.frames[0].interlaced != 0, kind.interlaced);
  EXPECT_NEAR(movie.frames[49].time - movie.frames[0].time, 49 / 25.0, 0.0001);
  EXPECT_THAT(movie.format, HasSubstr(kind.format));
  EXPECT_EQ(folder.Names().size(), 2u) << "a temporary file was left";
}

INSTANTIATE_TEST_SUITE_P(Render, OutputKinds,
                         testing::Values(OutputCase{"Mp4Aac", "o.mp4", 0, 0, false, "mp4"},
                                         OutputCase{"Mp4Ac3", "o.mp4", 0, 2, false, "mp4"},
                                         OutputCase{"Pcm", "o.mp4", 0, 3, false, "mov"},
                                         OutputCase{"TsAc3", "o.m2ts", 0, 0, false, "mpegts"},
                                         OutputCase{"TsMpeg2", "o.ts", 1, 1, false, "mpegts"},
                                         OutputCase{"Interlaced", "o.mp4", 0, 1, true, "mp4"},
                                         OutputCase{"Mpeg2Interlaced", "o.ts", 1, 2, true, "mpegts"}),
                         [](const auto& kind) { return std::string(kind.param.name); });

TEST(Render, WritesTheTimeZoneItem) {
  const Folder folder;
  Write({.path = folder / "source.mp4", .frames = 5});
  RenderJob job(folder / "out.mp4");
  job.AddClip(folder / "source.mp4", 0, 5);
  VRXMetaDataSetting meta;
  VRXMetaData item;
  item.kind = VRXMetaData::kTimeZone;
  const std::uint8_t bytes[] = {0x00, 0x02, 0x1C, 0xAF};
  item.SetData(bytes, sizeof bytes);
  meta.Add(item);
  job.output.metaData = new VRXMetaDataSetting(meta);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_EQ(ReadMovie(folder / "out.mp4").timeZone, "00021caf");
}

/// Still pictures whose brightness tells the frame number, with some missing.
class Stills : public IVRXRawInputCallback {
 public:
  bool GetFrame(std::uint64_t frame, void* buffer, std::uint32_t size) override {
    numbers.push_back(static_cast<int>(frame));
    if (frame == 12 || frame == 13) return false;
    EXPECT_EQ(size, 192u * 50u);  // 63 pixels are 189 bytes, padded to 192
    std::memset(buffer, 0, size);
    std::memset(buffer, 255, size / 2);  // the lower half of the picture is white
    return true;
  }
  std::uint32_t GetWidth() override { return 63; }
  std::uint32_t GetHeight() override { return 50; }
  const VRXTimeInfo* GetFrameDuration() override { return nullptr; }
  std::uint32_t GetStage() override { return 2; }
  std::uint32_t GetFormat() override { return 5; }
  std::vector<int> numbers;
};

TEST(Render, PullsStillPicturesAndFillsTheMissingOnesWithBlack) {
  const Folder folder;
  Write({.path = folder / "source.mp4", .frames = 20});
  RenderJob job(folder / "out.mp4");
  Stills stills;
  VRXBasebandSourceStreamInfo clip;
  clip.rawInput = &stills;
  clip.startTime = VRXTimeInfo(415, 1000);
  clip.endTime = VRXTimeInfo(645, 1000);
  job.timeline.video.Add(clip);
  job.AddClip(folder / "source.mp4", 3, 6);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_THAT(stills.numbers, ElementsAre(10, 11, 12, 13, 14, 15));
  EXPECT_TRUE(job.Logged("frame 12")) << job.log;
  EXPECT_FALSE(job.Logged("frame 13")) << job.log;
  const MovieContent movie = ReadMovie(folder / "out.mp4");
  ASSERT_EQ(movie.frames.size(), 9u);
  const auto luma = [&](std::size_t frame, std::size_t x, std::size_t y) {
    return int{movie.frames[frame].luma[y * 64 + x]};
  };
  EXPECT_NEAR(luma(0, 32, 40), 235, 4);
  EXPECT_NEAR(luma(0, 32, 8), 16, 4);
  EXPECT_NEAR(luma(0, 0, 40), 16, 6) << "no bar beside a narrower picture";
  EXPECT_NEAR(luma(2, 32, 40), 16, 4);
  EXPECT_EQ(movie.frames[6].number, 3);
}

TEST(Render, SkipsNothingAndRepeatsNothingInThousandsOfClips) {
  const Folder folder;
  Write({.path = folder / "source.mp4", .frames = 8});
  RenderJob job(folder / "out.mp4");
  job.output.video->width = job.output.video->height = 16;
  for (int i = 0; i < 2000; ++i) job.AddClip(folder / "source.mp4", i % 8, i % 8 + 1);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_EQ(ReadMovie(folder / "out.mp4").frames.size(), 2000u);
}

}  // namespace
}  // namespace vrx::engine::test
