// How the wrapper behaves over its life: what it needs, cancel, second calls, release at awkward moments.
#include <atomic>
#include <cstdlib>
#include <thread>

#include <gmock/gmock.h>
#include <sys/wait.h>

#include "tests/foundation/ScopedVariable.h"
#include "tests/src/WrapperFixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST_F(WrapperTest, FactoryGivesTheSameWrapperWithoutLosingTheEngine) {
  IVRXWrapper* again = nullptr;
  EXPECT_EQ(VRXWrapper::CreateVRXWrapper(false, &again), 0);
  EXPECT_EQ(again, wrapper);
  EXPECT_EQ(script->liveEngines, 1);
}

TEST_F(WrapperTest, NullCallbackKeepsTheEarlierOne) {
  wrapper->SetCallback(nullptr);
  LoadProject();
  EXPECT_THAT(Render(), ElementsAre("start", "100", "end"));
}

TEST_F(WrapperTest, CancelBeforeStartSkipsTheWorkButStillEnds) {
  LoadProject();
  wrapper->Cancel();
  EXPECT_THAT(Render(), ElementsAre("start", "end"));
  EXPECT_THAT(script->calls, Contains("CreateSequence"));
  EXPECT_THAT(script->calls, Contains("ReleaseSequence"));
  EXPECT_THAT(script->calls, Not(Contains("Execute")));
}

TEST_F(WrapperTest, CancelFromAnotherThreadEndsARunningRender) {
  script->slices = {{.processed = 10}};  // goes on for ever
  std::atomic<bool> running = false;
  script->onSlice = [&](std::size_t) { running = true; };
  LoadProject();
  wrapper->StartRender();
  while (!running) std::this_thread::yield();
  wrapper->Cancel();
  EXPECT_EQ(callback.WaitForEnd().back(), "end");
}

TEST_F(WrapperTest, SecondStartAndNewProjectAreRefusedWhileARenderRuns) {
  script->slices = {{.processed = 10}};
  std::atomic<int> slices = 0;
  script->onSlice = [&](std::size_t) { ++slices; };
  LoadProject();
  wrapper->StartRender();
  while (slices == 0) std::this_thread::yield();
  const VRXTimeline* timeline = script->timeline;
  wrapper->StartRender();
  wrapper->SetProjectFile(u"/nowhere/else.vrx");
  EXPECT_EQ(timeline->video.count, 1u);
  wrapper->Cancel();
  callback.WaitForEnd();
  Release();
  EXPECT_EQ(std::count(script->calls.begin(), script->calls.end(), "CreateSequence"), 1);
}

TEST_F(WrapperTest, ReleaseWaitsForTheRender) {
  script->slices = {{.processed = 50}, {.processed = 100, .ends = true}};
  LoadProject();
  wrapper->StartRender();
  Release();
  EXPECT_EQ(callback.GetReports().back(), "end");
}

TEST_F(WrapperTest, ReleaseFromACallbackEndsTheRenderWithoutFurtherCalls) {
  script->slices = {{.processed = 10}};
  std::atomic<bool> released = false;
  callback.onProgress = [&](std::uint32_t) {
    wrapper->Release();
    released = true;
  };
  LoadProject();
  wrapper->StartRender();
  while (!released) std::this_thread::yield();
  wrapper = nullptr;
  // The old manager goes on its own thread; a new one can be had at once.
  while (script->liveSequences != 0 || script->liveEngines != 0) std::this_thread::yield();
  EXPECT_THAT(callback.GetReports(), ElementsAre("start", "10"));
  ASSERT_EQ(VRXWrapper::CreateVRXWrapper(true, &wrapper), 0);
}

TEST_F(WrapperTest, SmartRenderingAsksTheEngineWithBothValues) {
  EXPECT_TRUE(wrapper->IsSmartRenderingCapable(7, 9));
  EXPECT_THAT(script->calls, Contains("IsSmartRenderingCapable 7 9"));
  script->smartRendering = 1;
  EXPECT_FALSE(wrapper->IsSmartRenderingCapable(7, 9));
}

TEST_F(WrapperTest, CalibrationReachesTheEngineForASourceThatNeedsIt) {
  const ScopedVariable data("XDG_CONFIG_HOME", folder.Path());
  std::filesystem::create_directories(folder.Path() / "Kelo Corporation/LBR");
  folder.Write("Kelo Corporation/LBR/CalibrationData.dat", std::string(3150, '\0'));
  for (const auto& [sourceType, blocks] : {std::pair{"2", 0u}, std::pair{"1", 1u}}) {
    RecordingCallback reports;
    wrapper->SetCallback(&reports);
    ProjectText project;
    project.videoTrack = ClipText("a.mp4", "0", "1000",
                                  std::string("<key>SourceType</key><integer>") + sourceType + "</integer>");
    SetProject(project);
    wrapper->StartRender();
    reports.WaitForEnd();
    wrapper->Release();
    EXPECT_EQ(script->gpuBlocks.size(), blocks) << sourceType;
    ASSERT_EQ(VRXWrapper::CreateVRXWrapper(true, &wrapper), 0);
  }
}

TEST_F(WrapperTest, SpecificationDecidesTheKindOfMovieAndItsTimeZone) {
  const ScopedVariable zone("TZ", "EAST-9");
  tzset();
  struct Case {
    const char* inDocument;
    std::int32_t systemType;
    bool hasTimeZone;
  };
  for (const Case& c : {Case{"1", VRXSystemMp4, true}, Case{"2", VRXSystemMp4Broadcast, true},
                        Case{"3", VRXSystemMp4Broadcast, true}, Case{"4", VRXSystemByExtension, false}}) {
    SCOPED_TRACE(c.inDocument);
    ProjectText project;
    project.videoTrack = ClipText("a.mp4", "0", "1000");
    project.video.replace(project.video.rfind("1</integer>"), 1, c.inDocument);
    SetProject(project);
    RecordingCallback reports;
    wrapper->SetCallback(&reports);
    wrapper->StartRender();
    reports.WaitForEnd();  // the records stay until Release
    EXPECT_EQ(script->output->systemType, c.systemType);
    const VRXMetaDataSetting* metaData = script->output->metaData;
    ASSERT_EQ(metaData != nullptr, c.hasTimeZone);
    if (metaData != nullptr) {
      ASSERT_EQ(metaData->count, 1u);
      const VRXMetaData& item = *metaData->items[0];
      EXPECT_EQ(item.kind, VRXMetaData::kTimeZone);
      EXPECT_EQ(item.language, VRXMetaData::kUndeterminedLanguage);
      ASSERT_EQ(item.size, 2u);
      constexpr int kMinutesEast = 540;
      EXPECT_EQ(item.data[0], kMinutesEast >> 8);
      EXPECT_EQ(item.data[1], 0);
    }
    Release();
    ASSERT_EQ(VRXWrapper::CreateVRXWrapper(true, &wrapper), 0);
  }
}

int RunIn(const std::filesystem::path& folder) {
  const int status = std::system((folder / "host").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(EngineBindingTest, FactoryFailsWithoutACompleteEngineBesideTheHost) {
  const TempFolder folder;
  std::filesystem::copy_file(FACTORY_PROBE_PATH, folder.Path() / "host");
  EXPECT_EQ(RunIn(folder.Path()), 1) << "no engine";
  folder.Write("VRXEngine.so", "not a library");
  EXPECT_EQ(RunIn(folder.Path()), 1) << "not a library";
  const auto overwrite = std::filesystem::copy_options::overwrite_existing;
  std::filesystem::copy_file(INCOMPLETE_ENGINE_PATH, folder.Path() / "VRXEngine.so", overwrite);
  EXPECT_EQ(RunIn(folder.Path()), 1) << "a function is missing";
  std::filesystem::copy_file(SCRIPTED_ENGINE_PATH, folder.Path() / "VRXEngine.so", overwrite);
  EXPECT_EQ(RunIn(folder.Path()), 0) << "complete";
}

}  // namespace
