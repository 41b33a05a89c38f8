// What a user is left with when something goes wrong: a clear line, the right status, and no half movie.
#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "samples/clipmaker/PatternClip.h"
#include "tests/render/VrxProcess.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::HasSubstr;
using vrx::test_support::WritePatternClip;

constexpr const char* kOlderMovie = "an older movie";

class RenderFaultTest : public testing::Test {
 protected:
  RenderFaultTest() {
    WritePatternClip((folder.Path() / "a.mp4").string(), {.frames = 100, .hasSound = true});
    folder.Write("out.mp4", kOlderMovie);
    project.videoTrack = ClipText("a.mp4", "0", "4000");
    project.video =
        "<key>Width</key><integer>320</integer><key>Height</key><integer>192</integer>"
        "<key>TimeValue</key><integer>1</integer><key>TimeScale</key><integer>25</integer>"
        "<key>AverageBitrate</key><integer>4000000</integer>";
  }

  VrxResult Render(VrxCall call = {}) {
    call.arguments = {"render", folder.Write("p.vrx", project.Text()), "--progress", "json"};
    return RunVrx(call);
  }
  /// The older movie stands, and nothing lies about beside it.
  void ExpectNothingLeft(std::ptrdiff_t files = 3) {
    EXPECT_EQ(folder.Read("out.mp4"), kOlderMovie);
    EXPECT_EQ(folder.Count(), files);
  }

  ProjectText project;
  TempFolder folder;
};

TEST_F(RenderFaultTest, UnusableSourceIsNamedAndCostsNothing) {
  WritePatternClip((folder.Path() / "cut.mp4").string(), {.frames = 100});
  std::filesystem::resize_file(folder.Path() / "cut.mp4", 2000);
  folder.Write("text.mp4", "this is no movie");
  folder.Write("empty.mp4", "");
  std::filesystem::create_directory(folder.Path() / "folder.mp4");
  struct Case {
    const char* source;
    const char* code;
  };
  for (const Case& c : {Case{"missing.mp4", "\"code\":33041"}, Case{"cut.mp4", "\"code\":32771"},
                        Case{"text.mp4", "\"code\":32771"}, Case{"empty.mp4", "\"code\":32771"},
                        Case{"folder.mp4", "\"code\":32771"}}) {
    project.videoTrack = ClipText("a.mp4", "0", "1000") + ClipText(c.source, "0", "1000");
    const VrxResult result = Render();
    EXPECT_EQ(result.status, 1) << c.source;
    EXPECT_THAT(result.output, HasSubstr(c.code)) << c.source;
    EXPECT_THAT(result.output, HasSubstr(c.source));
    ExpectNothingLeft(7);
  }
}

TEST_F(RenderFaultTest, SourceThatIsCutShortStillRenders) {
  // A transport stream stays readable as far as it goes.
  WritePatternClip((folder.Path() / "cut.ts").string(), {.frames = 100, .codec = "mpeg2video"});
  const auto size = std::filesystem::file_size(folder.Path() / "cut.ts");
  std::filesystem::resize_file(folder.Path() / "cut.ts", size / 2);
  project.videoTrack = ClipText("cut.ts", "0", "4000");
  EXPECT_EQ(Render().status, 0);
}

TEST_F(RenderFaultTest, OutputThatCannotBeWrittenIsNamed) {
  project.output = "none/out.mp4";
  VrxResult result = Render();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("none"));
  std::filesystem::create_directory(folder.Path() / "taken.mp4");
  project.output = "taken.mp4";
  result = Render();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("taken.mp4"));
  ExpectNothingLeft(4);
  if (geteuid() == 0) return;  // permissions do not bind root
  std::filesystem::create_directory(folder.Path() / "locked");
  chmod((folder.Path() / "locked").c_str(), 0500);
  project.output = "locked/out.mp4";
  EXPECT_EQ(Render().status, 1);
}

TEST_F(RenderFaultTest, FullDiskIsTold) {
  const VrxResult result = Render({.fileSizeLimit = 20000});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("\"code\":33033"));
  ExpectNothingLeft();
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
  project.videoTrack.clear();
  for (int i = 0; i < 50; ++i) project.videoTrack += ClipText("a.mp4", "0", "4000");
  for (const int percent : {0, 50, 95}) {
    const VrxResult result = Render(SignalAt(percent, SIGINT));
    EXPECT_EQ(result.status, 130) << percent;
    EXPECT_THAT(result.output, HasSubstr("\"event\":\"cancelled\"")) << percent;
    ExpectNothingLeft();
  }
}

TEST_F(RenderFaultTest, KilledRenderLeavesTheOlderMovieAndTheNextOneWorks) {
  project.videoTrack.clear();
  for (int i = 0; i < 20; ++i) project.videoTrack += ClipText("a.mp4", "0", "4000");
  EXPECT_EQ(Render(SignalAt(30, SIGKILL)).status, -SIGKILL);
  EXPECT_EQ(folder.Read("out.mp4"), kOlderMovie);
  project.videoTrack = ClipText("a.mp4", "0", "1000");
  EXPECT_EQ(Render().status, 0);
  EXPECT_NE(folder.Read("out.mp4"), kOlderMovie);
}

std::string Repeat(const std::string& text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

TEST_F(RenderFaultTest, UnreadableDocumentEndsInAClearLine) {
  const std::string documents[] = {"", "hello", "<?xml version=\"1.0\"?><movie/>",
                                   "<plist>" + Repeat("<array>", 300000),
                                   "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><dict/></plist>"};
  for (const std::string& document : documents) {
    const std::string path = folder.Write("p.vrx", document);
    const VrxResult render = RunVrx({{"render", path}});
    EXPECT_EQ(render.status, 1);
    EXPECT_THAT(render.errors, HasSubstr("render failed (8003): error: " + path));
    const VrxResult check = RunVrx({{"check", path}});
    EXPECT_EQ(check.status, 1);
    EXPECT_THAT(check.output, HasSubstr(path));
    ExpectNothingLeft();
  }
}

TEST_F(RenderFaultTest, MissingEngineIsNamed) {
  const std::string program = (folder.Path() / "vrx").string();
  std::filesystem::copy_file(VRX_PROGRAM, program);
  std::filesystem::copy_file(VRX_LIBRARY, folder.Path() / std::filesystem::path(VRX_LIBRARY).filename());
  VrxResult result =
      RunVrx({.arguments = {"render", folder.Write("p.vrx", project.Text())}, .program = program});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("VRXEngine.so cannot be loaded"));
  std::filesystem::copy_file(INCOMPLETE_ENGINE_PATH, folder.Path() / "VRXEngine.so");
  result = RunVrx({.arguments = {"check", (folder.Path() / "p.vrx").string()}, .program = program});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("lacks the function VRX_SetSTPVSetting"));
}

TEST(CommandLineTest, WrongUseIsTold) {
  EXPECT_EQ(RunVrx({{}}).status, 2);
  EXPECT_EQ(RunVrx({{"render"}}).status, 2);
  EXPECT_EQ(RunVrx({{"render", "a", "--progress", "loud"}}).status, 2);
  EXPECT_EQ(RunVrx({{"paint", "a"}}).status, 2);
  EXPECT_EQ(RunVrx({{"help", "paint"}}).status, 2);
  EXPECT_EQ(RunVrx({{"help", "render"}}).status, 0);
  EXPECT_THAT(RunVrx({{"--version"}}).output, HasSubstr("vrx "));
  const VrxResult missing = RunVrx({{"render", "/no/such.vrx"}});
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.errors, HasSubstr("/no/such.vrx: does not exist"));
}

}  // namespace
