// Movies come out frame for frame as the timeline says, whatever the sources are made of.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>

#include "samples/clipmaker/FramePattern.h"
#include "tests/engine/RenderJob.h"
#include "tests/support/MovieReader.h"
#include "vrx/XpTextCodec.h"

namespace vrx::engine {
namespace {

using namespace test_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

void Count(std::vector<int>& numbers, int first, int count) {
  for (int i = 0; i < count; ++i) numbers.push_back(first + i);
}

TEST_F(EngineRenderTest, EverySourceGivesExactlyTheFramesOfEachCut) {
  const std::pair<const char*, PatternClip> sources[] = {
      {"short.mp4", {.frames = 200}},
      {"long.mkv", {.frames = 200, .gop = 250, .bFrames = 3}},
      {"reordered.ts", {.frames = 200, .gop = 20, .bFrames = 3}},
      {"open.ts", {.frames = 200, .codec = "mpeg2video", .gop = 15}},
      {"intra.avi", {.frames = 200, .codec = "ffv1", .gop = 1}},
      {"raw.h264", {.frames = 200, .gop = 25, .bFrames = 0}},
  };
  for (const auto& [name, clip] : sources) {
    SCOPED_TRACE(name);
    const std::string source = Write(name, clip);
    RenderJob job(Path("out.mp4"));
    std::vector<int> expected;
    job.AddClip(source, 137, 163);  // deep in a group
    Count(expected, 137, 26);
    job.AddClip(source, 0, 5);  // backwards, to the beginning
    job.AddClip(source, 5, 9);  // on without a jump
    Count(expected, 0, 9);
    job.AddClip(source, 190, 205);  // over the end
    Count(expected, 190, 10);
    expected.insert(expected.end(), 5, 199);
    job.AddClip(source, 0, 0);  // the whole source
    Count(expected, 0, 200);
    ASSERT_EQ(job.Run(), kOk) << job.log;
    EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), expected);
  }
}

TEST_F(EngineRenderTest, WholeSourceWhosePictureStartsLateHasAllItsPictures) {
  PatternClip clip{.frames = 20, .bFrames = 0, .hasSound = true, .sound = {.samples = 48000}};
  for (int i = 0; i < clip.frames; ++i) clip.timesMs.push_back(200 + 40 * i);
  std::vector<int> expected(5, 0);
  Count(expected, 0, 20);
  for (const char* name : {"late.mp4", "late.mkv"}) {
    SCOPED_TRACE(name);
    RenderJob job(Path("out.mp4"));
    job.AddClip(Write(name, clip), 0, 0);
    ASSERT_EQ(job.Run(), kOk) << job.log;
    EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), expected);
  }
}

TEST_F(EngineRenderTest, ClipsAlternatingBetweenSourcesShowTheirOwnFrames) {
  std::vector<std::string> sources;
  for (std::uint32_t i = 0; i < 5; ++i) {
    sources.push_back(Write(std::to_string(i) + ".mp4", {.frames = 60, .firstNumber = i * 100}));
  }
  RenderJob job(Path("out.mp4"));
  std::vector<int> expected;
  for (const auto& [source, first] : {std::pair{0, 10},
                                      {1, 0},
                                      {0, 20},
                                      {1, 10},
                                      {0, 0},
                                      {2, 5},
                                      {3, 5},
                                      {4, 5},
                                      {0, 30},
                                      {0, 35},
                                      {1, 20}}) {
    job.AddClip(sources[static_cast<std::size_t>(source)], first, first + 10);
    Count(expected, source * 100 + first, 10);
  }
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), expected);
}

TEST_F(EngineRenderTest, FramesOfASourceWithVariableRateAreHeld) {
  RenderJob job(Path("out.mp4"));
  job.AddClip(Write("source.mkv", {.timesMs = {0, 40, 160, 200, 360}}), 0, 11);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_THAT(MovieReader(Path("out.mp4")).RemainingNumbers(), ElementsAre(0, 1, 1, 1, 2, 3, 3, 3, 3, 4, 4));
}

TEST_F(EngineRenderTest, GoodFramesOfATruncatedSourceAreShown) {
  const std::string source = Write("source.ts", {.frames = 60});
  std::filesystem::resize_file(source, std::filesystem::file_size(source) / 2);
  RenderJob job(Path("out.mp4"));
  job.AddClip(source, 0, 60);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  const std::vector<int> numbers = MovieReader(Path("out.mp4")).RemainingNumbers();
  ASSERT_EQ(numbers.size(), 60u);
  for (int i = 0; i < 15; ++i) EXPECT_EQ(numbers[static_cast<std::size_t>(i)], i);
  EXPECT_LT(numbers[59], 45);
  EXPECT_EQ(numbers[59], numbers[50]);
  EXPECT_FALSE(job.Logged("ends before")) << job.log;  // a stream states no time

  RenderJob whole(Path("whole.mp4"));  // its index comes first
  whole.AddClip(Write("source.mp4", {.frames = 200}), 0, 200);
  ASSERT_EQ(whole.Run(), kOk) << whole.log;
  std::filesystem::resize_file(Path("whole.mp4"), std::filesystem::file_size(Path("whole.mp4")) * 5 / 6);
  RenderJob cut(Path("cut.mp4"));
  cut.AddClip(Path("whole.mp4"), 0, 200);
  ASSERT_EQ(cut.Run(), kOk) << cut.log;
  EXPECT_TRUE(cut.Logged("whole.mp4 is damaged (it ends before the time that it states)")) << cut.log;
}

/// The names of the boxes of an MP4 file, up to its pictures.
std::string BoxesBeforePictures(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string names;
  for (unsigned char head[8]; file.read(reinterpret_cast<char*>(head), sizeof head);) {
    const std::uint32_t size = std::uint32_t{head[0]} << 24 | head[1] << 16 | head[2] << 8 | head[3];
    const std::string name(reinterpret_cast<char*>(head) + 4, 4);
    if (name == "mdat" || size < sizeof head) break;
    names += name + " ";
    file.seekg(size - sizeof head, std::ios::cur);
  }
  return names;
}

TEST_F(EngineRenderTest, EveryKindOfOutputHoldsPictureSoundAndTimes) {
  struct Case {
    const char* file;
    int videoCodec, audioCodec;
    bool interlaced;
    const char *container, *sound;
  };
  const std::string source = Write("source.mp4", {.frames = 50});
  for (const Case& c :
       {Case{"a.mp4", 0, 0, false, "mp4", "aac"}, Case{"b.mp4", 0, 2, true, "mp4", "ac3"},
        Case{"c.mp4", 0, 3, false, "mov", "pcm_s16le"}, Case{"d.m2ts", 0, 0, false, "mpegts", "ac3"},
        Case{"e.ts", 1, 1, true, "mpegts", "aac"}}) {
    SCOPED_TRACE(c.file);
    RenderJob job(Path(c.file));
    job.output.video->codecType = c.videoCodec;
    job.output.video->interlace = c.interlaced;
    job.output.video->averageBitrate = 0;
    job.AddSound(2, 48000, c.audioCodec);
    job.AddClip(source, 0, 50);
    ASSERT_EQ(job.Run(), kOk) << job.log;
    MovieReader movie(Path(c.file));
    MovieFrame frame;
    double first = 0;
    for (int n = 0; n < 50; ++n) {
      ASSERT_TRUE(movie.NextFrame(frame)) << n;
      if (n == 0) first = frame.seconds;
      EXPECT_EQ(ReadPattern(frame.image).number, n);
      EXPECT_NEAR(frame.seconds - first, n / 25.0, 0.0001);
      EXPECT_EQ(frame.interlaced, c.interlaced);
    }
    EXPECT_FALSE(movie.NextFrame(frame));
    EXPECT_EQ(movie.Info().videoCodec, c.videoCodec == 0 ? "h264" : "mpeg2video");
    EXPECT_EQ(movie.Info().range, AVCOL_RANGE_MPEG);
    EXPECT_EQ(movie.Info().matrix, AVCOL_SPC_SMPTE170M);
    EXPECT_THAT(movie.Info().container, HasSubstr(c.container));
    EXPECT_EQ(movie.Info().audioCodec, c.sound);
    EXPECT_NEAR(static_cast<double>(movie.ReadSound().samples.size()), 96000,
                c.audioCodec == 3 ? 0 : 3 * 1536);
    VRXRenderSummary summary;
    ASSERT_EQ(VRX_GetRenderSummary(&summary), kOk);
    EXPECT_EQ(summary.frames, 50u);
    EXPECT_EQ(summary.soundSamples, 96000u);
    EXPECT_EQ(summary.bytes, std::filesystem::file_size(Path(c.file)));
    // Players on the web show a movie while it loads when its index comes first.
    if (c.container != std::string("mpegts")) {
      EXPECT_THAT(BoxesBeforePictures(Path(c.file)), StartsWith("ftyp moov "));
    }
    std::filesystem::remove(Path(c.file));
    EXPECT_EQ(folder.Count(), 1) << "a temporary file was left";
  }
}

TEST_F(EngineRenderTest, KeyFramesOfTheSourceAreNoKeyFramesOfTheMovie) {
  for (const auto& [codec, movieCodec, keys] :
       {std::tuple{"h264", 0, std::vector{0}}, {"mpeg2video", 1, std::vector{0, 15}}}) {
    RenderJob job(Path("out.mp4"));
    job.output.video->codecType = movieCodec;
    job.output.video->forceRerendering = true;
    // With the movie's matrix, so that the frames reach the encoder as the decoder gave them.
    const PatternClip clip{.frames = 28, .codec = codec, .gop = 1, .bFrames = 0, .bt601 = true};
    job.AddClip(Write("source.mkv", clip), 0, 28);
    ASSERT_EQ(job.Run(), kOk) << job.log;
    MovieReader movie(Path("out.mp4"));
    MovieFrame frame;
    std::vector<int> found;
    for (int n = 0; movie.NextFrame(frame); ++n) {
      if (frame.isKey) found.push_back(n);
    }
    EXPECT_EQ(found, keys) << codec;
  }
}

/// A mono WAV file with 32-bit float samples.
std::string FloatWav(const std::vector<float>& samples, std::uint32_t rate) {
  std::string bytes;
  const auto put = [&](std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> 8 * i));
  };
  const std::uint64_t dataSize = samples.size() * sizeof(float);
  bytes += "RIFF", put(36 + dataSize, 4), bytes += "WAVEfmt ", put(16, 4);
  put(3, 2), put(1, 2), put(rate, 4), put(rate * sizeof(float), 4), put(sizeof(float), 2), put(32, 2);
  bytes += "data", put(dataSize, 4);
  for (const float sample : samples) put(std::bit_cast<std::uint32_t>(sample), sizeof(float));
  return bytes;
}

TEST_F(EngineRenderTest, PcmSamplesAreRoundedToTheNearestAndClipped) {
  constexpr std::uint32_t kRate = 48000;
  for (const int bits : {16, 24}) {
    const float unit = std::ldexp(1.0F, 1 - bits);
    std::vector<float> samples{0.4F, 0.6F, -0.4F, -0.6F, 100.7F, -100.7F, -101.2F};
    for (float& sample : samples) sample *= unit;
    samples.insert(samples.end(), {1.5F, -1.5F, std::nanf("")});
    samples.resize(kRate / 25);  // as long as the frame
    RenderJob job(Path("out.mov"));
    job.AddClip(Write("source.mp4", {.frames = 1}), 0, 1);
    job.AddSound(1, kRate, 3);
    job.output.audio->bitsPerSample = static_cast<std::uint16_t>(bits);
    VRXFileSourceStreamInfo sound(textcodec::ToUtf16(folder.Write("sound.wav", FloatWav(samples, kRate))));
    sound.startTime = VRXTimeInfo(0, 25);
    sound.endTime = VRXTimeInfo(1, 25);
    job.timeline.audio.Add(sound);
    ASSERT_EQ(job.Run(), kOk) << job.log;
    MovieReader movie(Path("out.mov"));
    EXPECT_EQ(movie.Info().audioCodec, bits == 16 ? "pcm_s16le" : "pcm_s24le");
    std::vector<float> levels = movie.ReadSound().samples;
    ASSERT_EQ(levels.size(), samples.size());
    for (float& level : levels) level /= unit;
    levels.resize(10);
    const float loudest = 1 / unit;
    EXPECT_THAT(levels, ElementsAre(0, 1, 0, -1, 101, -101, -101, loudest - 1, -loudest, 0)) << bits;
  }
}

TEST_F(EngineRenderTest, TimeZoneItemIsWritten) {
  RenderJob job(Path("out.mp4"));
  job.AddClip(Write("source.mp4", {.frames = 5}), 0, 5);
  VRXMetaData item;
  item.kind = VRXMetaData::kTimeZone;
  const std::uint8_t bytes[] = {0x00, 0x02, 0x1C, 0xAF};
  item.SetData(bytes, sizeof bytes);
  job.output.metaData = new VRXMetaDataSetting;
  job.output.metaData->Add(item);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_THAT(folder.Read("out.mp4"), testing::AllOf(HasSubstr("com.vrx.time-zone"), HasSubstr("00021caf")));
}

/// Pictures narrower than the movie, white below, of which two are missing.
class Stills : public IVRXRawInputCallback {
 public:
  bool GetFrame(std::uint64_t frame, void* buffer, std::uint32_t size) override {
    numbers.push_back(static_cast<int>(frame));
    if (frame == 12 || frame == 13) return false;
    EXPECT_EQ(size, 192u * 50u);  // 63 pixels are 189 bytes, padded to 192
    std::memset(buffer, 0, size);
    std::memset(buffer, 255, size / 2);
    return true;
  }
  std::uint32_t GetWidth() override { return 63; }
  std::uint32_t GetHeight() override { return 50; }
  const VRXTimeInfo* GetFrameDuration() override { return nullptr; }
  std::uint32_t GetStage() override { return 2; }
  std::uint32_t GetFormat() override { return 5; }
  std::vector<int> numbers;
};

TEST_F(EngineRenderTest, StillPicturesArePulledAndMissingOnesAreBlack) {
  RenderJob job(Path("out.mp4"));
  Stills stills;
  VRXBasebandSourceStreamInfo clip;
  clip.rawInput = &stills;
  clip.startTime = VRXTimeInfo(415, 1000);
  clip.endTime = VRXTimeInfo(645, 1000);
  job.timeline.video.Add(clip);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_THAT(stills.numbers, ElementsAre(10, 11, 12, 13, 14, 15));
  EXPECT_TRUE(job.Logged("frame 12")) << job.log;
  EXPECT_FALSE(job.Logged("frame 13")) << job.log;
  MovieReader movie(Path("out.mp4"));
  MovieFrame frame;
  for (int n = 0; n < 6; ++n) {
    ASSERT_TRUE(movie.NextFrame(frame));
    EXPECT_NEAR(Luma(frame.image.At(32, 40)), n == 2 || n == 3 ? 0 : 255, 5) << n;
    EXPECT_NEAR(Luma(frame.image.At(32, 8)), 0, 5) << n;
    EXPECT_NEAR(Luma(frame.image.At(0, 40)), 0, 7) << "no bar beside a narrower picture";
  }
  EXPECT_FALSE(movie.NextFrame(frame));
}

TEST_F(EngineRenderTest, EachClipOfHighDynamicRangeIsNamedOnce) {
  const std::string standard = Write("sdr.mp4", {.frames = 20}), high = Write("hdr.mp4", {.saysHlg = true});
  RenderJob job(Path("out.mp4"));
  for (const std::string& source : {high, standard, high}) job.AddClip(source, 0, 10);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  const std::string line = high + " is HDR (HLG): its colours are brought to the movie's standard range\n";
  EXPECT_EQ(job.log, "video 1: " + line + "video 3: " + line);
  for (const std::string& source : {high, standard}) {
    VRXSourceProbe probe;
    ASSERT_EQ(VRX_ProbeSource(textcodec::ToUtf16(source).c_str(), &probe), kOk);
    EXPECT_EQ(probe.dynamicRange, source == high ? VRXDynamicRangeHlg : VRXDynamicRangeStandard);
  }
}

TEST_F(EngineRenderTest, ThousandsOfClipsSkipAndRepeatNoFrame) {
  const std::string source = Write("source.mp4", {.frames = 8});
  RenderJob job(Path("out.mp4"));
  std::vector<int> expected;
  for (int i = 0; i < 2000; ++i) {
    job.AddClip(source, i % 8, i % 8 + 1);
    expected.push_back(i % 8);
  }
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), expected);
}

}  // namespace
}  // namespace vrx::engine
