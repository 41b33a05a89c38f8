// When something goes wrong the user gets a clear line, the right status, and no half-written movie.
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
  /// The older movie is unchanged, and no other file is left.
  void ExpectNothingLeft(std::ptrdiff_t files = 3) const {
    EXPECT_EQ(folder.Read("out.mp4"), kOlderMovie);
    EXPECT_EQ(folder.Count(), files);
  }
  void UseClip(int times) {
    project.videoTrack.clear();
    for (int i = 0; i < times; ++i) project.videoTrack += ClipText("a.mp4", "0", "4000");
  }
};

TEST_F(RenderFaultTest, UnusableSourceIsNamedAndLeavesNoFile) {
  std::filesystem::resize_file(Path(WriteClip("cut.mp4", {.frames = 100})), 2000);
  folder.Write("text.mp4", "this is no movie");
  folder.Write("empty.mp4", "");
  std::filesystem::create_directory(Path("folder.mp4"));
  for (const char* source : {"missing.mp4", "cut.mp4", "text.mp4", "empty.mp4", "folder.mp4"}) {
    project.videoTrack = ClipText("a.mp4", "0", "1000") + ClipText(source, "0", "1000");
    const VrxResult result = Render();
    EXPECT_EQ(result.status, 1) << source;
    const bool isMissing = std::string_view(source) == "missing.mp4";
    EXPECT_THAT(result.output, HasSubstr(isMissing ? R"("code":"0x8111")" : R"("code":"0x8003")")) << source;
    EXPECT_THAT(result.output, HasSubstr(Path(source)));
    EXPECT_THAT(result.output, HasSubstr(R"("track":"VideoTrack","clip":2,"key":"SourceFile")")) << source;
    const VrxResult text = RunVrx({.arguments = {"render", Path("p.vrx")}});
    EXPECT_THAT(text.errors, HasSubstr("vrx: render failed (" + std::string(isMissing ? "0x8111" : "0x8003") +
                                       "): " + Path("p.vrx") + ":1: VideoTrack clip 2: SourceFile "));
    EXPECT_THAT(text.errors, HasSubstr(Path(source)));
    EXPECT_THAT(RunVrx({.arguments = {"check", Path("p.vrx")}}).output,
                HasSubstr("error: " + Path("p.vrx") + ":1: VideoTrack clip 2: SourceFile " + Path(source)));
    ExpectNothingLeft(7);
  }
}

TEST_F(RenderFaultTest, OutputThatCannotBeWrittenIsNamed) {
  std::filesystem::create_directory(Path("taken.mp4"));
  std::filesystem::create_directory(Path("locked"));
  chmod(Path("locked").c_str(), 0500);
  for (const char* output : {"none/out.mp4", "taken.mp4", "locked/out.mp4"}) {
    if (geteuid() == 0 && std::string_view(output) == "locked/out.mp4")
      continue;  // root may write everywhere
    project.output = output;
    const VrxResult result = Render();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr(output));
    ExpectNothingLeft(5);
  }
}

TEST_F(RenderFaultTest, FullDiskIsNamed) {
  project.output = "whole.mp4";
  ASSERT_EQ(Render().status, 0);
  const auto whole = static_cast<long>(std::filesystem::file_size(Path("whole.mp4")));
  std::filesystem::remove(Path("whole.mp4"));
  project.output = "out.mp4";
  // The first limit is met in the header, the last one only in the last bytes of the file.
  for (const long limit : {16L, whole / 2, whole - 4}) {
    const VrxResult result = Render({.fileSizeLimit = limit});
    EXPECT_EQ(result.status, 1) << limit;
    EXPECT_THAT(result.output, HasSubstr(R"("code":"0x8109")")) << limit;
    ExpectNothingLeft();
  }
}

TEST_F(RenderFaultTest, OutputThatIsAnInputIsRefused) {
  const std::string clip = folder.Read("a.mp4");
  std::filesystem::create_symlink("a.mp4", Path("link.mp4"));
  for (const char* output : {"a.mp4", "link.mp4", "p.vrx"}) {
    project.output = output;
    const VrxResult result = Render();
    EXPECT_EQ(result.status, 1) << output;
    EXPECT_THAT(result.output, HasSubstr(R"("key":"OutputFilePath")"));
    EXPECT_THAT(result.output, HasSubstr("and would be overwritten"));
    EXPECT_EQ(folder.Read("a.mp4"), clip);
    ExpectNothingLeft(4);
  }
}

TEST_F(RenderFaultTest, OutputThatNobodyReadsEndsInAnErrorWithoutLeftovers) {
  UseClip(20);
  VrxResult result = Render({.linesRead = 2});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("the output cannot be written"));
  ExpectNothingLeft();
  for (const char* output : {"/dev/full", VrxCall::kClosed}) {
    for (const auto& arguments : {std::vector<std::string>{"check", Path("p.vrx")},
                                  {"check", Path("p.vrx"), "--json"},
                                  {"help"},
                                  {"render", Path("p.vrx"), "--progress", "json"}}) {
      result = RunVrx({.arguments = arguments, .output = output});
      EXPECT_EQ(result.status, 1) << output << testing::PrintToString(arguments);
      EXPECT_THAT(result.errors, HasSubstr("the output cannot be written"));
    }
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
  const std::string program = CopyVrx(folder.Path());
  VrxResult result = RunVrx({.arguments = {"render", WriteProject()}, .program = program});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("VRXEngine.so cannot be loaded"));
  std::filesystem::copy_file(INCOMPLETE_ENGINE_PATH, folder.Path() / "VRXEngine.so");
  result = RunVrx({.arguments = {"check", Path("p.vrx")}, .program = program});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("lacks the function VRX_SetSTPVSetting"));
}

TEST_F(RenderFaultTest, MovieThatIsNotWhatTheProjectAsksForIsAnError) {
  const std::string program = CopyVrx(folder.Path());
  std::filesystem::copy_file(SHORT_ENGINE_PATH, folder.Path() / "VRXEngine.so");
  const VrxResult result = RunVrx({.arguments = {"render", WriteProject()}, .program = program});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("out.mp4: 7 frames, 0.280 s of movie"));
  EXPECT_THAT(result.errors, HasSubstr("the movie has 7 frames, but the project asks for 100"));
}

TEST(CommandLineTest, ControlCharactersOfNamesStayOffTheTerminal) {
  const std::string name = "/no/\x1b[2J\n\x7f\xc2\x9b\xe2\x80\xae\xe2\x81\xa6\xffä.vrx";
  const std::string masked = "/no/?[2J?????\xffä.vrx: does not exist";
  EXPECT_THAT(RunVrx({{"check", name}}).output, HasSubstr(masked));
  EXPECT_THAT(RunVrx({{"render", name}}).errors, HasSubstr(masked));
  EXPECT_THAT(RunVrx({{"check", name, "--json"}}).output,
              HasSubstr("\\u001b[2J\\n\x7f\xc2\x9b\xe2\x80\xae\xe2\x81\xa6\xef\xbf\xbdä.vrx"));
}

TEST(CommandLineTest, WrongUseIsNamedInOneLineWithWhatWasMeant) {
  struct Case {
    std::vector<std::string> arguments;
    std::string line;
  };
  for (const Case& c :
       {Case{{}, "vrx needs a command; vrx --help shows the use"},
        Case{{"render"}, "PROJECT is required; vrx render --help shows the use"},
        Case{{"paint", "a"}, "there is no command paint; vrx --help shows the use"},
        Case{{"rendr", "--help"}, "there is no command rendr; did you mean render? vrx --help shows the use"},
        Case{{"gps", "shw"}, "there is no command shw; did you mean show? vrx gps --help shows the use"},
        Case{{"help", "chek"}, "there is no command chek; did you mean check?"},
        Case{
            {"check", "a", "--jsn"},
            "The following argument was not expected: --jsn; did you mean --json? vrx check --help shows the "
            "use"},
        Case{
            {"render", "a", "--progress", "jsn"},
            "--progress: jsn is none of auto, bar, json and none; did you mean json? vrx render --help shows "
            "the use"},
        Case{{"frame", "a", "-o", "b", "--time", "1:02:03,5"},
             "--time: 1:02:03,5 is no time such as 12.5, 1:02.5, 00:01:02 or 310f; did you mean 3723.5? vrx "
             "frame --help shows "
             "the use"},
        Case{{"frame", "a", "-o", "b", "--time", "1500ms"},
             "--time: 1500ms is no time such as 12.5, 1:02.5, 00:01:02 or 310f; did you mean 1.5? vrx frame "
             "--help shows the "
             "use"},
        Case{
            {"frame", "a", "-o", "b", "--time", "soon"},
            "--time: soon is no time such as 12.5, 1:02.5, 00:01:02 or 310f; vrx frame --help shows the use"},
        Case{{"frame", "a", "-o", "b", "--frame", "-1"},
             "--frame: -1 is no whole number from 0 on; vrx frame --help shows the use"}}) {
    const VrxResult result = RunVrx({c.arguments});
    EXPECT_EQ(result.errors, "vrx: " + c.line + "\n");
    EXPECT_EQ(result.status, 2) << c.line;
  }
  EXPECT_EQ(RunVrx({{"help", "render"}}).status, 0);
  EXPECT_THAT(RunVrx({{"--version"}}).output, HasSubstr("vrx "));
  const VrxResult missing = RunVrx({{"render", "/no/such.vrx"}});
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.errors, HasSubstr("/no/such.vrx: does not exist"));
}

}  // namespace
