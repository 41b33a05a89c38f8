// What a user is left with when something goes wrong: a clear line, the right status, and no half movie.
#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/render/RenderFixture.h"

namespace {

using testing::HasSubstr;

constexpr const char* kOlderMovie = "an older movie";

class RenderFaultTest : public RenderFixture {
 protected:
  RenderFaultTest() : RenderFixture(320, 192) {
    project.videoTrack = ClipText(WriteClip("a.mp4", {.frames = 100, .hasSound = true}), "0", "4000");
    folder.Write("out.mp4", kOlderMovie);
  }

  VrxResult Render(VrxCall call = {}) const {
    call.arguments = {"render", WriteProject(), "--progress", "json"};
    return RunVrx(call);
  }
  /// The older movie stands, and nothing lies about beside it.
  void ExpectNothingLeft(std::ptrdiff_t files = 3) const {
    EXPECT_EQ(folder.Read("out.mp4"), kOlderMovie);
    EXPECT_EQ(folder.Count(), files);
  }
  void UseClip(int times) {
    project.videoTrack.clear();
    for (int i = 0; i < times; ++i) project.videoTrack += ClipText("a.mp4", "0", "4000");
  }
};

TEST_F(RenderFaultTest, UnusableSourceIsNamedAndCostsNothing) {
  std::filesystem::resize_file(Path(WriteClip("cut.mp4", {.frames = 100})), 2000);
  folder.Write("text.mp4", "this is no movie");
  folder.Write("empty.mp4", "");
  std::filesystem::create_directory(Path("folder.mp4"));
  for (const char* source : {"missing.mp4", "cut.mp4", "text.mp4", "empty.mp4", "folder.mp4"}) {
    project.videoTrack = ClipText("a.mp4", "0", "1000") + ClipText(source, "0", "1000");
    const VrxResult result = Render();
    EXPECT_EQ(result.status, 1) << source;
    const bool isMissing = std::string_view(source) == "missing.mp4";
    EXPECT_THAT(result.output, HasSubstr(isMissing ? "\"code\":33041" : "\"code\":32771")) << source;
    EXPECT_THAT(result.output, HasSubstr(source));
    ExpectNothingLeft(7);
  }
}

TEST_F(RenderFaultTest, OutputThatCannotBeWrittenIsNamed) {
  std::filesystem::create_directory(Path("taken.mp4"));
  std::filesystem::create_directory(Path("locked"));
  chmod(Path("locked").c_str(), 0500);
  for (const char* output : {"none/out.mp4", "taken.mp4", "locked/out.mp4"}) {
    if (geteuid() == 0 && std::string_view(output) == "locked/out.mp4")
      continue;  // nothing is locked to root
    project.output = output;
    const VrxResult result = Render();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr(output));
    ExpectNothingLeft(5);
  }
}

TEST_F(RenderFaultTest, FullDiskIsTold) {
  project.output = "whole.mp4";
  ASSERT_EQ(Render().status, 0);
  const auto whole = static_cast<long>(std::filesystem::file_size(Path("whole.mp4")));
  std::filesystem::remove(Path("whole.mp4"));
  project.output = "out.mp4";
  // The first limit strikes at the header, the last only in the last bytes of the file.
  for (const long limit : {16L, whole / 2, whole - 4}) {
    const VrxResult result = Render({.fileSizeLimit = limit});
    EXPECT_EQ(result.status, 1) << limit;
    EXPECT_THAT(result.output, HasSubstr("\"code\":33033")) << limit;
    ExpectNothingLeft();
  }
}

/// Sends `signal` at the first progress of at least `percent`.
VrxCall SignalAt(int percent, int signal) {
  return {.onLine = [=, sent = false](const std::string& line, pid_t process) mutable {
    const auto at = line.find("\"percent\":");
    const bool started = line.find("\"start\"") != std::string::npos;
    const int now = at == std::string::npos ? (started ? 0 : -1) : std::stoi(line.substr(at + 10));
    if (sent || now < percent) return;
    sent = true;
    kill(process, signal);
  }};
}

TEST_F(RenderFaultTest, CancelLeavesTheOlderMovie) {
  UseClip(50);
  for (const int percent : {0, 50, 95}) {
    const VrxResult result = Render(SignalAt(percent, SIGINT));
    EXPECT_EQ(result.status, 130) << percent;
    EXPECT_THAT(result.output, HasSubstr("\"event\":\"cancelled\"")) << percent;
    ExpectNothingLeft();
  }
}

TEST_F(RenderFaultTest, KilledRenderLeavesTheOlderMovieAndTheNextOneWorks) {
  UseClip(20);
  EXPECT_EQ(Render(SignalAt(30, SIGKILL)).status, -SIGKILL);
  EXPECT_EQ(folder.Read("out.mp4"), kOlderMovie);
  UseClip(1);
  EXPECT_EQ(Render().status, 0);
  EXPECT_NE(folder.Read("out.mp4"), kOlderMovie);
}

TEST_F(RenderFaultTest, MissingEngineIsNamed) {
  const std::string program = Path("vrx");
  std::filesystem::copy_file(VRX_PROGRAM, program);
  std::filesystem::copy_file(VRX_LIBRARY, folder.Path() / std::filesystem::path(VRX_LIBRARY).filename());
  VrxResult result = RunVrx({.arguments = {"render", WriteProject()}, .program = program});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("VRXEngine.so cannot be loaded"));
  std::filesystem::copy_file(INCOMPLETE_ENGINE_PATH, folder.Path() / "VRXEngine.so");
  result = RunVrx({.arguments = {"check", Path("p.vrx")}, .program = program});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("lacks the function VRX_SetSTPVSetting"));
}

TEST(CommandLineTest, WrongUseIsTold) {
  for (const auto& wrong : {std::vector<std::string>{},
                            {"render"},
                            {"paint", "a"},
                            {"help", "paint"},
                            {"render", "a", "--progress", "loud"}}) {
    EXPECT_EQ(RunVrx({wrong}).status, 2) << testing::PrintToString(wrong);
  }
  EXPECT_EQ(RunVrx({{"help", "render"}}).status, 0);
  EXPECT_THAT(RunVrx({{"--version"}}).output, HasSubstr("vrx "));
  const VrxResult missing = RunVrx({{"render", "/no/such.vrx"}});
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.errors, HasSubstr("/no/such.vrx: does not exist"));
}

}  // namespace
