// What is reported to the host, for every outcome of a render.
#include <gmock/gmock.h>

#include "src/manager/ProgressFilter.h"
#include "tests/src/BasebandText.h"
#include "tests/src/WrapperFixture.h"

namespace {

using testing::ElementsAre;
using Reports = std::vector<std::string>;

constexpr auto kSourceMissing = static_cast<std::int32_t>(VRXEngineSourceMissing);
constexpr auto kDiskFull = static_cast<std::int32_t>(VRXEngineDiskFull);
constexpr std::int32_t kOther = static_cast<std::int32_t>(0x80000001);

constexpr ScriptedSlice At(std::uint64_t percent) { return {.processed = percent}; }
constexpr ScriptedSlice EndAt(std::uint64_t processed, std::uint64_t total = 100) {
  return {.processed = processed, .total = total, .ends = true};
}
constexpr ScriptedSlice Fail(std::int32_t result) { return {.result = result}; }
constexpr ScriptedSlice kThrow{.throws = true};

struct Outcome {
  const char* name;
  std::vector<ScriptedSlice> slices;
  Reports reports;
  std::int32_t createSequence = 0;
  std::int32_t releaseSequence = 0;
};

class RenderOutcomeTest : public WrapperTest, public testing::WithParamInterface<Outcome> {};

TEST_P(RenderOutcomeTest, IsReportedOnceAndInOrder) {
  const Outcome& outcome = GetParam();
  script->createSequence = outcome.createSequence;
  script->slices = outcome.slices;
  script->releaseSequence = outcome.releaseSequence;
  LoadProject();
  Render();
  Release();
  EXPECT_EQ(callback.GetReports(), outcome.reports);
}

INSTANTIATE_TEST_SUITE_P(
    Outcomes, RenderOutcomeTest,
    testing::Values(
        Outcome{"UnknownTotalCountsAsNothingDone", {EndAt(5, 0)}, {"start", "end"}},
        Outcome{"ProgressMayGoBack", {At(50), At(40), EndAt(100)}, {"start", "50", "40", "100", "end"}},
        Outcome{"LargeTotalsDoNotOverflow", {EndAt(3'000'000'000, 6'000'000'000)}, {"start", "50", "end"}},
        Outcome{"SequenceFails", {{}}, {"start", "error 8003"}, kOther},
        Outcome{"SequenceMissesASource", {{}}, {"start", "error 8111"}, kSourceMissing},
        Outcome{"ExecuteFails", {At(30), Fail(kOther)}, {"start", "30", "error 8003"}},
        Outcome{"ExecuteFindsDiskFull", {At(30), Fail(kDiskFull)}, {"start", "30", "error 8109"}},
        Outcome{"ReleaseFailsToo", {Fail(kSourceMissing)}, {"start", "error 8111"}, 0, kOther},
        Outcome{"ReleaseFails", {EndAt(100)}, {"start", "100", "error 8109"}, 0, kDiskFull},
        Outcome{"EngineThrows", {At(10), kThrow}, {"start", "10", "error 8003"}}),
    [](const auto& test) { return test.param.name; });

TEST_F(WrapperTest, EngineInstanceThatCannotBeMadeAgainFailsTheSecondRender) {
  LoadProject();
  Render();  // the end releases the instance
  script->createEngine = kDiskFull;
  RecordingCallback second;
  wrapper->SetCallback(&second);
  // The first render's thread may still be leaving; a refused start would leave nothing to wait for.
  while (second.GetReports().empty()) wrapper->StartRender();
  second.WaitForEnd();
  Release();
  const Reports reports = second.GetReports();
  EXPECT_THAT(Reports(reports.begin(), reports.begin() + 2), ElementsAre("start", "error 8109"));
}

TEST_F(WrapperTest, CallbackThatThrowsEndsTheRenderWithOneReport) {
  const auto fail = [] { throw std::runtime_error("host"); };
  callback.onProgress = [&](std::uint32_t) { fail(); };
  callback.onLast = fail;  // from OnRenderError, and once more from OnRenderEnd
  script->slices = {{.processed = 10}};
  LoadProject();
  EXPECT_THAT(Render(), ElementsAre("start", "10", "error 8003"));
  RecordingCallback throwsFirst, throwsLast;
  for (RecordingCallback* next : {&throwsFirst, &throwsLast}) {
    Release();
    ASSERT_EQ(VRXWrapper::CreateVRXWrapper(true, &wrapper), 0);
    wrapper->SetCallback(next);
    LoadProject();
    script->slices = {{.processed = 100, .ends = true}};
    (next == &throwsFirst ? next->onStart : next->onLast) = fail;
    wrapper->StartRender();
    next->WaitForEnd();
  }
  Release();
  EXPECT_THAT(throwsFirst.GetReports(), ElementsAre("start", "error 8003"));
  EXPECT_THAT(throwsLast.GetReports(), ElementsAre("start", "100", "end"));
}

TEST_F(WrapperTest, OutputThatIsAnInputIsRefusedAndStaysAsItIs) {
  folder.Write("painter.xml", "<plist><dict/></plist>");
  folder.Write("still.png", "picture");
  folder.Write("stills.xml", BasebandText(ImageText(1, "still.png", 0, 9)));
  folder.Write("sound.wav", "sound");
  std::filesystem::create_symlink(folder.Path() / "painter.xml", folder.Path() / "link.mp4");
  ProjectText project;
  project.videoTrack = ClipText("stills.xml", "0", "1000", "<key>SourceType</key><integer>4</integer>");
  project.audioTrack = ClipText("sound.wav", "0", "1000");
  project.moreOutput = "<key>PainterEffect</key><string>painter.xml</string>";
  for (const char* output :
       {"painter.xml", "still.png", "stills.xml", "sound.wav", "project.vrx", "link.mp4"}) {
    project.output = output;
    SetProject(project);
    const std::string before = folder.Read(output);
    RecordingCallback reports;
    wrapper->SetCallback(&reports);
    wrapper->StartRender();
    reports.WaitForEnd();
    EXPECT_EQ(reports.GetReports().back(), "error 8003") << output;
    EXPECT_EQ(folder.Read(output), before) << output;
    Release();
    ASSERT_EQ(VRXWrapper::CreateVRXWrapper(true, &wrapper), 0);
  }
  EXPECT_THAT(script->calls, testing::Not(testing::Contains("CreateSequence")));
}

TEST_F(WrapperTest, ProjectWithoutAFrameLengthIsReported) {
  ProjectText project;
  project.video = "<key>Width</key><integer>640</integer>";
  SetProject(project);
  EXPECT_THAT(Render(), ElementsAre("start", "error 8003"));
  EXPECT_THAT(script->calls, ElementsAre("CreateVRX"));
}

TEST_F(WrapperTest, ProjectWithoutVideoSettingsIsReported) {
  ProjectText project;
  project.video.clear();
  SetProject(project);
  EXPECT_THAT(Render(), ElementsAre("start", "error 8003"));
}

TEST_F(WrapperTest, RenderWithoutAnyProjectIsReported) {
  EXPECT_THAT(Render(), ElementsAre("start", "error 8003"));
}

TEST(ProgressFilterTest, ChangesPassAtOnceAndRepeatsWaitAlsoWhileTheClockWraps) {
  vrx::render::ProgressFilter filter(1000);
  EXPECT_FALSE(filter.Passes(0, 1200));
  EXPECT_TRUE(filter.Passes(0, 1201));
  EXPECT_TRUE(filter.Passes(1, 1201));
  EXPECT_TRUE(filter.Passes(0, 1201));
  EXPECT_FALSE(filter.Passes(0, 1401));
  EXPECT_TRUE(filter.Passes(0, 1402));
  EXPECT_TRUE(vrx::render::ProgressFilter(0xFFFFFFF0).Passes(0, 0xFFFFFFF1));
}

}  // namespace
