// What the result and the log say of a render that the engine refuses, and that nothing of it is left.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "samples/clipmaker/PatternClip.h"
#include "tests/engine/RenderJob.h"
#include "tests/support/TempFolder.h"

namespace vrx::engine::test {
namespace {

class Fault : public testing::Test {
 protected:
  Fault() {
    test_support::WritePatternClip(source, {.width = 64, .height = 48});
    folder.Write("out.mp4", "older");
    folder.Write("text.mp4", std::string(3000, 'x') + "\nno movie\n");
  }
  void ExpectNothingLeft() const {
    EXPECT_EQ(folder.Read("out.mp4"), "older");
    EXPECT_EQ(folder.Count(), 3);
  }
  std::string Path(const std::string& name) const { return (folder.Path() / name).string(); }

  const TempFolder folder;
  const std::string source = Path("source.mp4");
};

TEST_F(Fault, ACancelledRenderStandsStillAndReleasingTheEngineEndsIt) {
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

TEST_F(Fault, EachRefusalHasItsOwnCodeAndAReadableLine) {
  struct Case {
    Result expected;
    const char* logged;
    std::function<void(RenderJob&)> spoil;
  };
  const auto clip = [&](const std::string& path) {
    return [path](RenderJob& job) { job.AddClip(path, 0, 5); };
  };
  const Case cases[] = {
      {kSourceMissing, "none.mp4", clip(Path("none.mp4"))},
      {kSourceMissing, "source.mp4/x.mp4", clip(source + "/x.mp4")},
      {kSourceMissing, "source not found: ", clip("C:\\a\\b.mp4")},
      {kSourceUnreadable, "not readable", clip(Path("."))},
      {kSourceNotMovie, "text.mp4", clip(Path("text.mp4"))},
      {kUnusableSettings, "width", [](RenderJob& job) { job.output.video->width = 63; }},
      {kUnusableSettings, "no frame", [](RenderJob& job) { job.timeline.video.Clear(); }},
      {kUnusableSettings, "channels", [](RenderJob& job) { job.AddSound(0, 48000, 0); }},
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
    c.spoil(job);
    EXPECT_EQ(job.Run(), c.expected) << job.log;
    EXPECT_TRUE(job.Logged(c.logged)) << job.log;
    ExpectNothingLeft();
  }
}

TEST_F(Fault, ASourceWithoutPicturesFailsAgainAndAgain) {
  std::string damaged = folder.Read("source.mp4");
  const std::size_t data = damaged.find("mdat"), index = damaged.find("moov");
  ASSERT_LT(data, index);
  std::fill(&damaged[data + 4], &damaged[index - 4], '\xFF');
  folder.Write("text.mp4", damaged);
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

TEST(Handles, NullAndForeignOnesAreRefused) {
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
  EXPECT_EQ(VRX_SetSTPVSetting(handle, nullptr, 4), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, &foreign, 0), kInvalidArgument);
  EXPECT_EQ(VRX_SetSTPVSetting(handle, &foreign, 4), kOk);
  EXPECT_EQ(VRX_IsSmartRenderingCapable(handle, 0, 0), kNotCapable);
  EXPECT_EQ(VRX_ReleaseVRX(&handle), kOk);
  EXPECT_EQ(handle, nullptr);
}

}  // namespace
}  // namespace vrx::engine::test
