// Movies in pieces through the command line: plans whose commands render and join them, pieces that are
// refused, and renders that make pieces by themselves. What is copied and what is encoded is said as well.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/render/RenderFixture.h"
#include "tests/src/BasebandText.h"
#include "tests/support/MovieReader.h"

namespace {

using namespace vrx::test_support;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr int kFrames = 600;  // of the clip, at 25 a second

class PiecesTest : public RenderFixture {
 protected:
  PiecesTest() : RenderFixture(160, 96) {
    WriteClip("a.mp4", {.frames = kFrames, .bt601 = true, .hasSound = true});
    project.videoTrack = project.audioTrack = ClipText("a.mp4", "0", "24000");
    project.audio = "<key>Channel</key><integer>2</integer><key>SamplingRate</key><integer>48000</integer>";
    WriteProject();
  }
  VrxResult Run(const std::string& command, Words arguments) const {
    arguments.insert(arguments.begin(), {command, Path("p.vrx")});
    return RunVrx({.arguments = arguments});
  }
  /// The commands of a plan as lists of words, without the program; the last is the join.
  std::vector<Words> Plan(Words arguments) const {
    arguments.insert(arguments.end(), {"--format", "json"});
    const VrxResult result = Run("plan", arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    const auto plan = nlohmann::json::parse(result.output);
    std::vector<Words> commands;
    for (const auto& piece : plan["pieces"]) commands.push_back(piece["command"]);
    commands.push_back(plan["join"]["command"]);
    for (Words& command : commands) command.erase(command.begin());
    return commands;
  }
  void ExpectSameMovie(const std::string& name, const std::string& wanted) const {
    MovieReader movie(Path(name)), other(Path(wanted));
    EXPECT_EQ(movie.RemainingNumbers(), other.RemainingNumbers());
    const MovieSound sound = movie.ReadSound();
    const MovieSound otherSound = other.ReadSound();
    EXPECT_EQ(sound.start, otherSound.start);
    EXPECT_TRUE(sound.samples == otherSound.samples);
    EXPECT_FALSE(sound.samples.empty());
  }
};

std::vector<nlohmann::json> EventsOf(const std::string& output) {
  std::vector<nlohmann::json> events;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) events.push_back(nlohmann::json::parse(line));
  return events;
}

TEST_F(PiecesTest, CommandsOfAPlanMakeTheMovieInAnyOrder) {
  ASSERT_EQ(Run("render", {"-o", Path("whole.mp4"), "--smart", "off"}).status, 0);
  std::vector<Words> commands = Plan({"--pieces", "3", "--smart", "off"});
  ASSERT_EQ(commands.size(), 5u);
  for (const std::size_t piece : {2u, 0u, 3u, 1u}) {
    const VrxResult result = RunVrx({commands[piece]});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr(piece == 0 ? "24.000 s of sound" : "200 frames, 8.000 s of movie"));
  }
  EXPECT_FALSE(fs::exists(Path("out.mp4")));
  const VrxResult joined = RunVrx({commands[4]});
  EXPECT_EQ(joined.status, 0) << joined.errors;
  EXPECT_THAT(joined.output, StartsWith(Path("out.mp4") + ": 600 frames of 4 pieces, joined in "));
  ExpectSameMovie("out.mp4", "whole.mp4");

  commands[4].insert(commands[4].end(), {"--progress", "json"});
  const std::vector<nlohmann::json> events = EventsOf(RunVrx({commands[4]}).output);
  EXPECT_EQ(events.front().dump(), R"({"event":"start","output":")" + Path("out.mp4") + R"(","pieces":4})");
  EXPECT_EQ(events.back()["frames"], kFrames);
  EXPECT_EQ(events.back()["bytes"], fs::file_size(Path("out.mp4")));
}

TEST_F(PiecesTest, TransportStreamHasTheSameSoundFromPieces) {
  ASSERT_EQ(Run("render", {"-o", Path("whole.ts")}).status, 0);
  for (const Words& command : Plan({"--pieces", "2", "-o", Path("out.ts")})) {
    const VrxResult result = RunVrx({command});
    ASSERT_EQ(result.status, 0) << result.errors;
  }
  ExpectSameMovie("out.ts", "whole.ts");
  EXPECT_EQ(MovieReader(Path("out.ts")).Info().audioCodec, "ac3");
}

TEST_F(PiecesTest, PiecesOfAnotherStateAreRefused) {
  const std::vector<Words> commands = Plan({"--pieces", "2", "--crf", "40"});
  const auto expectRefused = [&](const Words& command) {
    const VrxResult result = RunVrx({command});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("the project or its files have changed since the plan was made\n"));
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1);
  };
  Words other = commands[1];
  std::ranges::replace(other, std::string("40"), std::string("41"));
  expectRefused(other);
  EXPECT_EQ(RunVrx({commands[1]}).status, 0);
  fs::last_write_time(Path("a.mp4"), fs::last_write_time(Path("a.mp4")) - std::chrono::seconds(1));
  for (std::size_t piece = 0; piece < 3; ++piece) expectRefused(commands[piece]);
  EXPECT_EQ(folder.Count(), 3);  // clip, project and the piece that was made

  // What keeps a project from being rendered is said in its place.
  fs::remove(Path("a.mp4"));
  EXPECT_THAT(RunVrx({commands[1]}).errors, HasSubstr("VideoTrack clip 1: SourceFile"));
}

TEST_F(PiecesTest, JoinsTakeAllPiecesOfOneMovieOnce) {
  std::vector<Words> commands = Plan({"--pieces", "2"});
  for (std::size_t i = 0; i < 3; ++i) ASSERT_EQ(RunVrx({commands[i]}).status, 0);
  const std::string sound = Path("out.piece-0.mp4"), one = Path("out.piece-1.mp4"),
                    two = Path("out.piece-2.mp4");
  struct Case {
    Words pieces;
    std::string output, line;
  };
  for (const Case& c :
       {Case{{one, two}, "m.mp4", "piece 0 of 2, the sound, is missing"},
        {{sound, one}, "m.mp4", "piece 2 of 2"},
        {{sound, one, two, one}, "m.mp4", "there twice"},
        {{sound, one, Path("a.mp4")}, "m.mp4", "a.mp4 is no piece"},
        {{sound, one, Path("none.mp4")}, "m.mp4", "none.mp4 does not exist"},
        {{sound, one, two}, "out.piece-1.mp4", "is one of the pieces and would be overwritten"}}) {
    Words arguments{"join"};
    arguments.insert(arguments.end(), c.pieces.begin(), c.pieces.end());
    arguments.insert(arguments.end(), {"-o", Path(c.output)});
    const VrxResult result = RunVrx({arguments});
    EXPECT_EQ(result.status, 1) << c.line;
    EXPECT_THAT(result.errors, HasSubstr(c.line));
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
    EXPECT_EQ(folder.Count(), 5);
  }
}

TEST_F(PiecesTest, JobsMakeTheMovieOfOneRenderAndLeaveNothingElse) {
  ASSERT_EQ(Run("render", {"-o", Path("whole.mp4"), "--smart", "off"}).status, 0);
  const VrxResult result =
      Run("render", {"-o", Path("jobs.mp4"), "--smart", "off", "--jobs", "3", "--progress", "json"});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  ExpectSameMovie("jobs.mp4", "whole.mp4");
  EXPECT_EQ(folder.Count(), 4);
  const std::vector<nlohmann::json> events = EventsOf(result.output);
  EXPECT_EQ(events[0]["event"], "start");
  EXPECT_EQ(events[0]["frames"], kFrames);
  EXPECT_EQ(events[1]["event"], "spans");
  int percent = 0;
  for (const auto& event : events) {
    if (event["event"] != "progress") continue;
    EXPECT_GT(event["percent"], percent);
    percent = event["percent"];
  }
  EXPECT_EQ(percent, 100);
  EXPECT_EQ(events.back()["event"], "end");
  EXPECT_EQ(events.back()["frames"], kFrames);
  EXPECT_EQ(events.back()["seconds"], 24.0);
  EXPECT_EQ(events.back()["bytes"], fs::file_size(Path("jobs.mp4")));
}

TEST_F(PiecesTest, JobsCountWhatTheirPiecesCopy) {
  WriteClip("small.mp4", {.width = 80, .height = 48, .frames = kFrames, .hasSound = true});
  project.videoTrack += ClipText("small.mp4", "0", "24000");
  project.audioTrack += ClipText("small.mp4", "0", "24000");
  WriteProject();
  const VrxResult result = Run("render", {"--jobs", "4", "--progress", "json"});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.errors, "");  // in two pieces
  const std::vector<nlohmann::json> events = EventsOf(result.output);
  EXPECT_EQ(events.back()["copiedFrames"], kFrames);
  EXPECT_EQ(events.back()["frames"], 2 * kFrames);
}

TEST_F(PiecesTest, JobsThatEndEarlyLeaveNothing) {
  const Words arguments{"render", Path("p.vrx"), "--smart", "off", "--jobs", "2", "--progress", "json"};
  // The pieces would take minutes.
  Words slow = arguments;
  slow.insert(slow.end(), {"--size", "1920x1152", "--preset", "veryslow"});
  VrxCall call{.arguments = slow};
  call.onLine = [](const std::string& line, pid_t process) {
    if (line.find("\"percent\":1") != line.npos) kill(process, SIGINT);
  };
  const VrxResult cancelled = RunVrx(call);
  EXPECT_EQ(cancelled.status, 130);
  EXPECT_EQ(EventsOf(cancelled.output).back()["event"], "cancelled");
  EXPECT_EQ(folder.Count(), 2);

  EXPECT_EQ(RunVrx({.arguments = arguments, .linesRead = 3}).status, 1);  // its output is closed
  EXPECT_EQ(folder.Count(), 2);

  // Room for the plan, but not for a piece.
  Words large = arguments;
  large.insert(large.end(), {"--crf", "0", "--size", "640x384"});
  const VrxResult failed = RunVrx({.arguments = large, .fileSizeLimit = 150'000});
  EXPECT_EQ(failed.status, 1);
  const nlohmann::json error = EventsOf(failed.output).back();
  EXPECT_EQ(error["event"], "error");
  EXPECT_THAT(std::string(error["cause"]), AllOf(HasSubstr("movie.piece-"), HasSubstr("File too large")));
  EXPECT_EQ(folder.Count(), 2);
}

TEST_F(PiecesTest, JobsRenderInOneGoWherePiecesBringNothing) {
  struct Case {
    Words arguments;
    const char* reason;
  };
  for (const Case& c : {Case{{"--jobs", "1", "--smart", "off"}, "--jobs is 1"},
                        {{"--jobs", "4", "--smart", "auto"}, "pieces would bring nothing"},
                        {{"--jobs", "4", "--range", "0-1"}, "only a range is wanted"}}) {
    Words arguments = c.arguments;
    const VrxResult result = Run("render", arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, std::string("vrx: rendering in one go: ") + c.reason + "\n");
    arguments.emplace_back("--quiet");
    EXPECT_EQ(Run("render", arguments).errors, "");
  }
  const Words overlays{"--overlay-only", "--jobs", "4", "-o", Path("o.mov")};
  EXPECT_THAT(Run("render", overlays).errors, HasSubstr("one go: overlays alone are not joined\n"));
  const Words input{"render", "-", "--smart", "off", "--jobs", "4", "-o", Path("m.mp4")};
  EXPECT_THAT(RunVrx({.arguments = input, .input = project.Text()}).errors,
              HasSubstr("one go: the project comes from standard input\n"));
  const auto size = fs::file_size(Path("a.mp4"));
  const VrxResult onSource = Run("render", {"-o", Path("a.mp4"), "--smart", "off", "--jobs", "2"});
  EXPECT_THAT(onSource.errors, HasSubstr("would be overwritten"));
  EXPECT_EQ(fs::file_size(Path("a.mp4")), size);
  fs::remove(Path("a.mp4"));
  EXPECT_THAT(Run("render", {"--jobs", "4"}).errors, StartsWith("vrx: render failed (0x"));
}

TEST_F(PiecesTest, JobsFailForAMissingPictureUnlessThatIsAllowed) {
  folder.Write("photos.xml", BasebandText(ImageText(7, "none.png", 0, 9)));
  project.videoTrack += ClipText("photos.xml", "0", "400", "<key>SourceType</key><integer>4</integer>");
  WriteProject();
  Words arguments{"--smart", "off", "--jobs", "2"};
  const std::string line = ": " + Path("photos.xml") + ":2: VideoTrack clip 2: ImagePath ";
  const VrxResult failed = Run("render", arguments);
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.errors, AllOf(StartsWith("vrx: error" + line), HasSubstr(": 1 error in it ")));
  arguments.emplace_back("--allow-missing");
  const VrxResult allowed = Run("render", arguments);
  EXPECT_EQ(allowed.status, 0) << allowed.errors;
  EXPECT_THAT(allowed.errors, StartsWith("vrx: warning" + line));
  EXPECT_EQ(std::ranges::count(allowed.errors, '\n'), 2) << allowed.errors;  // of the picture and of the clip
}

TEST_F(PiecesTest, CopiedFramesAreCountedAndWhatIsEncodedHasAReason) {
  const VrxResult copied = Run("render", {});
  EXPECT_THAT(copied.output, HasSubstr("24.000 s of movie, 600 copied (100 %), rendered in"));
  const VrxResult encoded = Run("render", {"--smart", "off"});
  EXPECT_THAT(encoded.output, HasSubstr("24.000 s of movie, rendered in"));
  const std::vector<nlohmann::json> events =
      EventsOf(Run("render", {"--strict", "--progress", "json"}).output);
  EXPECT_EQ(events[1]["event"], "spans");
  EXPECT_EQ(events[1]["copiedFrames"], kFrames);
  EXPECT_EQ(events[1]["spans"][0].dump(),
            R"({"clip":1,"copied":true,"firstFrame":0,"frames":600,"track":"video"})");
  EXPECT_EQ(events.back()["copiedFrames"], kFrames);
  EXPECT_THAT(RunVrx({{"check", Path("p.vrx")}}).output,
              AllOf(HasSubstr("\nPlan     600 of 600 frames (100 %) are copied"),
                    HasSubstr("\nPictures\n  frames 0 to 599, 0.000 s to 24.000 s: copied (a.mp4)\n")));
  const VrxResult required = Run("render", {"--smart", "require", "--size", "80x48"});
  EXPECT_EQ(required.status, 1);
  EXPECT_THAT(required.errors,
              AllOf(HasSubstr("p.vrx: VideoTrack clip 1: SourceFile "), HasSubstr("160x96")));
  EXPECT_EQ(std::ranges::count(required.errors, '\n'), 1);
}

TEST_F(PiecesTest, WrongUseIsOneLine) {
  const std::string p = Path("p.vrx"), m = Path("m.mp4");
  struct Case {
    Words arguments;
    const char* line;
  };
  for (const Case& c : {Case{{"render", p, "--smart", "maybe"}, "maybe is none of auto, off and require"},
                        {{"render", p, "--smart", "auto", "--overlay-only", "-o", "o.mov"}, "--smart"},
                        {{"render", p, "--piece", "1/2", "-o", m, "--range", "0f-"}, "is no piece of a plan"},
                        {{"render", p, "--piece", "1/2:a", "--range", "0f-"}, "needs -o FILE"},
                        {{"render", p, "--piece", "1/2:a", "-o", m}, "needs its --range"},
                        {{"render", p, "--piece", "0/2:a", "-o", m, "--range", "0f-"}, "has no range"},
                        {{"render", "-", "--piece", "0/2:a", "-o", m}, "needs a project in a file"},
                        {{"render", p, "--piece", "0/2:a", "-o", m, "--jobs", "2"}, "--jobs"},
                        {{"render", p, "--jobs", "0"}, "0 is no number from 1 to 64"},
                        {{"plan", p}, "--pieces is required"},
                        {{"plan", p, "--pieces", "1001"}, "1001 is no number from 1 to 1000"},
                        {{"plan", p, "--pieces", "2", "--format", "cron"}, "cron is none of"},
                        {{"plan", p, "--pieces", "2", "-o", "m.avi"}, "m.avi is no movie"},
                        {{"plan", "-", "--pieces", "2"}, "not from standard input"},
                        {{"join", m}, "--output is required"},
                        {{"join", m, "-o", "m.txt"}, "m.txt is no movie"},
                        {{"join", "-o", m}, "PIECE is required"}}) {
    const VrxResult result = RunVrx({c.arguments});
    EXPECT_EQ(result.status, 2) << c.line;
    EXPECT_THAT(result.errors, HasSubstr(c.line));
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
  }
  // Fewer places than pieces are said, and the plan stands.
  project.videoTrack = project.audioTrack = ClipText("a.mp4", "0", "400");
  WriteProject();
  const VrxResult few = Run("plan", {"--pieces", "9", "--smart", "off"});
  EXPECT_EQ(few.status, 0);
  EXPECT_THAT(few.errors, HasSubstr("1 piece instead of 9: the movie has no more places to cut\n"));
  fs::remove(Path("a.mp4"));
  EXPECT_THAT(Run("plan", {"--pieces", "2"}).errors,
              StartsWith("vrx: error: " + p + ":1: VideoTrack clip 1"));
}

}  // namespace
