// Sound that the movie has from one file goes into it packet by packet, and every sample lies where it lies
// when it is encoded.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <iterator>

#include "tests/engine/RenderJob.h"
#include "tests/engine/StreamPackets.h"
#include "tests/support/MovieReader.h"

namespace vrx::engine {
namespace {

using namespace test_support;

class CopiedSoundTest : public EngineRenderTest {
 protected:
  CopiedSoundTest() { VRX_SetSpanCallback(&Keep, this); }
  ~CopiedSoundTest() override {
    VRX_SetSpanCallback(nullptr, nullptr);
    VRX_SetRenderOverrides(nullptr);
  }
  static void Keep(void* context, const VRXRenderSpan& span) {
    if (span.track != VRXAudioTrack) return;
    EXPECT_FALSE(span.sourceIsCause);
    EXPECT_EQ(span.copied, *span.reason == 0);
    static_cast<CopiedSoundTest*>(context)->said =
        (span.copied ? "copied " : span.reason + std::string(" ")) + std::to_string(span.clip) + " " +
        std::to_string(span.firstFrame) + "+" + std::to_string(span.frameCount);
  }

  static void Override(VRXSmartRendering smart, std::uint64_t first = 0, std::uint64_t count = 0,
                       VRXTrackChoice tracks = VRXAllTracks) {
    VRXRenderOverrides overrides;
    overrides.tracks = tracks;
    overrides.smart = smart;
    overrides.firstFrame = first;
    overrides.frameCount = count;
    ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
  }

  std::string said;  // of the last sound: copied or why not, the clip, and the frames
};

/// The sound of a movie from its first picture on.
MovieSound SoundFromPicture(const std::string& path) {
  MovieReader movie(path);
  MovieFrame frame;
  EXPECT_TRUE(movie.NextFrame(frame));
  MovieSound sound = movie.ReadSound();
  sound.start -= std::llround(frame.seconds * sound.rate);
  return sound;
}

TEST_F(CopiedSoundTest, PacketsAreThoseOfTheSourceAndSamplesLieWhereTheyAreEncoded) {
  const struct {
    const char* source;
    ClipSound sound;
    const char* output;
    int from, to;        // frames of the source; both 0: all
    std::size_t packet;  // of the source, that comes first
  } cases[] = {
      {"a.mp4", {}, "out.mp4", 0, 0, 0},
      {"a.mp4", {}, "out.mp4", 40, 70, 75},
      {"a.mp4", {}, "out.mov", 10, 41, 18},
      {"a.mp4", {.rate = 44100, .channels = 1}, "out.mp4", 33, 71, 56},
      {"a.mp4", {.channels = 6}, "out.mp4", 33, 71, 61},
      {"a.mp4", {}, "out.ts", 0, 60, 0},
      {"a.mkv", {.codec = "aac"}, "out.mp4", 30, 70, 55},
      {"a.ts", {}, "out.mp4", 0, 70, 0},
      {"a.ts", {.rate = 44100}, "out.mp4", 30, 70, 50},
      {"a.ts", {}, "out.ts", 0, 60, 0},
      {"a.mp4", {.codec = "ac3"}, "out.ts", 0, 60, 0},
      {"a.ts", {.codec = "ac3"}, "out.mp4", 30, 70, 36},
      {"a.ts", {.channels = 6, .codec = "ac3"}, "out.ts", 0, 0, 0},
      {"a.mp4", {.codec = "ac3"}, "out.mov", 13, 51, 15},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::Message() << test.source << " " << test.sound.codec << " " << test.sound.rate
                                    << " to " << test.output << " from " << test.from);
    const bool isAc3 = test.sound.codec == "ac3";
    const bool isStream = test.output == std::string("out.ts");
    const int frames = test.to == 0 ? 75 : test.to - test.from;
    const std::int64_t first = std::int64_t{test.from} * test.sound.rate / 25;
    const std::string source = Write(test.source, {.frames = 75, .hasSound = true, .sound = test.sound});
    const auto render = [&](VRXSmartRendering smart, const std::string& expected) {
      Override(smart);
      RenderJob job(Path(test.output));
      job.AddClip(source, test.from, test.to);
      job.AddSoundClip(source, test.from, test.to);
      job.AddSound(static_cast<std::uint16_t>(test.sound.channels),
                   static_cast<std::uint32_t>(test.sound.rate), isAc3 ? 2 : 1);
      EXPECT_EQ(job.Run(), kOk) << job.log;
      EXPECT_EQ(said, expected + " 0+" + std::to_string(frames));
      VRXRenderSummary summary;
      EXPECT_EQ(VRX_GetRenderSummary(&summary), kOk);
      const std::int64_t samples = std::int64_t{frames} * test.sound.rate / 25;
      EXPECT_EQ(summary.soundSamples, static_cast<std::uint64_t>(samples));
      if (!isStream) {
        EXPECT_EQ(ReadSoundPackets(Path(test.output)).end, samples);
      }
      return SoundFromPicture(Path(test.output));
    };
    const MovieSound encoded = render(VRXSmartOff, "smart rendering is off 0");
    const MovieSound copied = render(VRXSmartAuto, "copied 1");
    EXPECT_FALSE(encoded.Clicks().empty());
    EXPECT_EQ(copied.Clicks(), encoded.Clicks());
    const StreamPackets packets = ReadSoundPackets(Path(test.output));
    const StreamPackets reference = ReadSoundPackets(source);
    EXPECT_TRUE(BytesOf(packets) == BytesOf(reference, test.packet, packets.packets.size()));
    if (isStream) continue;
    EXPECT_EQ(copied.start, 0);
    const MovieSound whole = MovieReader(source).ReadSound();
    const double tolerance = isAc3 ? 0.001 : 0;  // its decoder makes noise
    for (std::size_t i = 0; i < static_cast<std::size_t>(packets.end); ++i) {
      const auto place = static_cast<std::size_t>(first - whole.start) + i;
      ASSERT_NEAR(copied.samples[i], whole.samples[place], tolerance) << i;
    }
  }
}

TEST_F(CopiedSoundTest, EndIsExactToTheSample) {
  const std::string source =
      Write("a.mp4", {.rateNum = 30000, .rateDen = 1001, .frames = 75, .hasSound = true});
  for (const VRXSmartRendering smart : {VRXSmartOff, VRXSmartAuto}) {
    for (const auto& [frames, samples] :
         {std::pair{1, 1602}, {2, 3203}, {4, 6406}, {7, 11211}, {48, 76877}}) {
      Override(smart);
      RenderJob job(Path("out.mp4"));
      job.output.video->frameDuration = VRXTimeInfo(1001, 30000);
      job.AddClip(source, 7007, 7007 + frames * 1001, 30000);
      job.AddSoundClip(source, 7007, 7007 + frames * 1001, 30000);
      job.AddSound(2, 48000, 1);
      ASSERT_EQ(job.Run(), kOk) << job.log;
      EXPECT_EQ(ReadSoundPackets(Path("out.mp4")).end, samples) << said;
    }
  }
}

/// Writes what `change` makes of the bytes of a file.
void Rewrite(const std::string& path, const std::function<void(std::string&)>& change) {
  std::ifstream in(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(in), {}};
  change(bytes);
  std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), std::ssize(bytes));
}

/// Gives another profile to the ADTS packets behind `from`, a part of the file.
void ChangeProfile(std::string& bytes, double from) {
  const auto start = static_cast<std::size_t>(from * static_cast<double>(bytes.size()));
  for (std::size_t at = start; (at = bytes.find("\xFF\xF1\x4C", at)) != std::string::npos; ++at)
    bytes[at + 2] = '\x0C';
}

TEST_F(CopiedSoundTest, WhatCannotStayIsEncodedAndTheReasonIsSaid) {
  Write("aac.mp4", {.frames = 75, .hasSound = true});
  Write("44100.mp4", {.frames = 75, .hasSound = true, .sound = {.rate = 44100}});
  Write("mono.mp4", {.frames = 75, .hasSound = true, .sound = {.channels = 1}});
  Write("mp2.ts", {.frames = 75, .hasSound = true, .sound = {.codec = "mp2"}});
  Write("short.mp4", {.frames = 75, .hasSound = true, .sound = {.samples = 100000}});
  Write("late.mkv", {.frames = 75, .hasSound = true, .sound = {.codec = "aac", .start = 9600}});
  Write("silent.mp4", {.frames = 75});
  for (const char* name : {"gap.ts", "main.ts", "mixed.ts"}) Write(name, {.frames = 75, .hasSound = true});
  Rewrite(Path("gap.ts"), [](std::string& bytes) { bytes.erase(bytes.size() / 376 * 188, 188 * 40); });
  Rewrite(Path("main.ts"), [](std::string& bytes) { ChangeProfile(bytes, 0); });
  Rewrite(Path("mixed.ts"), [](std::string& bytes) { ChangeProfile(bytes, 0.5); });
  Write("ac3.mp4", {.frames = 75, .hasSound = true, .sound = {.codec = "ac3"}});
  const auto ac3 = ReadSoundPackets(Path("ac3.mp4")).packets;
  Rewrite(Path("ac3.mp4"), [&](std::string& bytes) {
    bytes[static_cast<std::size_t>(ac3[20].position) + 6] ^= '\x04';  // a channel of low frequencies
    bytes[static_cast<std::size_t>(ac3[60].position) + 6] ^= '\x60';  // mono from stereo
  });
  const struct {
    const char* source;
    std::vector<std::pair<int, int>> clips;
    const char* output;
    int codec;
    const char* said;
    int scale = 25;
  } cases[] = {
      {"aac.mp4", {{10, 30}, {30, 50}}, "out.mp4", 1, "copied 1"},
      {"aac.mp4", {{60, 65}, {10, 30}, {30, 50}}, "out.mp4", 1, "the sound has cuts 0"},
      {"aac.mp4", {{10, 50}}, "out.mov", 3, "uncompressed sound is always written new 1"},
      {"aac.mp4", {{10, 50}}, "out.mp4", 2, "the source's sound is aac 1"},
      {"aac.mp4", {{10, 50}}, "out.ts", 1, "a transport stream cannot begin within the source's sound 1"},
      {"aac.mp4", {{0, 96000}}, "out.ts", 1, "copied 1", 48000},
      {"aac.mp4",
       {{1, 96001}},
       "out.ts",
       1,
       "a transport stream cannot begin within the source's sound 1",
       48000},
      {"aac.mp4", {{1, 96001}}, "out.mp4", 1, "copied 1", 48000},
      {"aac.mp4", {{40, 80}}, "out.mp4", 1, "the sound ends before the picture 1"},
      {"44100.mp4", {{10, 50}}, "out.mp4", 1, "the source's sound has 44100 Hz 1"},
      {"mono.mp4", {{10, 50}}, "out.mp4", 1, "it is mixed to 2 channels 1"},
      {"mp2.ts", {{10, 50}}, "out.mp4", 1, "the source's sound is mp2 1"},
      {"short.mp4", {{0, 0}}, "out.mp4", 1, "the sound ends before the picture 0"},
      {"short.mp4", {{10, 50}}, "out.mp4", 1, "copied 1"},
      {"aac.mp4", {{40, 77}}, "out.mp4", 1, "copied 1"},
      {"late.mkv", {{0, 50}}, "out.mp4", 1, "the sound begins after the picture 1"},
      {"late.mkv", {{5, 50}}, "out.mp4", 1, "copied 1"},
      {"silent.mp4", {{10, 50}}, "out.mp4", 1, "the source has no sound 1"},
      {"gap.ts", {{10, 60}}, "out.mp4", 1, "the source's sound has gaps 1"},
      {"gap.ts", {{10, 30}}, "out.mp4", 1, "copied 1"},
      {"main.ts", {{10, 60}}, "out.mp4", 1, "the source's sound is aac (Main) 1"},
      {"mixed.ts", {{10, 60}}, "out.mp4", 1, "the source's sound changes its format 1"},
      {"gap.ts",
       {{1024, 49024}},
       "out.ts",
       1,
       "a transport stream cannot begin within the source's sound 1",
       48000},
      {"ac3.mp4", {{10, 40}}, "out.mp4", 2, "the source's sound changes its format 1"},
      {"ac3.mp4", {{20, 60}}, "out.mp4", 2, "the source's sound changes its format 1"},
  };
  for (const auto& test : cases) {
    Override(VRXSmartAuto);
    RenderJob job(Path(test.output));
    int frames = 0;
    for (const auto& [from, to] : test.clips) {
      const int length = to == 0 ? 75 : (to - from) * 25 / test.scale;
      frames += length;
      job.AddClip(Path("silent.mp4"), 0, length);
      job.AddSoundClip(Path(test.source), from, to, static_cast<std::uint64_t>(test.scale));
    }
    job.AddSound(2, 48000, test.codec);
    EXPECT_EQ(job.Create(), kOk) << job.log;
    EXPECT_EQ(said, std::string(test.said) + " 0+" + std::to_string(frames)) << test.source;
  }
}

TEST_F(CopiedSoundTest, RangeIsCopiedFromTheClipsThatItNeeds) {
  const std::string source = Write("a.mp4", {.frames = 75, .hasSound = true});
  Override(VRXSmartAuto, 25, 20);
  RenderJob job(Path("out.mp4"));
  for (const auto& [from, to] : {std::pair{60, 70}, {10, 30}, {30, 50}}) {
    job.AddClip(source, from, to);
    job.AddSoundClip(source, from, to);
  }
  job.AddSound(2, 48000, 1);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_EQ(said, "copied 2 25+20");  // frames 25 to 45 of the source
  const MovieSound sound = SoundFromPicture(Path("out.mp4"));
  EXPECT_EQ(sound.start, 0);
  EXPECT_EQ(sound.Clicks().front(), 0);  // of the second with which frame 25 begins

  Override(VRXSmartAuto);
  RenderJob again(Path("again.mp4"));  // its source has an edit list that cuts into a packet
  again.AddClip(Path("out.mp4"), 0, 0);
  again.AddSoundClip(Path("out.mp4"), 0, 0);
  again.AddSound(2, 48000, 1);
  ASSERT_EQ(again.Run(), kOk) << again.log;
  EXPECT_EQ(said, "copied 1 0+20");
  EXPECT_TRUE(SoundFromPicture(Path("again.mp4")).samples == sound.samples);
}

TEST_F(CopiedSoundTest, SoundAloneHasThePacketsOfTheWholeMovie) {
  const std::string source = Write("a.mp4", {.frames = 75, .hasSound = true});
  const struct {
    const char* output;
    int codec;
    std::uint32_t rate;
    const char* said;
  } cases[] = {
      {"out.mp4", 1, 48000, "copied 1"},
      {"out.mp4", 1, 44100, "the source's sound has 48000 Hz 1"},
      {"out.mov", 3, 48000, "uncompressed sound is always written new 1"},
      {"out.ts", 2, 48000, "the source's sound is aac 1"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.said);
    StreamPackets whole;
    for (const VRXTrackChoice tracks : {VRXAllTracks, VRXSoundAlone}) {
      Override(VRXSmartAuto, 11, 40, tracks);
      RenderJob job(Path(test.output));
      job.AddClip(source, 5, 70);
      job.AddSoundClip(source, 5, 70);
      job.AddSound(2, test.rate, test.codec);
      ASSERT_EQ(job.Run(), kOk) << job.log;
      EXPECT_EQ(said, test.said + std::string(" 11+40"));
      EXPECT_EQ(job.progress.total, 40u);
      VRXRenderSummary summary;
      EXPECT_EQ(VRX_GetRenderSummary(&summary), kOk);
      EXPECT_EQ(summary.soundSamples, test.rate * 40 / 25);
      EXPECT_EQ(summary.frames, tracks == VRXAllTracks ? 40u : 0u);
      const StreamPackets packets = ReadSoundPackets(Path(test.output));
      if (tracks == VRXAllTracks) {
        whole = packets;
        continue;
      }
      EXPECT_TRUE(BytesOf(packets) == BytesOf(whole));
      EXPECT_EQ(packets.end, whole.end);
      ASSERT_EQ(packets.packets.size(), whole.packets.size());
      for (std::size_t i = 0; i < packets.packets.size(); ++i)
        EXPECT_EQ(packets.packets[i].time, whole.packets[i].time);
    }
  }
  Override(VRXSmartAuto, 0, 0, VRXSoundAlone);
  RenderJob itself(source);
  itself.AddClip(Path("out.mp4"), 0, 40);
  itself.AddSoundClip(source, 0, 40);
  itself.AddSound(2, 48000, 1);
  EXPECT_EQ(itself.Create(), kUnusableSettings);
  EXPECT_TRUE(itself.Logged("the movie would replace the source of this clip")) << itself.log;
  RenderJob silent(Path("silent.mp4"));
  silent.AddClip(source, 5, 70);
  EXPECT_EQ(silent.Create(), kUnusableSettings);
  EXPECT_TRUE(silent.Logged("the sound alone is asked for, and the movie has none")) << silent.log;
  EXPECT_FALSE(std::filesystem::exists(Path("silent.mp4")));
}

TEST_F(CopiedSoundTest, SourceThatLosesItsSoundDuringTheRenderFailsIt) {
  const ClipSound tone{.style = ClipSoundStyle::kTone, .samples = 480000};  // more than is read ahead
  const std::string source = Write("a.m4a", {.frames = 0, .hasSound = true, .sound = tone});
  const std::string picture = Write("picture.mp4", {.frames = 250});
  Override(VRXSmartAuto);
  RenderJob job(Path("out.mp4"));
  job.AddClip(picture, 0, 250);
  job.AddSoundClip(source, 0, 250);
  job.AddSound(2, 48000, 1);
  ASSERT_EQ(job.Create(), kOk) << job.log;
  EXPECT_EQ(said, "copied 1 0+250");
  std::filesystem::resize_file(source, std::filesystem::file_size(source) / 2);
  EXPECT_EQ(job.Execute(), kSourceUnreadable);
  EXPECT_TRUE(job.Logged("a.m4a has other sound than when it was opened")) << job.log;
  EXPECT_FALSE(std::filesystem::exists(Path("out.mp4")));
}

}  // namespace
}  // namespace vrx::engine
