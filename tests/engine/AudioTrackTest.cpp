#include "engine/AudioTrack.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

#include "engine/EngineLog.h"
#include "samples/clipmaker/ClickTrack.h"
#include "samples/clipmaker/PatternClip.h"
#include "tests/support/TempFolder.h"

extern "C" {
#include <libavutil/log.h>
}

namespace vrx::engine {
namespace {

using test_support::ClipSound;
using test_support::ClipSoundStyle;
using test_support::WritePatternClip;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kRate = 48000;
constexpr AudioFormat kStereo = {kRate, 2};
// Samples that the encoder added in front, which MPEG-TS and Matroska do not declare.
constexpr int kUndeclaredDelay = 1200;
using Plane = std::vector<float>;
using Planes = std::vector<Plane>;

class AudioTrackTest : public ::testing::Test {
 protected:
  AudioTrackTest() {
    av_log_set_level(AV_LOG_QUIET);
    SetLogCallback(
        [](void* context, const VRXLogEntry& entry) {
          auto* self = static_cast<AudioTrackTest*>(context);
          EXPECT_TRUE(entry.clip == 0 || entry.track == VRXAudioTrack);
          (entry.severity == VRXLogError ? self->m_errors : self->m_warnings).emplace_back(entry.text);
        },
        this);
  }
  ~AudioTrackTest() override { SetLogCallback(nullptr, nullptr); }

  std::string Path(const std::string& name) const { return (m_folder.Path() / name).string(); }

  /// A clip with sound, and with a small picture where the container is one for movies.
  std::string Write(const std::string& name, const ClipSound& sound) const {
    const auto frames = static_cast<int>(sound.samples * 25 / sound.rate);
    WritePatternClip(Path(name), {.width = 64,
                                  .height = 48,
                                  .frames = name.ends_with(".wav") ? 0 : frames,
                                  .hasSound = true,
                                  .sound = sound});
    return Path(name);
  }

  std::string WriteClicks(const std::string& name, int seconds) const {
    return Write(name, {.samples = std::int64_t{kRate} * seconds});
  }

  Planes Play(const std::vector<AudioClip>& clips, std::int64_t total, AudioFormat format = kStereo,
              int block = 1000, std::int64_t first = 0) {
    std::unique_ptr<AudioTrack> track;
    const Result result = AudioTrack::Open(clips, format, first, first + total, m_never, track);
    EXPECT_EQ(result, kOk);
    Planes sound(static_cast<std::size_t>(format.channels), Plane(static_cast<std::size_t>(total)));
    if (result != kOk) return sound;
    std::int64_t at = 0;
    for (int got = block; got == block; at += got) {
      Planes out(sound.size(), Plane(static_cast<std::size_t>(block)));
      std::vector<float*> planes;
      for (auto& plane : out) planes.push_back(plane.data());
      EXPECT_EQ(track->Read(planes.data(), block, got), kOk);
      for (std::size_t c = 0; c < out.size(); ++c) std::copy_n(out[c].begin(), got, sound[c].begin() + at);
    }
    EXPECT_EQ(at, total);
    return sound;
  }

  Result Open(const std::vector<AudioClip>& clips, AudioFormat format = kStereo, std::int64_t total = kRate) {
    std::unique_ptr<AudioTrack> track;
    return AudioTrack::Open(clips, format, 0, total, m_never, track);
  }

  const StopSignal m_never;
  std::vector<std::string> m_errors;
  std::vector<std::string> m_warnings;
  const TempFolder m_folder;
};

/// `seconds` are all the clicks there are, each within `tolerance` samples.
void ExpectClicks(const Plane& sound, const std::vector<double>& seconds, double tolerance = 0,
                  int rate = kRate) {
  const std::vector<std::int64_t> clicks = test_support::FindClicks(sound, rate);
  ASSERT_EQ(clicks.size(), seconds.size()) << ::testing::PrintToString(clicks);
  for (std::size_t i = 0; i < clicks.size(); ++i) {
    EXPECT_NEAR(static_cast<double>(clicks[i]), seconds[i] * rate, tolerance) << "click " << i;
  }
}

/// Writes `bytes` over what lies at `position` of a file.
void Overwrite(const std::string& path, std::uintmax_t position, const std::string& bytes) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(position));
  file << bytes;
}

float LoudestBetween(const Plane& samples, std::int64_t first, std::int64_t last) {
  float loudest = 0;
  for (auto i = first; i < last; ++i)
    loudest = std::max(loudest, std::abs(samples[static_cast<std::size_t>(i)]));
  return loudest;
}

float LargestDifference(const Plane& a, const Plane& b) {
  float largest = a.size() == b.size() ? 0 : 99;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

TEST_F(AudioTrackTest, CutOfAnySourceKeepsItsClicksInTimeAndMatchesTheWhole) {
  struct Case {
    const char* file;
    const char* codec;
    int rate, channels;
    int outRate, outChannels;
    double tolerance;  // samples of the output
  };
  // Lossy codecs ring before a click.
  for (const Case& c :
       {Case{"a.wav", "pcm_s16le", 48000, 2, 48000, 2, 0}, Case{"b.wav", "pcm_f32le", 44100, 1, 48000, 2, 1},
        Case{"c.wav", "pcm_s24le", 96000, 6, 44100, 2, 1}, Case{"d.wav", "pcm_u8", 8000, 1, 48000, 6, 6},
        Case{"e.mkv", "pcm_s16le", 44100, 2, 44100, 1, 0}, Case{"f.mp4", "aac", 44100, 1, 48000, 2, 24},
        Case{"g.mov", "pcm_s16be", 48000, 6, 48000, 6, 0},
        Case{"h.mkv", "aac", 44100, 2, 48000, 2, kUndeclaredDelay},
        Case{"i.mkv", "mp2", 48000, 2, 48000, 2, kUndeclaredDelay},
        Case{"j.ts", "aac", 48000, 2, 48000, 2, kUndeclaredDelay},
        Case{"k.ts", "ac3", 48000, 2, 48000, 2, kUndeclaredDelay}}) {
    SCOPED_TRACE(c.file);
    const std::string path = Write(c.file, {.style = ClipSoundStyle::kClickOverTone,
                                            .rate = c.rate,
                                            .channels = c.channels,
                                            .codec = c.codec,
                                            .samples = 6 * c.rate});
    // 2.75 s to 5.5 s of the source: clicks after a quarter and five quarters of a second.
    const Planes played = Play({{path, 2750, 5500, 1000}}, 3 * c.outRate, {c.outRate, c.outChannels});
    const std::size_t channel = c.outChannels == 6 && c.channels == 1 ? 2 : 0;  // one goes to the centre
    ExpectClicks(played[channel], {0.25, 1.25, 2.25}, c.tolerance, c.outRate);
    EXPECT_EQ(LoudestBetween(played[0], 11 * c.outRate / 4 + 1, 3 * c.outRate), 0) << "not cut at its length";

    const AudioFormat format = {c.rate, 2};
    const Planes whole = Play({{path, 0, 6, 1}}, 6 * c.rate, format);
    for (const std::int64_t start : {100, 700, 3310, 5555}) {
      const Planes cut = Play({{path, start, start + 300, 1000}}, 3 * c.rate / 10, format, 377);
      const auto from = whole[0].begin() + std::llround(static_cast<double>(start * c.rate) / 1000);
      EXPECT_LT(LargestDifference(cut[0], Plane(from, from + 3 * c.rate / 10)), 0.002F) << start;
    }
  }
  EXPECT_THAT(m_errors, IsEmpty());
  EXPECT_THAT(m_warnings, IsEmpty());
}

TEST_F(AudioTrackTest, ThousandsOfClipsOfAnOddLengthDoNotDriftAndOpenTheirFileOnce) {
  const std::string path = WriteClicks("clicks.wav", 2);
  // Each clip is one frame of 30000/1001 a second, which is 1601.6 samples, and begins with a click.
  const std::vector<AudioClip> clips(2000, AudioClip{path, 30000, 31001, 30000});
  std::unique_ptr<AudioTrack> track;
  ASSERT_EQ(AudioTrack::Open(clips, kStereo, 0, 3203200, m_never, track), kOk);
  Plane left(3203200), right(8008);
  for (std::size_t at = 0; at < left.size(); at += right.size()) {
    float* planes[] = {&left[at], right.data()};
    int got = 0;
    ASSERT_EQ(track->Read(planes, 8008, got), kOk);
    if (at == 0) std::filesystem::remove(path);  // an open file goes on playing; opening it again would fail
  }
  for (int i = 1; i < 2000; ++i) {
    const auto start = static_cast<std::size_t>(std::llround(i * 1601.6));
    ASSERT_GT(left[start], 0.85F) << i;
    ASSERT_LT(std::abs(left[start - 1]), 0.01F) << i;
  }
}

TEST_F(AudioTrackTest, ClipCutInPiecesMatchesTheWhole) {
  const std::string path =
      Write("tone.mp4", {.style = ClipSoundStyle::kTone, .rate = 44100, .samples = 44100 * 3});
  // Pieces that end between two samples, in two scales.
  const Planes whole = Play({{path, 0, 72 * 1001, 30000}}, 115315);
  std::vector<AudioClip> pieces;
  for (int i = 0; i < 72; i += 2) {
    pieces.push_back({path, i * 1001, (i + 1) * 1001, 30000});
    pieces.push_back({path, (i + 1) * 2002, (i + 2) * 2002, 60000});
  }
  EXPECT_EQ(LargestDifference(whole[0], Play(pieces, 115315, kStereo, 113)[0]), 0);
}

TEST_F(AudioTrackTest, PartOfATrackHasTheSamplesOfTheWhole) {
  for (const auto& [file, codec, rate] : {std::tuple("a.wav", "pcm_s16le", 48000),
                                          {"b.wav", "pcm_f32le", 44100},
                                          {"c.mp4", "aac", 44100},
                                          {"d.mp4", "aac", 48000},
                                          {"e.ts", "ac3", 48000},
                                          {"f.mkv", "mp2", 44100},
                                          {"g.ts", "aac", 44100}}) {
    SCOPED_TRACE(file);
    const std::string path = Write(
        file, {.style = ClipSoundStyle::kClickOverTone, .rate = rate, .codec = codec, .samples = 4 * rate});
    const std::string other = WriteClicks("other.wav", 1);
    // The second goes on where the first ends, between two samples; the third jumps.
    const std::vector<AudioClip> clips{{path, 1001, 2002, 1000},
                                       {path, 6006, 9009, 3000},
                                       {path, 300, 1500, 1000},
                                       {other, 0, 0, 1},
                                       {path, 1000, 9000, 1000}};
    const Planes whole = Play(clips, 12 * kRate);
    for (const std::int64_t first :
         {0, 1, 48047, 48048, 60000, 96096, 96097, 140000, 153696, 160000, 300000, 13 * kRate}) {
      const auto count = std::clamp<std::int64_t>(12 * kRate - first, 0, 9999);
      const Planes part = Play(clips, count, kStereo, 377, first);
      for (std::size_t c = 0; c < 2 && count != 0; ++c) {
        const auto from = whole[c].begin() + first;
        EXPECT_TRUE(std::equal(part[c].begin(), part[c].end(), from, from + count)) << first;
      }
    }
  }
}

TEST_F(AudioTrackTest, ShortSourcesArePaddedAndWholeSourcesEndWithTheirSound) {
  const std::string twoSeconds = WriteClicks("two.mp4", 2);
  // Cut to 3.5 s but 2 s long, then whole, then whole again: clicks tell where each begins.
  const Planes played =
      Play({{twoSeconds, 500, 4000, 1000}, {twoSeconds, 0, 0, 1}, {twoSeconds, 7, 3, 1000}}, 10 * kRate);
  ExpectClicks(played[0], {0.5, 3.5, 4.5, 5.5, 6.5}, 24);
  EXPECT_EQ(LoudestBetween(played[0], 3 * kRate / 2 + 1024, 7 * kRate / 2 - 1), 0);
  EXPECT_EQ(LoudestBetween(played[1], 15 * kRate / 2 + 1024, 10 * kRate), 0);
}

TEST_F(AudioTrackTest, SoundThatStartsLateStaysInTimeWithItsPicture) {
  for (const char* name : {"late.mkv", "late.mp4", "late.ts"}) {
    SCOPED_TRACE(name);
    const std::string path = Write(name, {.start = 30000, .samples = 3 * kRate});
    ExpectClicks(Play({{path, 250, 3250, 1000}}, 3 * kRate)[0], {0.75, 1.75, 2.75}, kUndeclaredDelay);
  }
}

TEST_F(AudioTrackTest, HolesBecomeSilenceOverlapsAreDroppedAndJitterIsNotHeard) {
  const std::string holes = Write("holes.mkv", {.style = ClipSoundStyle::kClickOverTone,
                                                .samples = 5 * kRate,
                                                .jumps = {{60000, 9600}, {154592, -600}}});
  const Planes played = Play({{holes, 0, 5, 1}}, 5 * kRate);
  // The container gives the place after a jump to a millisecond.
  ExpectClicks(played[0], {0, 1, 2, 3, 4}, kRate / 2000);
  EXPECT_EQ(LoudestBetween(played[0], 60000 + 48, 69600 - 48), 0);
  EXPECT_GT(LoudestBetween(played[0], 70000, 71000), 0.05F);

  // Times in whole milliseconds: each frame is off by a different part of one.
  const std::string jitter =
      Write("jitter.mkv", {.style = ClipSoundStyle::kTone, .rate = 44100, .samples = 3 * 44100});
  Plane tone;
  for (std::int64_t i = 0; i < 3 * 44100; ++i) tone.push_back(test_support::ToneSample(i, 44100));
  EXPECT_LT(LargestDifference(Play({{jitter, 0, 3, 1}}, 3 * 44100, {44100, 1})[0], tone), 0.001F);
  EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("holes.mkv")));
}

TEST_F(AudioTrackTest, UnusableSourcesFailAtOpenAndAreNamed) {
  const std::string good = WriteClicks("good.wav", 1);
  const std::pair<std::string, Result> cases[] = {
      {Path("missing.mp4"), kSourceMissing},
      {good + "/below.mp4", kSourceMissing},
      {Path("."), kSourceUnreadable},
      {m_folder.Write("text.mp4", "This is no movie."), kSourceNotMovie},
      {m_folder.Write("empty.wav", ""), kSourceNotMovie},
      {m_folder.Write("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nhttp://localhost:1/a.ts\n"),
       kSourceNotMovie},
      {"http://localhost:1/a.mp4", kSourceMissing}};
  for (const auto& [path, result] : cases) {
    m_errors.clear();
    EXPECT_EQ(Open({{good, 0, 1, 1}, {path, 0, 1, 1}}), result) << path;
    EXPECT_THAT(m_errors, ElementsAre(testing::StartsWith(path + " ")));
  }
  EXPECT_EQ(Open({{good, 0, 1, 0}}), kInvalidArgument);
  EXPECT_EQ(Open({}, {kRate, 1000000000}, 1), kUnusableSettings);
  EXPECT_EQ(Open({}, kStereo, -1), kInvalidArgument);
}

TEST_F(AudioTrackTest, MovieWithoutSoundIsSilentForItsLengthWithOneWarning) {
  WritePatternClip(Path("mute.mp4"), {.frames = 25});
  const std::string clicks = WriteClicks("clicks.wav", 1);
  const AudioClip mute = {Path("mute.mp4"), 0, 0, 1};
  ExpectClicks(Play({mute, {clicks, 0, 1, 1}, mute, {clicks, 0, 1, 1}}, 4 * kRate)[0], {1, 3});
  EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("mute.mp4")));
}

TEST_F(AudioTrackTest, DamagedSoundIsSilentAndWarnedOfOnceAClipAndTheRestStaysInTime) {
  const std::string path = WriteClicks("damaged.ts", 6);
  // A stretch of about a second in the middle, between two clicks or over one.
  std::string noise(std::filesystem::file_size(path) / 6, '\0');
  for (std::size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<char>(i * 167);
  Overwrite(path, noise.size() * 3, noise);
  const Planes played = Play({{path, 0, 6, 1}, {path, 0, 1, 1}}, 7 * kRate);
  const std::vector<std::int64_t> clicks = test_support::FindClicks(played[0], kRate);
  for (const int second : {0, 1, 5, 6}) {
    EXPECT_TRUE(std::any_of(clicks.begin(), clicks.end(), [&](std::int64_t click) {
      return std::abs(click - second * kRate) < kUndeclaredDelay;
    })) << second;
  }
  EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("damaged.ts")));
}

TEST_F(AudioTrackTest, StoppedSoundIsSilentAtItsEndAndNotTakenForDamage) {
  for (const auto& [name, codec] : {std::pair("stop.ts", "mp2"), std::pair("stop.mp4", "aac"),
                                    std::pair("stop.mov", "pcm_s16le"), std::pair("stop.wav", "pcm_s16le")}) {
    const std::string path = Write(name, {.codec = codec, .samples = 5 * kRate});
    for (int stopAt = 0; stopAt < 5 * kRate; stopAt += kRate / 4) {
      SCOPED_TRACE(testing::Message() << name << " stopped at " << stopAt);
      StopSignal stop;
      std::unique_ptr<AudioTrack> track;
      ASSERT_EQ(AudioTrack::Open({{path, 0, 5, 1}, {path, 3, 5, 1}}, kStereo, 0, 7 * kRate, stop, track),
                kOk);
      Plane left(7 * kRate), right(7 * kRate);
      float* planes[] = {left.data(), right.data()};
      int got = 0;
      EXPECT_EQ(track->Read(planes, stopAt, got), kOk);
      stop.Set();
      EXPECT_EQ(track->Read(planes, 7 * kRate, got), kOk);
      EXPECT_EQ(got, 7 * kRate - stopAt);
      EXPECT_EQ(LoudestBetween(left, got - kRate, got), 0);
      EXPECT_NE(AudioTrack::Open({{path, 0, 5, 1}}, kStereo, 0, kRate, stop, track), kOk);
    }
  }
  EXPECT_THAT(m_errors, IsEmpty());
  EXPECT_THAT(m_warnings, IsEmpty());
}

TEST_F(AudioTrackTest, EveryTruncationOfAFileGivesSoundOrAnError) {
  for (const char* name : {"cut.mkv", "cut.ts", "cut.mov", "cut.wav"}) {
    const std::string path = Write(name, {.codec = "mp2", .samples = kRate / 4});
    const std::string bytes = m_folder.Read(name);
    for (std::size_t length = 0; length < bytes.size(); length += 97) {
      m_folder.Write(name, bytes.substr(0, length));
      std::unique_ptr<AudioTrack> track;
      if (AudioTrack::Open({{path, 0, 0, 1}, {path, 100, 200, 1000}}, kStereo, 0, kRate, m_never, track) !=
          kOk)
        continue;
      Plane left(kRate), right(kRate);
      float* planes[] = {left.data(), right.data()};
      int got = 0;
      EXPECT_EQ(track->Read(planes, kRate, got), kOk);
      EXPECT_EQ(got, kRate);
    }
  }
}

TEST_F(AudioTrackTest, ExtremeTimesAreSilenceAndNeverOverflow) {
  const std::string path = WriteClicks("clicks.wav", 2);
  constexpr std::int64_t kHuge = std::int64_t{1} << 62;
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr std::uint64_t kMaxScale = std::numeric_limits<std::uint64_t>::max();
  struct Case {
    std::vector<AudioClip> clips;
    int seconds;
    std::vector<double> clicks;
  };
  const Case cases[] = {{{{path, kHuge, kMax, 1}}, 1, {}},
                        {{{path, 0, kMax, kMaxScale}, {path, 0, 1, 1}}, 1, {0, 0.5}},
                        {{{path, kMin, kMax, 1}, {path, 0, 1, 1}}, 3, {0, 1}},
                        {{{path, kMin, kMin, kMaxScale}, {path, -9, 1, 1}}, 3, {0, 1, 2}}};
  for (const int rate : {kRate, 44100}) {
    for (const Case& c : cases) {
      ExpectClicks(Play(c.clips, std::int64_t{rate} * c.seconds, {rate, 2})[0], c.clicks, 0, rate);
    }
  }
}

TEST_F(AudioTrackTest, LevelsStayTheSameInEveryMixAndBrokenFloatsAreSilent) {
  ClipSound sound = {.style = ClipSoundStyle::kClickOverTone, .samples = kRate};
  for (const int channels : {1, 2, 6}) {
    sound.channels = channels;
    const std::string path = Write("level.wav", sound);
    const Planes played = Play({{path, 0, 1, 1}}, kRate);
    const float click = LoudestBetween(played[0], 0, 96);
    EXPECT_LE(click, 1.0F) << channels;
    EXPECT_NEAR(click, 0.9F, 0.02F) << channels;
    EXPECT_EQ(played[0], played[1]) << channels;
  }
  sound.channels = 1;
  sound.codec = "pcm_f32le";
  const std::string path = Write("broken.wav", sound);
  const float bad[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                       1e30F};
  Overwrite(path, std::filesystem::file_size(path) - 4000,
            std::string(reinterpret_cast<const char*>(bad), sizeof bad));
  const Plane played = Play({{path, 0, 1, 1}}, 44100, {44100, 1})[0];
  EXPECT_TRUE(std::all_of(played.begin(), played.end(), [](float x) { return std::abs(x) < 20; }));
  EXPECT_GT(LoudestBetween(played, 44100 - 500, 44100), 0.05F);
}

}  // namespace
}  // namespace vrx::engine
