// `vrx make` and `vrx new`: clips, pictures, captions, logs, music and editors' timelines become a movie, or
// the documents of one.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <tuple>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "samples/clipmaker/FramePattern.h"
#include "samples/logmaker/ReceiverKinds.h"
#include "samples/route/DriveRoute.h"
#include "tests/imaging/JpegFiles.h"
#include "tests/render/RenderFixture.h"
#include "tests/support/MovieReader.h"

namespace {

using namespace vrx::test_support;
using Json = nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// A JPEG of the test picture `number`, stored so that a value of the orientation tag brings it upright.
std::string TurnedPattern(int number, int orientation) {
  constexpr int kWidth = 160, kHeight = 96;
  RgbImage upright(kWidth, kHeight);
  DrawPattern(static_cast<std::uint32_t>(number), upright);
  const bool isSideways = orientation >= 5;
  const int width = isSideways ? kHeight : kWidth, height = isSideways ? kWidth : kHeight;
  imagefiles::Samples samples{width, height, 3, {}};
  for (int i = 0; i < height; ++i) {
    for (int j = 0; j < width; ++j) {
      const int right = width - 1 - j, below = height - 1 - i;
      const std::pair<int, int> places[] = {{i, j}, {i, right}, {below, right}, {below, j},
                                            {j, i}, {j, below}, {right, below}, {right, i}};
      const auto [row, column] = places[orientation - 1];
      for (const std::uint8_t value : upright.At(column, row)) samples.data.push_back(value);
    }
  }
  return jpegfiles::WithSegments(imagefiles::Jpeg(samples),
                                 {jpegfiles::Exif(jpegfiles::Orientation(orientation))});
}

class MakeCommandTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return (folder.Path() / name).string(); }
  void Clip(const std::string& name, const PatternClip& clip) const { WritePatternClip(Path(name), clip); }

  /// Runs the command in the folder; arguments that name files there get its path.
  VrxResult Run(const std::string& command, std::vector<std::string> arguments) const {
    for (std::string& argument : arguments) {
      const std::string name = argument.substr(0, argument.rfind('@'));
      if (name.find_first_not_of("0123456789.:-f/") != name.npos && argument.find('.') != name.npos)
        argument = Path(argument);
    }
    arguments.insert(arguments.begin(), command);
    return RunVrx({arguments});
  }
  std::string Make(std::vector<std::string> arguments) const {
    const VrxResult result = Run("make", std::move(arguments));
    EXPECT_EQ(result.status, 0) << result.errors;
    return result.output;
  }
  Json Check(const std::string& project) const {
    return Json::parse(RunVrx({{"check", Path(project), "--json"}}).output, nullptr, false);
  }
  std::vector<int> Numbers(const std::string& movie) const {
    return MovieReader(Path(movie)).RemainingNumbers();
  }

  TempFolder folder;
};

std::vector<int> Counting(int first, int count) {
  std::vector<int> numbers;
  for (int i = 0; i < count; ++i) numbers.push_back(first + i);
  return numbers;
}

TEST_F(MakeCommandTest, PartsOfClipsAndPicturesFollowEachOtherWithTheirSound) {
  // Names that documents have to escape.
  const std::string a = "a--<&>.mp4", wide = "w\"&.jpg";
  Clip(a, {.width = 320, .height = 192, .rateNum = 30, .frames = 90, .hasSound = true});
  Clip("b@home.mp4",
       {.rateNum = 30, .frames = 60, .firstNumber = 500, .hasSound = true, .sound = {.rate = 44100}});
  folder.Write(wide, imagefiles::Jpeg(imagefiles::Smooth(64, 32, 4)));
  const std::string said =
      Make({a + "@0.5-2", wide, a + "@75f-", "b@home.mp4", "--photo-seconds", "1.5", "-o", "out.mp4"});
  EXPECT_THAT(said, HasSubstr("Movie: 0:06 of 3 clips and 1 picture\n"
                              "Picture: 320x192 (as a--<&>.mp4), 30 frames a second (as a--<&>.mp4)\n"
                              "Sound: that of the clips, silent where there is none\n"));
  std::vector<int> wanted = Counting(15, 45);
  wanted.insert(wanted.end(), 45, -1);
  for (const auto& part : {Counting(75, 15), Counting(500, 60)})
    wanted.insert(wanted.end(), part.begin(), part.end());
  MovieReader movie(Path("out.mp4"));
  EXPECT_EQ(movie.RemainingNumbers(), wanted);
  // A click on each whole second of the clips: 1 s of the first, then 0 and 1 s of the second.
  const MovieSound sound = movie.ReadSound();
  EXPECT_EQ(sound.rate, 48000);
  std::vector<double> seconds;
  for (const std::int64_t click : sound.Clicks())
    seconds.push_back(std::round(static_cast<double>(click) / 4800) / 10);
  EXPECT_THAT(seconds, ElementsAre(0.5, 3.5, 4.5));
}

TEST_F(MakeCommandTest, PartsAreCountedAtTheRateOfTheirClipAndJoinAtThatOfTheMovie) {
  Clip("fast.mp4", {.rateNum = 120, .frames = 60, .sarNum = 4, .sarDen = 3});
  fs::create_directory(folder.Path() / "temporary");
  setenv("TMPDIR", Path("temporary").c_str(), 1);
  const std::string said = Make(
      {"fast.mp4@40f-46f", "fast.mp4@0.12167-0.26", "fast.mp4@0.4-9", "--codec", "hevc", "-o", "out.mp4"});
  EXPECT_THAT(said,
              HasSubstr("Picture: 214x96 (as fast.mp4), 60 frames a second (the usual rate for the 120"));
  EXPECT_THAT(said, HasSubstr("note: fast.mp4 ends at 0:01, and so does its part\n"));
  std::vector<int> wanted;
  for (const auto& [first, end] : {std::pair{20, 23}, {7, 16}, {24, 30}}) {
    for (int frame = first; frame < end; ++frame) wanted.push_back(2 * frame);
  }
  MovieReader movie(Path("out.mp4"));
  EXPECT_EQ(movie.RemainingNumbers(), wanted);
  EXPECT_EQ(movie.Info().videoCodec, "hevc");
  unsetenv("TMPDIR");
  EXPECT_TRUE(fs::is_empty(Path("temporary"))) << "the documents are removed";
}

TEST_F(MakeCommandTest, PicturesStandUprightAsTheirTagsSay) {
  std::vector<std::string> arguments{"-o",     "out.mp4", "--size",          "320x192",
                                     "--rate", "25",      "--photo-seconds", "0.1"};
  std::vector<int> wanted;
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const std::string name = "p" + std::to_string(orientation) + ".jpg";
    folder.Write(name, TurnedPattern(orientation * 100, orientation));
    arguments.push_back(name);
    for (int i = 0; i < 3; ++i) wanted.push_back(orientation * 100);
  }
  arguments.push_back("p1.jpg@1-1.16");
  wanted.insert(wanted.end(), 4, 100);
  EXPECT_THAT(Make(arguments), HasSubstr("Sound: none"));
  EXPECT_EQ(Numbers("out.mp4"), wanted);
  folder.Write("tall.jpg", imagefiles::Jpeg(imagefiles::Smooth(32, 64, 4)));
  EXPECT_THAT(Run("new", {"p.vrx", "p6.jpg"}).output,
              HasSubstr("Picture: 160x96 (the shape of p6.jpg in full HD)"));
  EXPECT_THAT(
      Run("new", {"q.vrx", "tall.jpg", "-o", "x.mov"}).output,
      AllOf(HasSubstr("Picture: 32x64 (the shape of tall.jpg in full HD)"), HasSubstr("/x.mov of it\n")));
}

TEST_F(MakeCommandTest, SavedProjectsMakeTheSameMovieAndAreNotReplaced) {
  Clip("up.mp4",
       {.width = 192, .height = 320, .rateNum = 2983, .rateDen = 100, .frames = 45, .rotation = 90});
  folder.Write("words.srt", "1\n00:00:00,200 --> 00:00:01,000\nFirst </Text></Caption> & <second>\n");
  const std::vector<std::string> arguments{"up.mp4", "--captions", "words.srt", "--bitrate", "2M", "-o"};
  auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), arguments.begin(), arguments.end());
    return more;
  };
  EXPECT_THAT(
      Make(with({"one.mp4", "--save-project", "p.vrx"})),
      HasSubstr("320x192 (as up.mp4), 29.97 frames a second (the usual rate for the 29.83 of up.mp4)"));
  EXPECT_EQ(Json(Check("p.vrx")["problems"]).dump().find("\"warning\""), std::string::npos);
  const std::string document = folder.Read("p.vrx");
  EXPECT_THAT(document, HasSubstr("<key>SourceFile</key><string>up.mp4</string>")) << "it can be moved";
  EXPECT_THAT(document, HasSubstr("<key>AverageBitrate</key><integer>2000000</integer>"));
  EXPECT_EQ(RunVrx({{"render", Path("p.vrx"), "-o", Path("two.mp4"), "--quiet"}}).status, 0);
  EXPECT_EQ(folder.Read("one.mp4"), folder.Read("two.mp4"));
  const VrxResult again = Run("make", with({"one.mp4", "--save-project", "p.vrx"}));
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.errors, HasSubstr("p.vrx is there already; --force replaces it"));
  EXPECT_EQ(Run("make", with({"one.mp4", "--save-project", "p.vrx", "--force", "--quiet"})).output, "");
}

TEST_F(MakeCommandTest, SoundAndPictureOfOneClipMayBeginAndEndApart) {
  Clip("mute.mp4", {.frames = 50});
  Clip("short.mp4", {.frames = 75, .hasSound = true, .sound = {.samples = 48000}});
  PatternClip late{.frames = 25, .hasSound = true, .sound = {.samples = 72000}};
  for (std::int64_t i = 0; i < 25; ++i) late.timesMs.push_back(480 + 40 * i);
  Clip("late.mp4", late);
  EXPECT_THAT(
      Make({"mute.mp4", "short.mp4", "late.mp4", "--strict", "--save-project", "p.vrx", "-o", "o.mp4"}),
      HasSubstr("note: short.mp4: its sound ends at 0:01, before its picture\n"));
  EXPECT_EQ(Json(Check("p.vrx")["problems"]).dump().find("\"warning\""), std::string::npos);
  EXPECT_EQ(folder.Read("p.vrx").find("-0.000"), std::string::npos);
  std::vector<int> wanted = Counting(0, 50);
  for (const auto& part : {Counting(0, 75), std::vector<int>(12, 0), Counting(0, 25)})
    wanted.insert(wanted.end(), part.begin(), part.end());
  EXPECT_EQ(Numbers("o.mp4"), wanted);
  std::vector<double> seconds;
  for (const std::int64_t click : MovieReader(Path("o.mp4")).ReadSound().Clicks())
    seconds.push_back(std::round(static_cast<double>(click) / 4800) / 10);
  EXPECT_THAT(seconds, ElementsAre(2.0, 5.0, 6.0));
}

TEST_F(MakeCommandTest, MusicTakesThePlaceOfTheSoundUntilTheMovieEnds) {
  Clip("a.mp4", {.rateNum = 25, .frames = 100, .hasSound = true});
  Clip("tune.m4a",
       {.rateNum = 25, .frames = 0, .hasSound = true, .sound = {.rate = 22050, .samples = 33075}});
  EXPECT_THAT(Make({"a.mp4", "--music", "tune.m4a", "-o", "out.mov"}),
              HasSubstr("which begins again 2 times"));
  const MovieSound sound = MovieReader(Path("out.mov")).ReadSound();
  EXPECT_EQ(sound.rate, 44100);
  std::vector<double> seconds;
  for (const std::int64_t click : sound.Clicks())
    seconds.push_back(std::round(static_cast<double>(click) / 4410) / 10);
  // The tune has 37 whole frames of the movie.
  EXPECT_THAT(seconds, ElementsAre(0.0, 1.0, 1.5, 2.5, 3.0, 4.0));
}

TEST_F(MakeCommandTest, CaptionsThatOverlapAreShownTogether) {
  Clip("a.mp4", {.rateNum = 25, .frames = 250});
  folder.Write("c.vtt",
               "WEBVTT\n\n00:01.000 --> 00:04.000\nlong\n\n00:02.000 --> 00:03.000 line:0\nshort\n\n"
               "00:05.985 --> 00:06.998 line:0\ntop\n\n00:06.985 --> 00:08.000 line:50%\nmiddle\n\n00:09.000 "
               "--> 00:20.000\ncut\n\n00:30.000 --> "
               "00:31.000\nlate\n");
  EXPECT_THAT(Run("new", {"p.vrx", "a.mp4", "--captions", "c.vtt"}).output,
              HasSubstr("Captions: 5 captions of c.vtt\nwarning: c.vtt: 1 caption after the movie's end\n"));
  std::vector<std::string> shown;
  const Json checked = Check("p.vrx");
  for (const Json& caption : checked["overlays"]["captions"]) {
    shown.push_back(caption["text"].get<std::string>() + " " +
                    std::to_string(caption["layoutType"].get<int>()) + " " +
                    std::to_string(std::lround(caption["start"].get<double>())) + "-" +
                    std::to_string(std::lround(caption["end"].get<double>())));
  }
  EXPECT_THAT(shown, ElementsAre("long 8 1-2", "long\nshort 8 2-3", "long 8 3-4", "top 2 6-7", "middle 5 7-8",
                                 "cut 8 9-10"));
  EXPECT_EQ(Json(checked["problems"]).dump().find("\"warning\""), std::string::npos);
}

TEST_F(MakeCommandTest, ALogComesToEachClipAndLeavesTheRecordingsFoldersAlone) {
  for (const auto& [name, date] :
       {std::pair{"a.mp4", "2024-05-01T14:00:10+0200"}, {"b.mp4", "2024-05-01T14:01:00+0200"}})
    Clip(name, {.width = 32, .height = 32, .rateNum = 5, .frames = 100, .codec = "mpeg4", .date = date});
  folder.Write("photo.jpg", imagefiles::Jpeg(imagefiles::Smooth(64, 32, 4)));
  folder.Write("ride.nmea", ReceiverKinds().front().write(DriveRoute({})));
  fs::create_directory(folder.Path() / "made");
  folder.Write("words.srt", "1\n00:00:16,000 --> 00:00:18,000\n<b>Words</b>\n");
  const VrxResult result = Run("new", {"made/p.vrx", "a.mp4@5-15", "photo.jpg", "b.mp4@10-", "--gps",
                                       "ride.nmea", "--captions", "words.srt"});
  ASSERT_EQ(result.status, 0) << result.errors;
  std::vector<std::string> shown;
  const auto add = [&](const Json& span) {
    shown.push_back(std::to_string(std::lround(span["start"].get<double>())) + "-" +
                    std::to_string(std::lround(span["end"].get<double>())));
  };
  const Json overlays = Check("made/p.vrx")["overlays"];
  for (const Json& clip : overlays["gpsClips"]) {
    for (const Json& span : clip["current"]) add(span);
  }
  for (const Json& caption : overlays["captions"]) add(caption);
  EXPECT_THAT(shown, ElementsAre("0-10", "15-25", "16-18"));
  // Clip, speed, place in the movie less the half frame after which the instruments begin, place in the clip.
  const std::string document = folder.Read("made/p-overlays.vrx");
  EXPECT_THAT(document, HasSubstr("<string>1,1.0,0.000,9.900,0.0,5.000|3,1.0,14.900,24.900,0.0,10.000|<"));
  EXPECT_THAT(document, HasSubstr("<date>2024:05:01T14:01:00Z<"));
  EXPECT_THAT(document, HasSubstr("<key>StartTime</key><real>5.000<"));
  EXPECT_THAT(document, HasSubstr("<key>EndTime</key><real>15.000<"));
  EXPECT_THAT(document, HasSubstr("Bold&gt;1&lt;/Bold&gt;&lt;Italic&gt;0&lt;"));
  EXPECT_NEAR(overlays["captions"][0]["start"].get<double>(), 16, 0.05);
  EXPECT_THAT(document, HasSubstr("Margin&gt;200&lt;")) << "above the instruments";
  for (const auto& entry : fs::directory_iterator(folder.Path()))
    EXPECT_NE(entry.path().extension(), ".moff");

  folder.Write("words.srt", "1\n00:00:21,000 --> 00:00:23,000\nOver the picture at the end\n");
  EXPECT_EQ(
      Run("new", {"r.vrx", "a.mp4", "photo.jpg", "--captions", "words.srt", "--gps", "ride.nmea"}).status, 0);
  EXPECT_EQ(Json(Check("r.vrx")["problems"]).dump().find("never shows"), std::string::npos);
}

TEST_F(MakeCommandTest, OptionsOfALogReachItsInstruments) {
  const auto clip = [&](const std::string& name, const char* date) {
    Clip(name, {.width = 320, .height = 192, .rateNum = 5, .frames = 100, .codec = "mpeg4", .date = date});
  };
  clip("a.mp4", "2024-05-01T14:00:10+0200");
  clip("b.mp4", "2024-05-01T14:01:00+0200");
  clip("c.mp4", "");
  clip("d.mp4", "");
  folder.Write("ride.nmea", ReceiverKinds().front().write(DriveRoute({.seconds = 120})));
  const auto rolled = std::ranges::find(ReceiverKinds(), std::string("rolled"), &ReceiverKind::name);
  folder.Write("rolled.nmea", rolled->write(DriveRoute({})));
  const auto use = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"p.vrx", "--force", "--gps", "ride.nmea"});
    return Run("new", std::move(arguments));
  };
  std::set<std::string> pictures;
  for (const std::vector<std::string>& look : {std::vector<std::string>{},
                                               {"--template", "sports"},
                                               {"--template", "walk"},
                                               {"--template", "graph"},
                                               {"--units", "miles"},
                                               {"--units", "knots"}}) {
    std::vector<std::string> arguments{"a.mp4"};
    arguments.insert(arguments.end(), look.begin(), look.end());
    ASSERT_EQ(use(arguments).status, 0);
    ASSERT_EQ(RunVrx({{"frame", Path("p.vrx"), "--frame", "18", "-o", Path("f.png")}}).status, 0);
    pictures.insert(folder.Read("f.png"));
  }
  EXPECT_EQ(pictures.size(), 6u);
  // The first clip begins when it is said; the next as their dates say, or when it ends.
  EXPECT_THAT(
      use({"a.mp4", "b.mp4", "--start", "2024-05-01T12:01:00Z"}).output,
      HasSubstr("GPS: a.mp4: the log covers 00:00 to 00:20 of 00:20\nGPS: b.mp4: the log covers 00:00 to "
                "00:10 of 00:20\n"));
  EXPECT_THAT(use({"c.mp4", "--start", "2024-05-01T12:01:00Z", "--offset", "55", "--zone", "120"}).output,
              HasSubstr("GPS: c.mp4: the log covers 00:00 to 00:05 of 00:20\n"));
  EXPECT_THAT(use({"c.mp4", "d.mp4", "--start", "2024-05-01T12:01:50Z"}).output,
              HasSubstr("GPS: c.mp4: the log covers 00:00 to 00:10 of 00:20\nwarning: d.mp4: "));
  for (const auto& [option, value, advice] : {std::tuple{"--offset", "86400", "make it without --offset"},
                                              {"--zone", "0", "make it with --offset"}}) {
    fs::remove(Path("p.vrx"));
    const VrxResult apart = use({"a.mp4", option, value});
    EXPECT_EQ(apart.status, 1);
    EXPECT_THAT(apart.errors, HasSubstr(advice));
    EXPECT_FALSE(fs::exists(Path("p.vrx")));
  }
  EXPECT_EQ(Run("new", {"q.vrx", "a.mp4", "--gps", "rolled.nmea"}).status, 1);
  EXPECT_EQ(Run("new", {"q.vrx", "a.mp4", "--gps", "rolled.nmea", "--fix-week-rollover"}).status, 0);
}

TEST_F(MakeCommandTest, TimelinesOfEditorsBecomeProjects) {
  Clip("a.mp4", {.rateNum = 25, .frames = 100});
  Clip("s.m4a", {.frames = 0, .hasSound = true, .sound = {.samples = 240000}});
  const auto time = [](double value) {
    return Json{{"OTIO_SCHEMA", "RationalTime.1"}, {"value", value}, {"rate", 25}};
  };
  const auto range = [&](double start, double length) {
    return Json{{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", time(start)}, {"duration", time(length)}};
  };
  const auto clip = [&](const char* url, double start, double length) {
    return Json{
        {"OTIO_SCHEMA", "Clip.1"},
        {"name", url},
        {"source_range", range(start, length)},
        {"media_reference",
         {{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", url}, {"available_range", range(0, 200)}}}};
  };
  const auto track = [](const char* kind, Json children) {
    return Json{
        {"OTIO_SCHEMA", "Track.1"}, {"kind", kind}, {"name", kind}, {"children", std::move(children)}};
  };
  const Json gap{{"OTIO_SCHEMA", "Gap.1"}, {"source_range", range(0, 10)}};
  const Json transition{
      {"OTIO_SCHEMA", "Transition.1"}, {"name", "cross"}, {"in_offset", time(5)}, {"out_offset", time(5)}};
  Json off = clip("a.mp4", 0, 5);
  off["enabled"] = false;
  const Json video =
      Json::array({clip("a.mp4", 20, 15), gap, clip("a.mp4", 50, 5), transition, clip("a.mp4", 5, 5), off});
  Json document{{"OTIO_SCHEMA", "Timeline.1"},
                {"tracks",
                 {{"OTIO_SCHEMA", "Stack.1"},
                  {"children",
                   {track("Video", video), track("Video", Json::array({clip("a.mp4", 0, 5)})),
                    track("Audio", Json::array({gap, clip("s.m4a", 10, 25)}))}}}}};
  folder.Write("cut.otio", document.dump());
  const VrxResult result = Run("new", {"p.vrx", "--from", "cut.otio"});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.output,
              HasSubstr("left out: video track \"Video\": a project has one, and the lowest is taken"));
  EXPECT_THAT(result.output, HasSubstr("left out: ")) << "the transition";
  EXPECT_THAT(result.output, HasSubstr("cross"));
  ASSERT_EQ(RunVrx({{"render", Path("p.vrx"), "--quiet"}}).status, 0);
  std::vector<int> wanted = Counting(20, 15);
  wanted.insert(wanted.end(), 10, -1);
  for (const auto& part : {Counting(50, 5), Counting(5, 5)})
    wanted.insert(wanted.end(), part.begin(), part.end());
  wanted.insert(wanted.end(), 5, -1);
  EXPECT_EQ(Numbers("p.mp4"), wanted);
  const std::vector<std::int64_t> clicks = MovieReader(Path("p.mp4")).ReadSound().Clicks();
  ASSERT_EQ(clicks.size(), 1u);
  EXPECT_NEAR(static_cast<double>(clicks.front()), 48000, 100);
  document["tracks"]["children"].erase(2);
  folder.Write("silent.otio", document.dump());
  EXPECT_THAT(Run("new", {"q.vrx", "--from", "silent.otio"}).output, HasSubstr("Sound: none, since no clip"));
}

TEST_F(MakeCommandTest, WrongUseIsOneLine) {
  Clip("a.mp4", {.frames = 50});
  Clip("s.m4a", {.frames = 0, .hasSound = true, .sound = {.samples = 48000}});
  Clip("b.mp4", {.frames = 50, .hasSound = true});
  Clip("tick.wav", {.frames = 0, .hasSound = true, .sound = {.samples = 2400}});
  folder.Write("x.jpg", imagefiles::Jpeg(imagefiles::Smooth(64, 32, 4)));
  folder.Write("text.txt", "no movie");
  folder.Write("p.webp", std::string("RIFF\4\0\0\0WEBPVP8 ", 16));
  folder.Write("p.heic", std::string("\0\0\0\x18"
                                     "ftypheic\0\0\0\0",
                                     16));
  struct Case {
    std::vector<std::string> arguments;
    int status;
    std::string line;
  };
  const Case cases[] = {
      {{"make", "-o", "o.mp4"}, 2, "CLIP is required"},
      {{"make", "a.mp4"}, 2, "--output is required"},
      {{"make", "a.mp4", "-o", "o.webm"}, 2, "is no movie: its name ends in .mp4"},
      {{"make", "a.mp4@3-1", "-o", "o.mp4"}, 2, "3-1 ends before it begins"},
      {{"make", "a.mp4@1,5-", "-o", "o.mp4"}, 2, "1,5 is no time such as"},
      {{"make", "a.mp4@40f-1", "-o", "o.mp4"}, 1, "a.mp4: the range ends before it begins"},
      {{"make", "x.jpg@-99999:00:00", "-o", "o.mp4"}, 1, "the movie would have more than"},
      {{"make", "x.jpg", "--photo-seconds", "90", "--music", "tick.wav", "-o", "o.mp4"}, 1, "is too short"},
      {{"make", "a.mp4", "--music", "b.mp4", "-o", "b.mp4"}, 1, "would be overwritten"},
      {{"make", "a.mp4@9-", "-o", "o.mp4"}, 1, "a.mp4: the clip ends at 0:02, before the range begins"},
      {{"make", "none.mp4", "-o", "o.mp4"}, 1, "none.mp4 does not exist"},
      {{"make", "text.txt", "-o", "o.mp4"}, 1, "text.txt "},
      {{"make", "s.m4a", "-o", "o.mp4"}, 1, "s.m4a has no picture; --music takes sound"},
      {{"make", "a.mp4", "--music", "a.mp4", "-o", "o.mp4"}, 1, "a.mp4 has no sound"},
      {{"make", "a.mp4", "-o", "a.mp4"}, 1, "would be overwritten"},
      {{"make", "a.mp4", "--offset", "5", "-o", "o.mp4"}, 2, "--offset: needs --gps FILE"},
      {{"make", "a.mp4", "--captions", "text.txt", "-o", "o.mp4"}, 1, "text.txt: "},
      {{"make", "a.mp4", "--gps", "text.txt", "-o", "o.mp4"}, 1, "text.txt"},
      {{"make", "a.mp4", "--template", "drvie", "--gps", "x.gpx", "-o", "o.mp4"}, 2, "did you mean drive?"},
      {{"make", "a.mp4", "--save-project", "p.xml", "-o", "o.mp4"}, 2, "its name ends in .vrx"},
      {{"make", "", "-o", "o.mp4"}, 2, "CLIP: an empty name is no file"},
      {{"make", "a.mp4", "--music", "", "-o", "o.mp4"}, 2, "--music: an empty name is no file"},
      {{"make", "b@1.mp4", "-o", "o.mp4"}, 2, "b@1.mp4 is no file, and after its @ 1.mp4 is no range"},
      {{"make", "a.mp4", "--crf", "nan", "-o", "o.mp4"}, 2, "nan is no number from 0 to 63"},
      {{"make", "p.webp", "-o", "o.mp4"}, 1, "p.webp is a WebP picture, which cannot be read"},
      {{"make", "p.heic", "-o", "o.mp4"}, 1, "p.heic is a HEIC picture, which cannot be read"},
      {{"make", "a.mp4", "-o", "no/o.mp4"}, 1, Path("no/o.mp4") + ": OutputFilePath the folder "},
      {{"render", "p.vrx", "-o", ""}, 2, "--output: an empty name is no file"},
      {{"render", "p.vrx", "--overlay-only", "-o", "o%d%d.png"}, 2, "needs one place"},
      {{"render", "p.vrx", "--overlay-only", "--codec", "av1", "-o", "o.mov"}, 2, "excludes"},
      {{"make", "a.mp4", "--photo-seconds", "0", "-o", "o.mp4"}, 2, "--photo-seconds"},
      {{"new", "p.vrx"}, 2, "and no --from EDIT.otio"},
      {{"new", "p.vrx", "a.mp4", "--from", "x.otio"}, 2, "exclude each other"},
      {{"new", "p.vrx", "--from", "text.txt"}, 1, "text.txt: "},
  };
  for (const Case& wrong : cases) {
    std::vector<std::string> arguments(wrong.arguments.begin() + 1, wrong.arguments.end());
    const VrxResult result = Run(wrong.arguments.front(), arguments);
    EXPECT_EQ(result.status, wrong.status) << wrong.line << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(wrong.line));
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    EXPECT_FALSE(fs::exists(Path("o.mp4")));
  }
}

}  // namespace
