// What a movie shows unchanged is copied out of its sources, and every frame and sample is still the planned
// one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

#include "engine/NalUnits.h"
#include "tests/engine/RenderJob.h"
#include "tests/engine/StreamPackets.h"
#include "tests/support/MovieReader.h"

namespace vrx::engine {

/// A span of pictures as the host receives it.
struct Span {
  bool copied;
  std::uint64_t first;
  std::uint64_t count;
  std::string reason;
  bool operator==(const Span&) const = default;
};

void PrintTo(const Span& span, std::ostream* out) {
  *out << span.first << "+" << span.count << (span.copied ? " copied" : " " + span.reason);
}

namespace {

using namespace test_support;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string kOverlay = "overlay";
const std::string kSeam = "between a cut or an overlay and the next key frame";
const std::string kNoStart = "no key frame follows at which copying can begin";
const std::string kOtherTimes = "the source's pictures do not follow each other as the movie's frames do";

Span Copied(std::uint64_t first, std::uint64_t count) { return {true, first, count, ""}; }
Span Encoded(std::uint64_t first, std::uint64_t count, std::string reason) {
  return {false, first, count, std::move(reason)};
}

/// Keeps the numbers of its frames and changes nothing.
class CountingOverlay : public IVRXIntermediateRawOutputCallback {
 public:
  bool ProcessFrame(std::uint64_t frame, void*, std::uint32_t, std::int32_t, std::int32_t) override {
    frames.push_back(frame);
    return true;
  }
  std::vector<std::uint64_t> frames;
};

/// A coded picture of a file.
struct Packet {
  std::int64_t pts;
  std::int64_t dts;
  bool isKey;
  std::vector<std::string> units;  // without those that containers add; one for codecs without units
};

std::vector<std::string> UnitsOf(const AVPacket& packet, const AVCodecParameters& stream) {
  const Bytes data(packet.data, static_cast<std::size_t>(packet.size));
  std::vector<std::string> found;
  if (stream.codec_id == AV_CODEC_ID_MPEG2VIDEO) return {std::string(data.begin(), data.end())};
  const bool hasLengths = stream.extradata_size > 0 && stream.extradata[0] == 1;
  std::vector<Bytes> units;
  EXPECT_TRUE(SplitNalUnits(data, hasLengths ? kLongLength : kStartCodes, units));
  for (const Bytes unit : units) {
    const int delimiter = stream.codec_id == AV_CODEC_ID_HEVC ? 35 : 9;  // of access units
    const int type = TypeOfNal(unit, stream.codec_id);
    if (IsParameterSet(type, stream.codec_id) || type == delimiter) continue;
    found.emplace_back(unit.begin(), unit.end());
  }
  return found;
}

struct Stream {
  std::vector<Packet> packets;  // in decoding order
  std::uint32_t tag = 0;
};

Stream ReadStream(const std::string& path) {
  Stream read;
  const auto take = [&](const AVFormatContext&, const AVStream& stream, const AVPacket& packet) {
    read.tag = stream.codecpar->codec_tag;
    read.packets.push_back(
        {packet.pts, packet.dts, (packet.flags & AV_PKT_FLAG_KEY) != 0, UnitsOf(packet, *stream.codecpar)});
  };
  ForEachPacket(path, AVMEDIA_TYPE_VIDEO, take);
  return read;
}

std::vector<std::vector<std::string>> InOrderOfDisplay(std::vector<Packet> packets) {
  std::ranges::sort(packets, {}, &Packet::pts);
  std::vector<std::vector<std::string>> units;
  for (Packet& packet : packets) units.push_back(std::move(packet.units));
  return units;
}

std::vector<int> Count(int first, int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::generate(numbers.begin(), numbers.end(), [&] { return first++; });
  return numbers;
}

class SmartRenderTest : public EngineRenderTest {
 protected:
  SmartRenderTest() { VRX_SetSpanCallback(&Collect, this); }
  ~SmartRenderTest() override {
    VRX_SetSpanCallback(nullptr, nullptr);
    VRX_SetRenderOverrides(nullptr);
  }

  static void Collect(void* test, const VRXRenderSpan& span) {
    auto& self = *static_cast<SmartRenderTest*>(test);
    if (span.track != VRXVideoTrack) return;
    self.spans.push_back({span.copied, span.firstFrame, span.frameCount, span.reason});
    self.starts.insert(span.starts, span.starts + span.startCount);
  }

  /// A clip of `frames` frames with sound whose colours are those of the movie.
  std::string WriteSource(const std::string& name, PatternClip clip) const {
    clip.bt601 = true;
    clip.hasSound = true;
    // Groups and runs of B-pictures as long as the test says.
    clip.x264 = "scenecut=0:b-adapt=0" + (clip.x264.empty() ? "" : ":" + clip.x264);
    return Write(name, clip);
  }

  void SetOverlay(RenderJob& job, std::uint64_t first, std::uint64_t last) {
    VRXIntermediateRawOutputSetting range;
    range.startTime = VRXTimeInfo(first, 25);
    range.endTime = VRXTimeInfo(last, 25);
    job.output.AddRange(range);
    job.output.rawOutput = &overlay;
  }

  Result Render(RenderJob& job) {
    spans.clear();
    starts.clear();
    // Encoded spans have to be readable, too.
    job.output.video->averageBitrate = 0;
    return job.Run();
  }

  /// Each frame of copied spans has the units of the source's frame with its number, and decoding times rise.
  void ExpectCopies(const std::string& movie, const std::string& source, std::int64_t offset = 0) const {
    const Stream made = ReadStream(movie);
    for (std::size_t i = 1; i < made.packets.size(); ++i)
      ASSERT_LT(made.packets[i - 1].dts, made.packets[i].dts) << i;
    const auto frames = InOrderOfDisplay(made.packets);
    const auto wanted = InOrderOfDisplay(ReadStream(source).packets);
    for (const Span& span : spans) {
      if (!span.copied) continue;
      for (std::uint64_t n = span.first; n < span.first + span.count; ++n) {
        const auto from = static_cast<std::size_t>(static_cast<std::int64_t>(n) + offset);
        ASSERT_TRUE(frames.at(n) == wanted.at(from)) << "frame " << n;
      }
    }
  }

  CountingOverlay overlay;
  std::vector<Span> spans;
  std::set<std::uint64_t> starts;
};

TEST_F(SmartRenderTest, PicturesOutsideOfOverlaysAreCopiedFromEverySource) {
  struct Case {
    const char* what;
    const char* source;
    PatternClip clip;
    std::int32_t codec;
    std::vector<Span> spans;  // with an overlay on frames 30 to 40
  };
  const Case cases[] = {
      {"closed groups",
       "source.mp4",
       {.frames = 100, .gop = 20},
       0,
       {Copied(0, 30), Encoded(30, 11, kOverlay), Encoded(41, 19, kSeam), Copied(60, 40)}},
      {"a pyramid of B-pictures",
       "source.mkv",
       {.frames = 100, .gop = 24, .bFrames = 7, .x264 = "b-pyramid=strict:ref=4"},
       0,
       {Copied(0, 25), Encoded(25, 5, kSeam), Encoded(30, 11, kOverlay), Encoded(41, 7, kSeam),
        Copied(48, 52)}},
      {"open groups, after the last closed one",
       "source.mov",
       {.frames = 100, .gop = 19, .x264 = "open-gop=1"},  // so that no picture is shown before its key frame
       0,
       {Copied(0, 29), Encoded(29, 1, kSeam), Encoded(30, 11, kOverlay), Encoded(41, 59, kNoStart)}},
      {"a long group",
       "source.mp4",
       {.frames = 100, .gop = 500, .bFrames = 0},
       0,
       {Copied(0, 30), Encoded(30, 11, kOverlay), Encoded(41, 59, kNoStart)}},
      {"a transport stream",
       "source.ts",
       {.frames = 100, .gop = 20, .bFrames = 0},
       0,
       {Copied(0, 30), Encoded(30, 11, kOverlay), Encoded(41, 19, kSeam), Copied(60, 40)}},
      {"MPEG-2, whose groups are all open",
       "source.ts",
       {.frames = 100, .codec = "mpeg2video", .gop = 12},
       1,
       {Copied(0, 28), Encoded(28, 2, kSeam), Encoded(30, 11, kOverlay), Encoded(41, 7, kSeam),
        Copied(48, 52)}},
  };
  for (const Case& one : cases) {
    const std::string source = WriteSource(one.source, one.clip);
    for (const char* output : {"out.mp4", "out.ts"}) {
      SCOPED_TRACE(std::string(one.what) + ", " + output);
      RenderJob job(Path(output));
      job.output.video->codecType = one.codec;
      job.AddClip(source, 0, 100);
      job.AddSoundClip(source, 0, 100);
      job.AddSound(2, 48000, 0);
      SetOverlay(job, 30, 40);
      overlay.frames.clear();
      ASSERT_EQ(Render(job), kOk) << job.log;
      EXPECT_EQ(spans, one.spans);
      EXPECT_EQ(overlay.frames.size(), 11u);
      EXPECT_EQ(MovieReader(Path(output)).RemainingNumbers(), Count(0, 100));
      ExpectCopies(Path(output), source);
    }
  }
}

TEST_F(SmartRenderTest, CutsAreExactToTheFrame) {
  const std::string source = WriteSource("source.mp4", {.frames = 120, .gop = 20});
  for (const auto& [first, end] :
       {std::pair(0, 120), {20, 61}, {33, 80}, {33, 81}, {1, 19}, {39, 62}, {79, 120}}) {
    SCOPED_TRACE(std::to_string(first) + "-" + std::to_string(end));
    RenderJob job(Path("out.mp4"));
    job.AddClip(source, first, end);
    ASSERT_EQ(Render(job), kOk) << job.log;
    EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), Count(first, end - first));
    ExpectCopies(Path("out.mp4"), source, first);
    const bool hasWholeGroup = first != 1;
    EXPECT_EQ(std::ranges::any_of(spans, &Span::copied), hasWholeGroup);
  }
}

TEST_F(SmartRenderTest, FramesThatAreNotTheSourcesOwnAreEncoded) {
  std::vector<std::int64_t> times;  // 40 ms apart, but for a hole and a jump
  for (std::int64_t n = 0; n < 100; ++n) times.push_back(n * 40 + (n >= 30 ? 40 : 0) + (n >= 60 ? 5 : 0));
  const std::string uneven = WriteSource("uneven.mp4", {.timesMs = times, .gop = 10, .bFrames = 0});
  RenderJob variable(Path("out.mp4"));
  variable.AddClip(uneven, 0, 90);
  ASSERT_EQ(Render(variable), kOk) << variable.log;
  // The picture before the hole is shown twice. Five milliseconds later each is shown from the next frame on.
  EXPECT_EQ(spans[0], Copied(0, 29));
  EXPECT_EQ(spans[1].reason, kOtherTimes);
  std::vector<int> numbers = Count(0, 30);
  for (int n = 29; n < 60; ++n) numbers.push_back(n);
  for (int n = 59; numbers.size() < 90; ++n) numbers.push_back(n);
  EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), numbers);

  const std::string hidden =
      WriteSource("hidden.mp4", {.frames = 100, .hidden = 25, .gop = 20, .bFrames = 0});
  RenderJob edited(Path("out.mp4"));
  edited.AddClip(hidden, 0, 75);
  ASSERT_EQ(Render(edited), kOk) << edited.log;
  EXPECT_THAT(spans, ElementsAre(Encoded(0, 15, kSeam), Copied(15, 60)));
  EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), Count(25, 75));

  const std::string small = WriteSource("small.ts", {.frames = 40, .gop = 20, .x264 = "ref=1:bframes=0"});
  std::ofstream(WriteSource("twice.ts", {.frames = 40, .gop = 20}), std::ios::binary | std::ios::app)
      << std::ifstream(small, std::ios::binary).rdbuf();
  RenderJob changing(Path("out.mp4"));
  changing.AddClip(Path("twice.ts"), 0, 40);
  ASSERT_EQ(Render(changing), kOk) << changing.log;
  EXPECT_THAT(spans, ElementsAre(Encoded(0, 40, "the source changes its parameter sets on the way")));

  const std::string film = WriteSource("film.mp4", {.frames = 100, .gop = 20});
  RenderJob faster(Path("out.mp4"));
  faster.output.video->frameDuration = VRXTimeInfo(1, 30);
  faster.AddClip(film, 0, 50);
  ASSERT_EQ(Render(faster), kOk) << faster.log;
  EXPECT_THAT(spans, ElementsAre(Encoded(0, 60, kOtherTimes)));
}

TEST_F(SmartRenderTest, SourcesWithOtherParameterSetsPlayInOneMovie) {
  const std::string one = WriteSource("one.mp4", {.frames = 60, .gop = 20, .bFrames = 0, .x264 = "ref=1"});
  const std::string two =
      WriteSource("two.mp4", {.frames = 60, .gop = 20, .x264 = "ref=4:cabac=0", .firstNumber = 500});
  std::vector<int> numbers = Count(500, 60);
  const std::vector<int> second = Count(0, 55);
  numbers.insert(numbers.end(), second.begin(), second.end());
  for (const auto& [name, tag] : {std::pair("out.mp4", MKTAG('a', 'v', 'c', '3')),
                                  {"out.mov", MKTAG('a', 'v', 'c', '3')},
                                  {"out.ts", 0x1B}}) {
    SCOPED_TRACE(name);
    RenderJob job(Path(name));
    job.AddClip(two, 0, 60);
    job.AddClip(one, 0, 55);
    ASSERT_EQ(Render(job), kOk) << job.log;
    EXPECT_THAT(spans, ElementsAre(Copied(0, 60), Copied(60, 55)));
    EXPECT_EQ(MovieReader(Path(name)).RemainingNumbers(), numbers);
    EXPECT_EQ(ReadStream(Path(name)).tag, static_cast<std::uint32_t>(tag));
  }
  RenderJob same(Path("out.mp4"));
  same.AddClip(one, 0, 55);
  same.AddClip(one, 5, 60);
  ASSERT_EQ(Render(same), kOk) << same.log;
  EXPECT_EQ(spans.back(), Copied(70, 40));
  EXPECT_EQ(ReadStream(Path("out.mp4")).tag, static_cast<std::uint32_t>(MKTAG('a', 'v', 'c', '1')))
      << "sets of other numbers lie beside each other";
  RenderJob encoded(Path("out.mp4"));
  encoded.AddClip(two, 1, 19);
  encoded.AddClip(one, 0, 55);
  SetOverlay(encoded, 36, 40);  // as far into the clip as the one before is long
  ASSERT_EQ(Render(encoded), kOk) << encoded.log;
  numbers = Count(501, 18);
  numbers.insert(numbers.end(), second.begin(), second.end());
  EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), numbers);
}

TEST_F(SmartRenderTest, HevcIsCopiedWhereTheMovieIsHevc) {
  const std::string source =
      WriteSource("source.mp4", {.frames = 80, .codec = "hevc", .gop = 20, .bFrames = 0});
  VRXRenderOverrides overrides;
  overrides.codec = VRXVideoCodecHevc;
  for (const char* output : {"out.mp4", "out.ts"}) {
    ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
    RenderJob job(Path(output));
    job.AddClip(source, 0, 80);
    SetOverlay(job, 20, 22);
    ASSERT_EQ(Render(job), kOk) << job.log;
    EXPECT_THAT(spans,
                ElementsAre(Copied(0, 20), Encoded(20, 3, kOverlay), Encoded(23, 17, kSeam), Copied(40, 40)));
    EXPECT_EQ(MovieReader(Path(output)).RemainingNumbers(), Count(0, 80));
    ExpectCopies(Path(output), source);
  }
}

TEST_F(SmartRenderTest, RangesCopyTheirPart) {
  const std::string source = WriteSource("source.mp4", {.frames = 120, .gop = 20, .bFrames = 0});
  VRXRenderOverrides overrides;
  overrides.firstFrame = 30;
  overrides.frameCount = 70;
  overrides.smart = VRXSmartRequire;  // seams are no cause to refuse
  ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
  RenderJob job(Path("out.mp4"));
  job.AddClip(source, 5, 120);
  SetOverlay(job, 60, 61);
  SetOverlay(job, 90, 92);
  ASSERT_EQ(Render(job), kOk) << job.log;
  EXPECT_THAT(spans, ElementsAre(Encoded(30, 5, kSeam), Copied(35, 25), Encoded(60, 2, kOverlay),
                                 Encoded(62, 13, kSeam), Copied(75, 15), Encoded(90, 3, kOverlay),
                                 Encoded(93, 7, kSeam)));
  EXPECT_THAT(starts, ElementsAre(35, 55, 75));
  EXPECT_THAT(overlay.frames, ElementsAre(60, 61, 90, 91, 92));
  EXPECT_EQ(MovieReader(Path("out.mp4")).RemainingNumbers(), Count(35, 70));
  VRXRenderSummary summary;
  ASSERT_EQ(VRX_GetRenderSummary(&summary), kOk);
  EXPECT_EQ(summary.frames, 70u);
  EXPECT_EQ(summary.copiedFrames, 40u);
}

TEST_F(SmartRenderTest, ReasonsNameWhatTheSourceLacks) {
  struct Case {
    PatternClip clip;
    const char* reason;
  };
  const auto clip = [](PatternClip one) {
    one.frames = 40;
    one.bt601 = true;
    return one;
  };
  PatternClip large = clip({});
  large.width = 96;
  PatternClip blue = clip({});
  blue.bt601 = false;
  const Case cases[] = {{clip({.codec = "mpeg4"}), "the source is mpeg4, and the movie H.264"},
                        {large, "the source has 96x48 pixels, and the movie 64x48"},
                        {clip({.rotation = 180}), "the source is turned for display"},
                        {clip({.sarNum = 4, .sarDen = 3}), "the source has pixels that are not square"},
                        {clip({.fullRange = true}), "the source has the pixel format yuvj420p, not yuv420p"},
                        {clip({.x264 = "interlaced=1"}), "the source is interlaced"},
                        {clip({.crf = 0}), "the source has the profile High 4:4:4 Predictive"},
                        {clip({.saysHlg = true}), "the source has other colours than the movie"},
                        {clip({.x264 = "chromaloc=2"}), "the source has other colours than the movie"},
                        {blue, "the source has other colours than the movie"}};
  for (const Case& one : cases) {
    PatternClip written = one.clip;
    if (written.width == 160) written.width = 64;
    written.height = 48;
    WritePatternClip(Path("source.mp4"), written);
    VRXRenderOverrides overrides;
    overrides.smart = VRXSmartRequire;
    overrides.firstFrame = 5;
    ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
    RenderJob refused(Path("out.mp4"));
    refused.AddClip(Path("source.mp4"), 0, 40);
    EXPECT_EQ(Render(refused), kNotCapable);
    EXPECT_THAT(refused.log, HasSubstr("the frames 5 to 39 cannot be copied: " + std::string(one.reason)));
    EXPECT_FALSE(std::filesystem::exists(Path("out.mp4")));
    VRX_SetRenderOverrides(nullptr);
    RenderJob job(Path("out.mp4"));
    job.AddClip(Path("source.mp4"), 0, 40);
    ASSERT_EQ(Render(job), kOk) << job.log;
    EXPECT_THAT(spans, ElementsAre(Encoded(0, 40, one.reason)));
    EXPECT_EQ(job.log.find("error"), std::string::npos);
    std::filesystem::remove(Path("out.mp4"));
  }
}

TEST_F(SmartRenderTest, NothingIsCopiedWhereTheHostWantsItEncoded) {
  const std::string source = WriteSource("source.mp4", {.frames = 120, .gop = 20});
  const std::vector<StreamPacket> packets = ReadPackets(source, AVMEDIA_TYPE_VIDEO, {1, 25}).packets;
  std::size_t bytes = 0;  // from the key frame on that lies a second before the clip
  for (std::size_t i = 20; i < packets.size(); ++i) bytes += packets[i].bytes.size();
  const auto rate = static_cast<std::int32_t>(bytes * 8 * 25 / 100);
  const auto render = [&](bool force, const VRXRenderOverrides& overrides, std::int32_t bitrate) {
    EXPECT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
    RenderJob job(Path("out.mp4"));
    job.output.video->forceRerendering = force;
    job.AddClip(source, 60, 120);
    spans.clear();
    job.output.video->averageBitrate = bitrate;
    EXPECT_EQ(job.Run(), kOk) << job.log;
    return spans;
  };
  VRXRenderOverrides asked;
  asked.smart = VRXSmartAuto;
  asked.crf = 40;
  VRXRenderOverrides off;
  off.smart = VRXSmartOff;
  VRXRenderOverrides small;
  small.crf = 40;
  const auto isCopied = ElementsAre(Copied(0, 60));
  const auto isEncoded = ElementsAre(Encoded(0, 60, "smart rendering is off"));
  EXPECT_THAT(render(false, {}, 0), isCopied);
  EXPECT_THAT(render(true, asked, 0), isCopied) << "what is asked for beats the document";
  EXPECT_THAT(render(true, {}, 0), isEncoded);
  EXPECT_THAT(render(false, off, 0), isEncoded);
  EXPECT_THAT(render(false, small, 0), isEncoded) << "who asks for a quality gets it";
  EXPECT_THAT(render(false, {}, rate * 10 / 11), isCopied) << "encoders miss a bitrate, too";
  EXPECT_THAT(render(false, {}, rate * 10 / 14).at(0).reason, HasSubstr("Mbit/s, and the movie 0."));
}

TEST_F(SmartRenderTest, DamagedPicturesAreEncodedUpToTheNextKeyFrame) {
  const std::string source = WriteSource("source.mp4", {.frames = 120, .gop = 20, .bFrames = 0});
  const Packet damaged = ReadStream(source).packets.at(45);
  std::string bytes = folder.Read("source.mp4");
  const std::size_t unit = bytes.find(damaged.units.at(0));
  ASSERT_NE(unit, std::string::npos);
  bytes.replace(unit - 4, 4, "\x7f\xff\xff\xff");  // its length
  folder.Write("source.mp4", bytes);
  for (const char* output : {"out.mp4", "out.ts"}) {
    SCOPED_TRACE(output);
    RenderJob job(Path(output));
    job.output.video->averageBitrate = 0;
    job.AddClip(source, 0, 120);
    spans.clear();
    ASSERT_EQ(Render(job), kOk) << job.log;
    EXPECT_THAT(spans, ElementsAre(Copied(0, 45), Encoded(45, 15, kOtherTimes), Copied(60, 60)));
    EXPECT_EQ(MovieReader(Path(output)).RemainingNumbers().size(), 120u);
  }
}

TEST_F(SmartRenderTest, SourceThatChangedSincePlanFails) {
  for (const auto& [frames, gop] : {std::pair(10, 20), {60, 60}}) {
    const std::string source = WriteSource("source.mp4", {.frames = 60, .gop = 20, .bFrames = 0});
    RenderJob job(Path("out.mp4"));
    job.AddClip(source, 20, 60);
    job.output.video->averageBitrate = 0;
    ASSERT_EQ(job.Create(), kOk) << job.log;
    std::filesystem::remove(source);
    WriteSource("source.mp4", {.frames = frames, .gop = gop, .bFrames = 0});
    EXPECT_EQ(job.Execute(), kSourceUnreadable);
    EXPECT_TRUE(job.Logged("video 1: " + source + " was changed while it was copied from")) << job.log;
    EXPECT_FALSE(std::filesystem::exists(Path("out.mp4")));
  }
}

}  // namespace
}  // namespace vrx::engine
