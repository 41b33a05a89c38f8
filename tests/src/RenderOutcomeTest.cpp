// Every outcome of a render, as the host hears it.
#include <gmock/gmock.h>

#include "tests/src/WrapperFixture.h"

namespace {

using testing::ElementsAre;
using Heard = std::vector<std::string>;

constexpr auto kSourceMissing = static_cast<std::int32_t>(VRXEngineSourceMissing);
constexpr auto kDiskFull = static_cast<std::int32_t>(VRXEngineDiskFull);
constexpr std::int32_t kOther = static_cast<std::int32_t>(0x80000001);

struct Outcome {
  const char* name;
  std::int32_t createSequence;
  std::vector<ScriptedSlice> slices;
  std::int32_t releaseSequence;
  Heard heard;
};

class RenderOutcomeTest : public WrapperTest, public testing::WithParamInterface<Outcome> {};

TEST_P(RenderOutcomeTest, HostHearsItInOrderAndOnce) {
  const Outcome& outcome = GetParam();
  script->createSequence = outcome.createSequence;
  script->slices = outcome.slices;
  script->releaseSequence = outcome.releaseSequence;
  LoadProject();
  wrapper->StartRender();
  callback.WaitForEnd();
  wrapper->Release();
  wrapper = nullptr;
  EXPECT_EQ(callback.Heard(), outcome.heard);
}

INSTANTIATE_TEST_SUITE_P(
    Outcomes, RenderOutcomeTest,
    testing::Values(
        Outcome{"RanToTheEnd",
                0,
                {{.processed = 50}, {.processed = 100, .ends = true}},
                0,
                {"start", "50", "100", "end"}},
        Outcome{"UnknownTotalCountsAsNothingDone",
                0,
                {{.processed = 5, .total = 0, .ends = true}},
                0,
                {"start", "end"}},
        Outcome{"ProgressMayGoBack",
                0,
                {{.processed = 50}, {.processed = 40}, {.processed = 100, .ends = true}},
                0,
                {"start", "50", "40", "100", "end"}},
        Outcome{"LargeTotalsDoNotOverflow",
                0,
                {{.processed = 3'000'000'000, .total = 6'000'000'000, .ends = true}},
                0,
                {"start", "50", "end"}},
        Outcome{"SequenceFails", kOther, {{}}, 0, {"start", "error 8003"}},
        Outcome{"SequenceMissesASource", kSourceMissing, {{}}, 0, {"start", "error 8111"}},
        Outcome{"SequenceFindsDiskFull", kDiskFull, {{}}, 0, {"start", "error 8109"}},
        Outcome{"ExecuteFails", 0, {{.processed = 30}, {.result = kOther}}, 0, {"start", "30", "error 8003"}},
        Outcome{"ExecuteFindsDiskFull",
                0,
                {{.processed = 30}, {.result = kDiskFull}},
                0,
                {"start", "30", "error 8109"}},
        Outcome{"ExecuteFailsAndSoDoesTheRelease",
                0,
                {{.result = kSourceMissing}},
                kOther,
                {"start", "error 8111"}},
        Outcome{
            "ReleaseFails", 0, {{.processed = 100, .ends = true}}, kDiskFull, {"start", "100", "error 8109"}},
        Outcome{"EngineThrows", 0, {{.processed = 10}, {.throws = true}}, 0, {"start", "10", "error 8003"}}),
    [](const auto& test) { return test.param.name; });

TEST_F(WrapperTest, EngineInstanceThatCannotBeMadeAgainFailsTheSecondRender) {
  LoadProject();
  wrapper->StartRender();
  callback.WaitForEnd();  // the end releases the instance
  script->createEngine = kDiskFull;
  RecordingCallback second;
  wrapper->SetCallback(&second);
  // The first render's thread may still be leaving; a refused start would leave nothing to wait for.
  while (second.Heard().empty()) wrapper->StartRender();
  second.WaitForEnd();
  wrapper->Release();
  wrapper = nullptr;
  const std::vector<std::string> heard = second.Heard();
  EXPECT_THAT(std::vector(heard.begin(), heard.begin() + 2), ElementsAre("start", "error 8109"));
}

TEST_F(WrapperTest, ThrowingCallbackEndsTheRenderAsAnError) {
  callback.onProgress = [](std::uint32_t) { throw std::runtime_error("host"); };
  script->slices = {{.processed = 10}};
  LoadProject();
  wrapper->StartRender();
  EXPECT_THAT(callback.WaitForEnd(), ElementsAre("start", "10", "error 8003"));
}

struct UnusableProject {
  const char* name;
  std::string text;
};

class UnusableProjectTest : public WrapperTest, public testing::WithParamInterface<UnusableProject> {};

TEST_P(UnusableProjectTest, StartRenderReportsIt) {
  const std::string path = folder.Write("project.vrx", GetParam().text);
  wrapper->SetProjectFile(XpNarrowString(path).ToWide());
  wrapper->StartRender();
  EXPECT_THAT(callback.WaitForEnd(), ElementsAre("start", "error 8003"));
  EXPECT_THAT(script->calls, ElementsAre("CreateVRX"));
}

std::string WithoutVideoSettings() {
  ProjectText project;
  project.video.clear();
  return project.Text();
}

std::string WithoutFrameLength() {
  ProjectText project;
  project.video = "<key>Width</key><integer>640</integer><key>Height</key><integer>360</integer>";
  return project.Text();
}

INSTANTIATE_TEST_SUITE_P(Projects, UnusableProjectTest,
                         testing::Values(UnusableProject{"Empty", ""}, UnusableProject{"NotXml", "hello"},
                                         UnusableProject{"NoPlist", "<?xml version=\"1.0\"?><movie/>"},
                                         UnusableProject{"NoVideoSettings", WithoutVideoSettings()},
                                         UnusableProject{"NoFrameLength", WithoutFrameLength()}),
                         [](const auto& test) { return test.param.name; });

TEST_F(WrapperTest, RenderWithoutAnyProjectReportsIt) {
  wrapper->StartRender();
  EXPECT_THAT(callback.WaitForEnd(), ElementsAre("start", "error 8003"));
}

}  // namespace
