// What the command line changes in the render of a project: its output, its format, its codec, a part of it,
// or its overlays alone.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "samples/logmaker/ReceiverKinds.h"
#include "samples/route/DriveRoute.h"
#include "tests/render/RenderFixture.h"
#include "tests/support/MovieReader.h"

namespace {

using namespace vrx::test_support;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// A project of 100 frames at 25 frames a second with a click on each whole second.
class OverridesTest : public RenderFixture {
 protected:
  OverridesTest() : RenderFixture(320, 192) {
    WriteClip("a.mp4", {.width = 320, .height = 192, .frames = 100, .hasSound = true});
    project.videoTrack = project.audioTrack = ClipText("a.mp4", "0", "4000");
    project.audio = "<key>Channel</key><integer>2</integer><key>SamplingRate</key><integer>48000</integer>";
  }
  void UsePainter(const std::string& name, int width, int height) {
    folder.Write(name,
                 "<plist version=\"1.0\"><dict><key>PainterInfo</key><dict><key>GeneralInfo</key><dict>"
                 "<key>SaveMovieMode</key><true/><key>VideoWidth</key><integer>" +
                     std::to_string(width) + "</integer><key>VideoHeight</key><integer>" +
                     std::to_string(height) +
                     "</integer></dict><key>CaptionInfo</key><dict><key>Valid</key><true/>"
                     "<key>CaptionString</key><string><![CDATA[<Caption><Text>One</Text>"
                     "<FontName>DejaVu Sans</FontName><FontSize>250</FontSize><LayoutType>5</LayoutType>"
                     "<FontColor>16777215</FontColor><Outline>6</Outline><OutlineColor>0</OutlineColor>"
                     "<LeftPos>400</LeftPos><RightPos>1200</RightPos><VideoID>1</VideoID></Caption>]]>"
                     "</string></dict></dict></dict></plist>");
    project.moreOutput = "<key>PainterEffect</key><string>" + name + "</string>";
  }
  VrxResult RenderWith(std::vector<std::string> arguments, const std::string& program = {}) const {
    arguments.insert(arguments.begin(), {"render", Path("p.vrx")});
    return RunVrx({.arguments = std::move(arguments), .program = program});
  }
  /// The bytes of the movie at `name` that is rendered with these arguments.
  std::string Movie(const std::string& name, std::vector<std::string> arguments) const {
    // As from the working folder, not from the project's.
    arguments.insert(arguments.end(), {"-o", fs::proximate(Path(name)).string(), "--quiet"});
    const VrxResult result = RenderWith(std::move(arguments));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output + result.errors, "");
    return folder.Read(name);
  }
};

TEST_F(OverridesTest, FormatsAreThoseOfADocumentThatSaysThem) {
  UsePainter("painter.vrx", 320, 192);
  WriteProject();
  struct Case {
    std::vector<std::string> arguments;
    int width, height, timeValue, timeScale, bitrate;
  };
  for (const Case& c : {Case{{"--size", "176x128"}, 176, 128, 1, 25, 4'000'000},
                        {{"--rate", "50"}, 320, 192, 1, 50, 4'000'000},
                        {{"--rate", "29.97", "--bitrate", "300k"}, 320, 192, 1001, 30000, 300'000},
                        {{"--rate", "23.976", "--bitrate", "1.5M"}, 320, 192, 1001, 24000, 1'500'000},
                        {{"--rate", "12.5", "--bitrate", "250000"}, 320, 192, 2, 25, 250'000},
                        {{"--rate", "24000/1001"}, 320, 192, 1001, 24000, 4'000'000}}) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    const std::string changed = Movie("changed.mp4", c.arguments);
    const ProjectText before = project;
    UsePainter("said.vrx", c.width, c.height);
    project.video = "<key>Width</key><integer>" + std::to_string(c.width) +
                    "</integer><key>Height</key><integer>" + std::to_string(c.height) +
                    "</integer><key>TimeValue</key><integer>" + std::to_string(c.timeValue) +
                    "</integer><key>TimeScale</key><integer>" + std::to_string(c.timeScale) +
                    "</integer><key>AverageBitrate</key><integer>" + std::to_string(c.bitrate) + "</integer>";
    WriteProject();
    EXPECT_TRUE(changed == Movie("said.mp4", {}));
    project = before;
    WriteProject();
  }
  EXPECT_FALSE(fs::exists(Path("out.mp4")));
}

TEST_F(OverridesTest, InstrumentsAndCaptionsFollowTheSize) {
  WriteClip("ride.mp4", {.rateNum = 5, .frames = 20, .codec = "mpeg4", .date = "2024-05-01T14:00:10+0200"});
  folder.Write("ride.nmea", ReceiverKinds().front().write(DriveRoute({})));
  folder.Write("words.srt", "1\n00:00:01,000 --> 00:00:03,000\nWords\n");
  const auto run = [&](std::vector<std::string> arguments) {
    const auto more = {Path("ride.mp4"), std::string("--captions"), Path("words.srt"), std::string("--gps"),
                       Path("ride.nmea")};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const VrxResult result = RunVrx({arguments});
    EXPECT_EQ(result.status, 0) << result.errors;
  };
  run({"make", "-o", Path("made.mp4"), "--size", "256x144"});
  run({"new", Path("p.vrx")});
  EXPECT_TRUE(Movie("small.mp4", {"--size", "256x144"}) == folder.Read("made.mp4"));
}

TEST_F(OverridesTest, CodecAndQualityReachTheEncoder) {
  WriteProject();
  const std::string usual = Movie("usual.mp4", {});
  EXPECT_TRUE(Movie("h264.mp4", {"--codec", "h264", "--preset", "veryfast"}) == usual);
  EXPECT_FALSE(Movie("slow.mp4", {"--preset", "slow"}) == usual);
  EXPECT_GT(Movie("fine.mp4", {"--crf", "4.5"}).size(), Movie("coarse.mp4", {"--crf", "40"}).size());
  for (const auto& [codec, name] : {std::pair{"hevc", "hevc"}, {"h265", "hevc"}, {"av1", "av1"}}) {
    Movie("coded.mp4", {"--codec", codec, "--crf", codec == std::string("av1") ? "63" : "51"});
    EXPECT_EQ(MovieReader(Path("coded.mp4")).Info().videoCodec, name);
  }
}

TEST_F(OverridesTest, RangesHaveTheirFramesAndSoundAndAreCountedAsSuch) {
  WriteProject();
  struct Case {
    const char* range;
    int first, frames;
    std::vector<double> clicks;  // in seconds
  };
  for (const Case& c : {Case{"0.5-2.5", 12, 50, {0.52, 1.52}},  // 12.5 frames
                        {"10f-0:01.2", 10, 20, {0.6}},
                        {"0:03.96-", 99, 1, {}},
                        {"-0:00:01", 0, 25, {0}},
                        {"0-4", 0, 100, {0, 1, 2, 3}},
                        {"75f-76f", 75, 1, {0}}}) {
    SCOPED_TRACE(c.range);
    const std::string path = Path("part.mp4");
    const VrxResult result = RenderWith({"--range", c.range, "-o", path, "--progress", "json"});
    ASSERT_EQ(result.status, 0) << result.errors;
    MovieReader movie(path);
    std::vector<int> wanted;
    for (int i = 0; i < c.frames; ++i) wanted.push_back(c.first + i);
    EXPECT_EQ(movie.RemainingNumbers(), wanted);
    MovieSound sound = movie.ReadSound();
    const auto length = static_cast<std::size_t>(c.frames) * 1920;
    EXPECT_LT(sound.samples.size() - length, 1024u);  // libav's players play the last packet whole
    sound.samples.resize(length);
    std::vector<double> clicks;
    for (const std::int64_t click : sound.Clicks())
      clicks.push_back(std::round(static_cast<double>(click) / 480) / 100);
    EXPECT_EQ(clicks, c.clicks);
    const std::string counts =
        "\"frames\":" + std::to_string(c.frames) + ",\"seconds\":" + nlohmann::json(c.frames / 25.0).dump();
    for (const std::string event : {"start", "end"})
      EXPECT_THAT(result.output,
                  HasSubstr("{\"event\":\"" + event + "\",\"output\":\"" + path + "\"," + counts));
  }
  // A frame's start as programs write it, which is a little before it as a number of milliseconds.
  Movie("one.mp4", {"--rate", "30", "--range", "0.36666666666666664-0.4"});
  EXPECT_EQ(MovieReader(Path("one.mp4")).RemainingNumbers().size(), 1u);
  for (const auto& [range, cause] :
       {std::pair{"4-", "has frames 0 to 99, and the range begins with frame 100"},
        {"-101f", "has frames 0 to 99, and the range goes on to frame 100"},
        {"0.41-0.42", "has no frame in the range"},
        {"1-20f", "ends before it begins"}}) {
    const VrxResult result = RenderWith({"--range", range});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr(cause));
    EXPECT_FALSE(fs::exists(Path("out.mp4")));
  }
}

/// Luma of limited range and opacity of an overlay, or of a movie's frame.
std::pair<double, double> LumaAt(const AVFrame& frame, int x, int y) {
  const auto* row = frame.data[0] + y * frame.linesize[0];
  if (frame.format == AV_PIX_FMT_RGBA) return {16 + row[4 * x] * 219 / 255.0, row[4 * x + 3] / 255.0};
  if (frame.format != AV_PIX_FMT_YUVA444P12) return {row[x], 1};
  const auto* alpha = frame.data[3] + y * frame.linesize[3];
  return {reinterpret_cast<const std::uint16_t*>(row)[x] / 16.0,
          reinterpret_cast<const std::uint16_t*>(alpha)[x] / 4095.0};
}

TEST_F(OverridesTest, OverlaysAloneOverThePlainMovieAreTheMovieWithOverlays) {
  WriteProject();
  Movie("plain.mp4", {"--crf", "0"});
  UsePainter("painter.vrx", 320, 192);
  WriteProject();
  Movie("with.mp4", {"--crf", "0"});
  Movie("alone.mov", {"--overlay-only"});
  Movie("o-%03d.png", {"--overlay-only", "--range", "20f-32f"});
  MovieReader plain(Path("plain.mp4")), with(Path("with.mp4")), alone(Path("alone.mov"));
  for (int number = 0; number < 100; ++number) {
    const AVFrame* below = plain.NextDecodedFrame();
    const AVFrame* wanted = with.NextDecodedFrame();
    std::vector<const AVFrame*> overlays{alone.NextDecodedFrame()};
    const std::string picture = Path("o-0" + std::to_string(number) + ".png");
    ASSERT_EQ(fs::exists(picture), number >= 20 && number < 32) << number;
    std::optional<MovieReader> pictureReader;
    if (fs::exists(picture)) overlays.push_back(pictureReader.emplace(picture).NextDecodedFrame());
    ASSERT_TRUE(below != nullptr && wanted != nullptr);
    for (const AVFrame* overlay : overlays) {
      ASSERT_NE(overlay, nullptr);
      double most = 0, opaque = 0;
      for (int i = 0; i < 320 * 192; ++i) {
        const auto [luma, alpha] = LumaAt(*overlay, i % 320, i / 320);
        const double composed = LumaAt(*below, i % 320, i / 320).first * (1 - alpha) + luma * alpha;
        most = std::max(most, std::abs(composed - LumaAt(*wanted, i % 320, i / 320).first));
        opaque += alpha;
      }
      EXPECT_LT(most, 3) << number;
      EXPECT_EQ(opaque > 500, number >= 10 && number <= 30) << number << " " << opaque;
    }
  }
  EXPECT_EQ(alone.NextDecodedFrame(), nullptr);
  // The ending is no matter of the project.
  EXPECT_EQ(RenderWith({"--overlay-only", "-o", Path("s%d.png"), "--range", "-1f", "--strict"}).status, 0);
}

TEST_F(OverridesTest, ProjectsFollowEachOtherWhateverBecomesOfOne) {
  WriteProject();
  project.videoTrack = project.audioTrack = ClipText("a.mp4", "0", "1000");
  project.output = "short.mp4";
  folder.Write("short.vrx", project.Text());
  const VrxResult result = RunVrx({{"render", Path("none.vrx"), Path("p.vrx"), Path("short.vrx"), "--range",
                                    "20f-30f", "--size", "160x96", "--strict"}});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, HasSubstr("Project " + Path("none.vrx") + "\nProject " + Path("p.vrx") + "\n"));
  EXPECT_THAT(result.output, HasSubstr("out.mp4: 10 frames, 0.400 s of movie"));
  EXPECT_THAT(result.errors, HasSubstr("none.vrx: does not exist"));
  EXPECT_THAT(result.errors, HasSubstr("short.vrx has frames 0 to 24, and the range goes on to frame 29"));
  EXPECT_FALSE(fs::exists(Path("short.mp4")));
  const VrxResult both = RunVrx({{"render", Path("p.vrx"), Path("short.vrx"), "--range", "-25f", "--codec",
                                  "hevc", "--progress", "json"}});
  EXPECT_EQ(both.status, 0) << both.errors;
  EXPECT_THAT(both.output, HasSubstr("{\"event\":\"project\",\"project\":\"" + Path("short.vrx") + "\"}\n"));
  for (const std::string name : {"out.mp4", "short.mp4"}) {
    MovieReader movie(Path(name));
    EXPECT_EQ(movie.Info().videoCodec, "hevc");
    EXPECT_EQ(movie.RemainingNumbers().size(), 25u);
  }
}

TEST_F(OverridesTest, ChangedDocumentsKeepTheirNamesAlsoFromStandardInput) {
  UsePainter("painter.vrx", 320, 192);
  std::string painter = folder.Read("painter.vrx");
  folder.Write("painter.vrx", painter.insert(painter.find("]]>"), "stray"));
  WriteProject();
  const std::string warning =
      "vrx: warning: " + Path("painter.vrx") + ":1: CaptionString \"stray\" lies in no";
  const VrxResult named = RenderWith({"--size", "160x96"});
  EXPECT_THAT(named.errors, HasSubstr(warning));
  EXPECT_EQ(std::count(named.errors.begin(), named.errors.end(), '\n'), 1) << named.errors;
  const std::string movie = folder.Read("out.mp4");
  project.videoTrack = project.audioTrack = ClipText(Path("a.mp4"), "0", "4000");
  project.moreOutput = "<key>PainterEffect</key><string>" + Path("painter.vrx") + "</string>";
  const VrxResult piped = RunVrx(
      {.arguments = {"render", "-", "--size", "160x96", "-o", Path("piped.mp4")}, .input = project.Text()});
  EXPECT_EQ(piped.status, 0);
  EXPECT_EQ(piped.errors, named.errors);
  EXPECT_TRUE(folder.Read("piped.mp4") == movie);
  const VrxResult taken = RenderWith({"--size", "160x96", "-o", Path("painter.vrx")});
  EXPECT_EQ(taken.status, 1);
  EXPECT_THAT(taken.errors, HasSubstr("would be overwritten"));
}

TEST_F(OverridesTest, EngineWithoutOverridesIsNamed) {
  WriteProject();
  const std::string program = CopyVrx(folder.Path());
  fs::copy_file(SHORT_ENGINE_PATH, folder.Path() / "VRXEngine.so");
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--crf", "20"},
                                                    {"--codec", "h264"},
                                                    {"--preset", "slow"},
                                                    {"--hardware"},
                                                    {"--range", "1-2"},
                                                    {"--range", "-2"},
                                                    {"--overlay-only", "-o", Path("o.mov")}}) {
    const VrxResult result = RenderWith(arguments, program);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("the conversion engine beside this program knows no overrides"))
        << testing::PrintToString(arguments);
  }
  // What the documents say is a matter of every engine.
  EXPECT_THAT(RenderWith({"--rate", "50", "--size", "160x96", "--bitrate", "1M"}, program).errors,
              HasSubstr("has 7 frames, but the project asks for 200"));
}

TEST_F(OverridesTest, WrongUseIsOneLine) {
  WriteProject();
  struct Case {
    std::vector<std::string> arguments;
    int status;
    const char* line;
  };
  for (const Case& wrong : {
           Case{{"--range", "5"}, 2, "5 is no range such as"},
           {{"--range", "2-1"}, 2, "2-1 ends before it begins"},
           {{"--range", "9f-9f"}, 2, "9f-9f ends before it begins"},
           {{"--range", "-"}, 2, "names neither a start nor an end"},
           {{"--range", "90s-"}, 2, "did you mean 90?"},
           {{"--range", "1-1:60"}, 2, "1:60 is no time such as"},
           {{"--size", "321x192"}, 2, "width and height are even"},
           {{"--size", "320"}, 2, "320 is no size such as"},
           {{"--rate", "0"}, 2, "0 is no frame rate such as"},
           {{"--rate", "25/0"}, 2, "25/0 is no frame rate such as"},
           {{"--rate", "nan"}, 2, "nan is no frame rate such as"},
           {{"--bitrate", "500"}, 2, "did you mean 500k or 500M?"},
           {{"--bitrate", "3000M"}, 2, "3000M is no bitrate such as"},
           {{"--crf", "52"}, 2, "goes up to 51"},
           {{"--crf", "64", "--codec", "av1"}, 2, "--crf"},
           {{"--crf", "20", "--bitrate", "1M"}, 2, "--bitrate"},
           {{"--preset", "fats"}, 2, "did you mean fast?"},
           {{"--codec", "vp9"}, 2, "--codec"},
           {{"--overlay-only"}, 2, "needs -o FILE.mov"},
           {{"--overlay-only", "-o", Path("o.mp4")}, 2, "needs -o FILE.mov"},
           {{"--overlay-only", "-o", Path("o.png")}, 2, "needs one place of the frame's number"},
           {{"--overlay-only", "-o", Path("o.mov")}, 1, "the project has no overlays"},
           {{Path("p.vrx"), "-o", Path("o.mp4")}, 2, "names one movie, but there are several projects"},
           {{"-o", Path("a.mp4")}, 1, "would be overwritten"},
           {{"--codec", "av1", "-o", Path("o.mov")}, 1, "cannot hold AV1"},
       }) {
    const VrxResult result = RenderWith(wrong.arguments);
    EXPECT_EQ(result.status, wrong.status) << wrong.line << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(wrong.line));
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    EXPECT_FALSE(fs::exists(Path("o.mp4")) || fs::exists(Path("o.mov")) || fs::exists(Path("out.mp4")));
  }
}

}  // namespace
