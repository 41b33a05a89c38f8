// What the result and the log say of a render that the engine refuses or that fails, and what it leaves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>

#include "engine/SourceProbe.h"
#include "tests/engine/RenderJob.h"

namespace vrx::engine {
namespace {

class EngineFaultTest : public EngineRenderTest {
 protected:
  EngineFaultTest() {
    folder.Write("out.mp4", "older");
    folder.Write("text.mp4", std::string(3000, 'x') + "\nno movie\n");
  }
  void ExpectNothingLeft() const {
    EXPECT_EQ(folder.Read("out.mp4"), "older");
    EXPECT_EQ(folder.Count(), 3);
  }
  /// Leaves the index of an MP4 file and makes its pictures and samples unreadable.
  void EraseMedia(const std::string& name) const {
    std::string bytes = folder.Read(name);
    const std::size_t data = bytes.find("mdat"), index = bytes.find("moov");
    ASSERT_LT(data, index);
    std::fill(&bytes[data + 4], &bytes[index - 4], '\xFF');
    folder.Write(name, bytes);
  }
  const std::string source = Write("source.mp4", {});
};

TEST_F(EngineFaultTest, CancelledRenderDoesNothingMoreAndReleasingTheEngineEndsIt) {
  RenderJob job(Path("out.mp4"));
  job.AddClip(source, 0, 50);
  ASSERT_EQ(job.Create(), kOk);
  while (job.progress.processed == 0) ASSERT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), kOk);
  const auto before = job.progress.processed;
  job.endFlag = true;
  EXPECT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), kOk);
  EXPECT_EQ(job.progress.processed, before);
  VRXHandle second = nullptr;
  ASSERT_EQ(VRX_CreateVRX(&second), kOk);
  EXPECT_EQ(VRX_ReleaseSequence(second, &job.sequence), kInvalidArgument);
  EXPECT_EQ(VRX_ReleaseVRX(&second), kOk);
  EXPECT_EQ(VRX_ReleaseVRX(&job.handle), kOk);
  job.sequence = nullptr;
  ExpectNothingLeft();
}

TEST_F(EngineFaultTest, EachRefusalHasItsOwnCodeAndAReadableLine) {
  struct Case {
    Result expected;
    std::string logged;
    std::function<void(RenderJob&)> change;
  };
  const auto clip = [&](const std::string& path) {
    return [path](RenderJob& job) { job.AddClip(path, 0, 5); };
  };
  const Case cases[] = {
      {kSourceMissing, "video 2: " + Path("none.mp4") + " does not exist", clip(Path("none.mp4"))},
      {kSourceMissing, "source.mp4/x.mp4", clip(source + "/x.mp4")},
      {kSourceMissing, "video 2: C:\\a\\b.mp4 is on a drive", clip("C:\\a\\b.mp4")},
      {kSourceMissing, "audio 1: " + Path("none.wav") + " does not exist",
       [&](RenderJob& job) {
         job.AddSound(2, 48000, 0);
         job.AddSoundClip(Path("none.wav"), 0, 5);
       }},
      {kSourceUnreadable, "video 2: " + Path(".") + " is a folder", clip(Path("."))},
      {kSourceNotMovie, "text.mp4", clip(Path("text.mp4"))},
      {kUnusableSettings, "video 2: the clip has the time scale 0",
       [&](RenderJob& job) { job.AddClip(source, 0, 5, 0); }},
      {kUnusableSettings, "width", [](RenderJob& job) { job.output.video->width = 63; }},
      {kUnusableSettings, "no frame", [](RenderJob& job) { job.timeline.video.Clear(); }},
      {kUnusableSettings, "samplingRate", [](RenderJob& job) { job.AddSound(2, 22050, 2); }},
      {kUnusableSettings, "frameDuration",
       [](RenderJob& job) {
         job.output.video->codecType = 1;
         job.output.video->frameDuration = VRXTimeInfo(1, 997);
       }},
  };
  for (const Case& c : cases) {
    RenderJob job(Path("out.mp4"));
    job.AddClip(source, 0, 50);
    c.change(job);
    EXPECT_EQ(job.Run(), c.expected) << job.log;
    EXPECT_TRUE(job.Logged(c.logged)) << job.log;
    ExpectNothingLeft();
  }
}

TEST_F(EngineFaultTest, PipesAndPlaylistsAreRefusedAsSources) {
  ASSERT_EQ(mkfifo(Path("pipe.mp4").c_str(), 0600), 0);
  Write("real.ts", {.frames = 20});
  // Each of these leads to a good clip beside it.
  folder.Write("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:0.8,\nreal.ts\n#EXT-X-ENDLIST\n");
  folder.Write("list.mp4", folder.Read("list.m3u8"));
  folder.Write("script.mp4", "ffconcat version 1.0\nfile real.ts\n");
  folder.Write("real1.png", "");
  folder.Write("real%d.png", "");
  const std::pair<const char*, Result> cases[] = {
      {"pipe.mp4", kSourceUnreadable}, {"list.m3u8", kSourceNotMovie},  {"list.mp4", kSourceNotMovie},
      {"script.mp4", kSourceNotMovie}, {"real%d.png", kSourceNotMovie},
  };
  for (const auto& [name, expected] : cases) {
    for (const bool isSound : {false, true}) {
      RenderJob job(Path("out.mp4"));
      job.AddClip(isSound ? source : Path(name), 0, 5);
      job.AddSound(2, 48000, 0);
      if (isSound) job.AddSoundClip(Path(name), 0, 5);
      EXPECT_EQ(job.Run(), expected) << name;
      EXPECT_TRUE(job.Logged((isSound ? "audio 1: " : "video 1: ") + Path(name))) << job.log;
    }
    VRXSourceProbe probe;
    EXPECT_EQ(VRX_ProbeSource(textcodec::ToUtf16(Path(name)).c_str(), &probe), expected) << name;
    EXPECT_STRNE(probe.cause, "");
  }
  EXPECT_EQ(folder.Read("out.mp4"), "older");
}

TEST_F(EngineFaultTest, ProbeRefusesASourceOfWhichNothingCanBeDecoded) {
  Write("sound.mp4", {.frames = 50, .hasSound = true});
  for (const char* name : {"source.mp4", "sound.mp4"}) {
    const auto probe = [&] {
      VRXSourceProbe found;
      const Result result = VRX_ProbeSource(textcodec::ToUtf16(Path(name)).c_str(), &found);
      EXPECT_EQ(result == kOk, found.hasVideo);
      return found;
    };
    VRXSourceProbe found = probe();
    EXPECT_TRUE(found.hasVideo);
    EXPECT_NEAR(found.videoSeconds, 2.0, 0.001);
    EXPECT_EQ(found.hasAudio, std::string_view(name) == "sound.mp4");
    EraseMedia(name);
    found = probe();
    EXPECT_FALSE(found.hasVideo || found.hasAudio);
    EXPECT_STREQ(found.cause, "has no picture that can be decoded (h264)");
  }
}

class CancelAt : public IVRXIntermediateRawOutputCallback {
 public:
  CancelAt(RenderJob& job, std::uint64_t frame) : m_job(job), m_frame(frame) {
    VRXIntermediateRawOutputSetting everywhere;
    everywhere.startTime = VRXTimeInfo(0, 1);
    everywhere.endTime = VRXTimeInfo(1000, 1);
    job.output.AddRange(everywhere);
    job.output.rawOutput = this;
  }
  bool ProcessFrame(std::uint64_t frame, void*, std::uint32_t, std::int32_t, std::int32_t) override {
    if (frame == m_frame) m_job.endFlag = true;
    return true;
  }

 private:
  RenderJob& m_job;
  std::uint64_t m_frame;
};

TEST_F(EngineFaultTest, CancelDuringAnyFrameLeavesNoMovieAndStaysBelowHundredPercent) {
  for (const std::uint64_t frame : {0, 7, 24, 49}) {
    RenderJob job(Path("out.mp4"));
    job.AddClip(source, 0, 50);
    job.AddSound(2, 48000, 0);
    job.AddSoundClip(source, 0, 50);
    CancelAt cancel(job, frame);
    ASSERT_EQ(job.Create(), kOk);
    EXPECT_EQ(job.Execute(), kOk);
    EXPECT_LT(job.progress.processed, job.progress.total) << frame;
    EXPECT_FALSE(job.Logged("damaged")) << job.log;
    ASSERT_EQ(VRX_ReleaseSequence(job.handle, &job.sequence), kOk);
    ExpectNothingLeft();
  }
}

TEST_F(EngineFaultTest, MovieThatCannotBeRenamedStaysBelowHundredPercentAndIsRemoved) {
  RenderJob job(Path("taken.mp4"));
  job.AddClip(source, 0, 50);
  ASSERT_EQ(job.Create(), kOk);
  std::filesystem::create_directory(Path("taken.mp4"));
  EXPECT_EQ(job.Execute(), kOutputFailed);
  EXPECT_LT(job.progress.processed, job.progress.total);
  EXPECT_FALSE(job.endFlag);
  EXPECT_TRUE(job.Logged("taken.mp4")) << job.log;
  EXPECT_EQ(folder.Count(), 4) << "a temporary file was left";
}

TEST_F(EngineFaultTest, OutputThatIsOneOfTheSourcesIsRefusedAndTheClipNamed) {
  const std::string picture = folder.Read("source.mp4");
  std::filesystem::create_symlink("source.mp4", Path("link.mp4"));
  std::filesystem::create_hard_link(source, Path("other-name.mp4"));
  for (const bool isSound : {false, true}) {
    for (const char* output : {"source.mp4", "link.mp4", "other-name.mp4", "./source.mp4"}) {
      RenderJob job(Path(output));
      const std::string other = Write("first.mp4", {});
      job.AddClip(other, 0, 50);
      if (isSound) {
        job.AddSound(2, 48000, 0);
        job.AddSoundClip(source, 0, 0);
      } else {
        job.AddClip(source, 0, 50);
      }
      EXPECT_EQ(job.Run(), kUnusableSettings) << output;
      EXPECT_TRUE(job.Logged(isSound ? "audio 1: " : "video 2: ")) << job.log;
    }
  }
  EXPECT_EQ(folder.Read("source.mp4"), picture);
  EXPECT_TRUE(std::filesystem::is_symlink(Path("link.mp4")));
}

TEST_F(EngineFaultTest, SourceWithoutPicturesFailsOnEveryCall) {
  folder.Write("text.mp4", folder.Read("source.mp4"));
  EraseMedia("text.mp4");
  RenderJob job(Path("out.mp4"));
  job.AddClip(Path("text.mp4"), 0, 50);
  ASSERT_EQ(job.Create(), kOk);
  Result result = kOk;
  while (result == kOk && !job.endFlag) result = job.sequence->Execute(&job.progress, &job.endFlag);
  EXPECT_EQ(result, kSourceNotMovie) << job.log;
  EXPECT_TRUE(job.Logged("text.mp4"));
  EXPECT_EQ(job.sequence->Execute(&job.progress, &job.endFlag), result);
  ExpectNothingLeft();
}

TEST(SourceProbeTest, TooLongCauseIsCutBetweenCharacters) {
  char field[6];
  for (const auto& [text, kept] : {std::pair{"", ""},
                                   {"12345", "12345"},
                                   {"123456", "12345"},
                                   {"123\u00E4", "123\u00E4"},
                                   {"1234\u00E4", "1234"},
                                   {"12\U0001F3BE", "12"}}) {
    FillText(text, field);
    EXPECT_STREQ(field, kept);
  }
}

TEST(EngineHandlesTest, NullAndForeignOnesAreRefused) {
  int foreign = 0;
  VRXHandle handle = &foreign;
  IVRXSequence* sequence = nullptr;
  VRXTimeline timeline;
  VRXSystemOutputSetting output;
  EXPECT_EQ(VRX_CreateVRX(nullptr), kInvalidArgument);
  EXPECT_EQ(VRX_ReleaseVRX(&handle), kInvalidArgument);
  EXPECT_EQ(VRX_CreateSequence(handle, &timeline, &output, &sequence), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, &foreign, 4), kInvalidArgument);
  EXPECT_EQ(VRX_IsSmartRenderingCapable(nullptr, 0, 0), kInvalidArgument);
  ASSERT_EQ(VRX_CreateVRX(&handle), kOk);
  EXPECT_EQ(VRX_CreateSequence(handle, &timeline, &output, &sequence), kInvalidArgument) << "without parts";
  EXPECT_EQ(VRX_CreateSequence(handle, nullptr, &output, &sequence), kInvalidArgument);
  EXPECT_EQ(VRX_ReleaseSequence(handle, &sequence), kInvalidArgument);
  const char16_t* paths[] = {u"/piece.mp4", nullptr};
  VRXPieces pieces;
  EXPECT_EQ(VRX_CreateJoin(handle, &pieces, &sequence), kInvalidArgument) << "without parts";
  pieces.paths = paths, pieces.count = 2, pieces.output = u"/movie.mp4";
  EXPECT_EQ(VRX_CreateJoin(handle, &pieces, &sequence), kInvalidArgument) << "without a path";
  pieces.structSize = 4, pieces.count = 1;
  EXPECT_EQ(VRX_CreateJoin(handle, &pieces, &sequence), kInvalidArgument) << "of no version";
  EXPECT_EQ(VRX_SetSTPVSetting(handle, nullptr, 4), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, &foreign, 0), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, &foreign, 4), kOk);
  EXPECT_EQ(VRX_IsSmartRenderingCapable(handle, 0, 0), kOk);
  EXPECT_EQ(VRX_IsSmartRenderingCapable(handle, 1, 9), kOk);
  EXPECT_EQ(VRX_IsSmartRenderingCapable(handle, 2, 0), kNotCapable);
  EXPECT_EQ(VRX_IsSmartRenderingCapable(handle, 0, 5), kNotCapable);
  EXPECT_EQ(VRX_ReleaseVRX(&handle), kOk);
  EXPECT_EQ(handle, nullptr);
}

}  // namespace
}  // namespace vrx::engine
