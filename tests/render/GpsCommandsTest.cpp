// `vrx gps`: logs of receivers come to movies, are shown and drawn, and are what the overlay's timeline
// finds.
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <sstream>

#include <gmock/gmock.h>
#include <png.h>
#include <nlohmann/json.hpp>

#include "gps/track/GpsTimeline.h"
#include "samples/clipmaker/PatternClip.h"
#include "samples/logmaker/ReceiverKinds.h"
#include "samples/route/DriveRoute.h"
#include "tests/content/MoffBytes.h"
#include "tests/content/Mp4Boxes.h"
#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx::test_support;
using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

constexpr int kMovieSeconds = 600;
const char* const kDay = "2024-05-01T14:00:00+0200";  // when the drives of the log maker begin

/// A movie of ten minutes, with no date.
const std::string& UndatedMovie() {
  static const std::string bytes = [] {
    const TempFolder folder;
    WritePatternClip((folder.Path() / "clip.mp4").string(),
                     {.width = 32, .height = 32, .rateNum = 1, .frames = kMovieSeconds, .codec = "mpeg4"});
    return folder.Read("clip.mp4");
  }();
  return bytes;
}

/// The same with a date, which is appended to its last box.
std::string DatedMovie(const std::string& day) {
  std::string bytes = UndatedMovie();
  const std::size_t start = bytes.rfind("moov") - 4;
  bytes += mp4boxes::Box("udta", mp4boxes::DayText(day));
  return bytes.replace(start, 4, mp4boxes::U32(bytes.size() - start));
}

std::string LogOf(const std::string& kind, const DriveOptions& drive) {
  const auto found = std::ranges::find_if(ReceiverKinds(), [&](const auto& k) { return kind == k.name; });
  return found->write(DriveRoute(drive));
}

class GpsCommandsTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return (m_folder.Path() / name).string(); }
  /// Runs `vrx gps`; in its output the folder is FOLDER.
  VrxResult Gps(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "gps");
    VrxResult result = RunVrx({arguments});
    const std::string path = m_folder.Path().string();
    for (std::string* text : {&result.output, &result.errors}) {
      for (std::size_t at; (at = text->find(path)) != text->npos;) text->replace(at, path.size(), "FOLDER");
    }
    return result;
  }
  VrxResult Import(const std::string& movie, const std::string& log,
                   const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments{"import", Path(movie), Path(log)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Gps(arguments);
  }
  Json Show(const std::string& name) const {
    return Json::parse(Gps({"show", Path(name), "--json", "--points"}).output, nullptr, false);
  }
  void WriteZone(int minutes) const {
    m_folder.Write(
        "drive.mp4.modd",
        "<plist version=\"1.0\"><dict><key>XMLFileType</key><string>ModdXML</string><key>MetaDataList"
        "</key><array><dict><key>FileTimeZoneOffset</key><integer>" +
            std::to_string(minutes) + "</integer></dict></array></dict></plist>");
  }

  TempFolder m_folder;
};

TEST_F(GpsCommandsTest, EachKindOfReceiverGivesTheSameTrackInTheSidecar) {
  const DriveOptions drive{.seconds = 150, .tunnelSecond = 80};
  const DriveRoute route(drive);
  m_folder.Write("drive.mp4", DatedMovie(kDay));
  for (const char* kind :
       {"classic", "beidou", "10hz", "cr", "binary", "gpx-10", "gpx-plain", "gpx-local", "gpx-utf16"}) {
    SCOPED_TRACE(kind);
    m_folder.Write("log", LogOf(kind, drive));
    const VrxResult result = Import("drive.mp4", "log");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("\nthe log covers 00:05 to 02:30 of 10:00\n"));
    const Json json = Show("drive.mp4");
    EXPECT_EQ(json["format"], "moff");
    ASSERT_EQ(json["points"].size(), 146U);
    for (const Json& point : json["points"]) {
      const int second = point["second"].get<int>() + 5;
      SCOPED_TRACE(second);
      const RouteState state = route.At(second * 1000);
      if (!state.hasFix) continue;  // and a fast receiver has a fix a little before the end of the tunnel
      EXPECT_EQ(point["kind"], "logged");
      EXPECT_NEAR(point["latitude"].get<double>(), state.latitude, 2e-6);
      EXPECT_NEAR(point["longitude"].get<double>(), state.longitude, 2e-6);
      EXPECT_NEAR(point["speedKnots"].get<double>() * 1852 / 3600, state.metersPerSecond,
                  kind == std::string("gpx-plain") ? 1 : 0.01);
    }
  }
}

/// Over the antimeridian in the south, with gaps of six and two seconds and all kinds of other sentences.
const char* const kSmallLog =
    "$GPRMC,100000,A,0001.2000,S,17959.9400,E,10,77,040518\r\n"
    "$GPGSV,1,1,00\r\n"
    "$GPRMC,100001,A,0001.2000,S,17959.9400,W,20,77,040518\r\n"
    "$GPRMC,100003,V,,,,,,,040518\r\n"
    "$GPRMC,100004,A,0001.2000,S,17959.9400,W,20,77,040518*00\r\n"
    "$GPRMC,100005,A,0001.2000,S,17959.9400,W,20,77,\r\n"
    "$GPRMC,100007,A,0001.2000,S,17959.5800,W,30,77,040518\r\n"
    "$GPRMC,100009,A,0001.2000,S,17959.5800,W,30,77,040518\r\n";

TEST_F(GpsCommandsTest, ShowPrintsWhatWasReadInEachForm) {
  m_folder.Write("small & <.nmea", kSmallLog);
  Json json = Show("small & <.nmea");
  const Json points = json["points"];
  const double meters = json["distanceMeters"];
  const double meanKnots = json["meanSpeedKnots"];
  for (const char* key : {"points", "distanceMeters", "meanSpeedKnots"}) json.erase(key);
  EXPECT_EQ(json, Json::parse(R"({"source": "FOLDER/small & <.nmea", "format": "nmea",
      "sentences": 8, "fixes": 4, "void": 1, "rejected": {"wrong checksum": 1, "no date": 1},
      "start": "2018-05-04T10:00:00Z", "end": "2018-05-04T10:00:09Z", "seconds": 9, "maxSpeedKnots": 30.0,
      "bounds": {"north": -0.02, "south": -0.02, "east": -179.993, "west": 179.999},
      "gaps": [{"from": "2018-05-04T10:00:01Z", "to": "2018-05-04T10:00:07Z"},
               {"from": "2018-05-04T10:00:07Z", "to": "2018-05-04T10:00:09Z"}],
      "shiftSeconds": 0, "headerMark": false, "movie": null, "warnings": []})"));
  EXPECT_NEAR(meters, 6'378'137 * 0.008 * M_PI / 180, 0.2);
  EXPECT_NEAR(meanKnots, meters / 9 * 3600 / 1852, 0.05);
  EXPECT_FALSE(Json::parse(Gps({"show", Path("small & <.nmea"), "--json"}).output).contains("points"));
  EXPECT_EQ(Gps({"show", Path("small & <.nmea"), "--csv"}).output,
            "second,time,latitude,longitude,speed_knots,kind\n"
            "0,2018-05-04T10:00:00Z,-0.0200000,179.9990000,10.000,logged\n"
            "1,2018-05-04T10:00:01Z,-0.0200000,-179.9990000,20.000,logged\n"
            "2,2018-05-04T10:00:02Z,-0.0200000,-179.9980000,20.000,held\n"
            "3,2018-05-04T10:00:03Z,-0.0200000,-179.9970000,20.000,held\n"
            "4,2018-05-04T10:00:04Z,-0.0200000,-179.9960000,20.000,held\n"
            "5,2018-05-04T10:00:05Z,-0.0200000,-179.9950000,,interpolated\n"
            "6,2018-05-04T10:00:06Z,-0.0200000,-179.9940000,,interpolated\n"
            "7,2018-05-04T10:00:07Z,-0.0200000,-179.9930000,30.000,logged\n"
            "8,2018-05-04T10:00:08Z,-0.0200000,-179.9930000,30.000,held\n"
            "9,2018-05-04T10:00:09Z,-0.0200000,-179.9930000,30.000,logged\n");
  EXPECT_EQ(points[6], Json::parse(R"({"second": 6, "time": "2018-05-04T10:00:06Z", "latitude": -0.02,
                                       "longitude": -179.994, "speedKnots": null, "kind": "interpolated"})"));
  const std::string gpx = Gps({"show", Path("small & <.nmea"), "--gpx"}).output;
  m_folder.Write("again.gpx", gpx);
  const Json again = Show("again.gpx");
  EXPECT_EQ(again["fixes"], 4);
  EXPECT_EQ(again["points"], points);
  EXPECT_EQ(again["gaps"], json["gaps"]);
  EXPECT_NE(gpx.find("<trkseg>", gpx.find("</trkseg>")), gpx.npos) << "the gap is no way";
  const std::string text = Gps({"show", Path("small & <.nmea")}).output;
  for (const char* line :
       {"8 sentences: 4 fixes, 1 void, 2 rejected (1 no date, 1 wrong checksum)\n", "Passed over 1 GSV\n",
        " (0:09), 2 gaps, the longest 0:06 from 10:00:01\n", "at most 55.6 km/h (30.0 knots)",
        "0.02000 S to 0.02000 S, 179.99900 E to 179.99300 W\n"})
    EXPECT_THAT(text, HasSubstr(line));
}

TEST_F(GpsCommandsTest, SidecarsOfCamerasAreShownWithMarkAndShiftAndWithoutVoidPositions) {
  m_folder.Write("clip.mts", "film");
  const std::string log =
      "@Kelogps/d/wgs-84/20180504100000.000/\n"
      "@Kelogpsoption/0/20180504100000.000/20180504095940.000/\n"
      "$GPGGA,100000.000,\n$GPRMC,100000.000,A,3530.0000,N,13930.0000,E,10.0,,040518,\n"
      "$GPGGA,100001.000,\n$GPRMC,100001.000,V,0000.0000,N,00000.0000,E,99.0,,040518,\n"
      "$GPGGA,100002.000,\n$GPRMC,100002.000,A,3530.0000,N,13930.0000,E,10.0,,040518,\n";
  m_folder.Write("clip.mts.moff", MoffBytes({}, {{7, {{"BINA", log}}}}));
  const Json json = Show("clip.mts");
  EXPECT_EQ(json["sentences"], 6);
  EXPECT_EQ(json["fixes"], 2);
  EXPECT_EQ(json["void"], 1);
  EXPECT_EQ(json["shiftSeconds"], -20);
  EXPECT_EQ(json["headerMark"], true);
  EXPECT_EQ(json["maxSpeedKnots"], 10.0);
  EXPECT_EQ(json["gaps"].size(), 1U);
  EXPECT_THAT(Gps({"show", Path("clip.mts")}).output, HasSubstr("Shift       -20 s\nHeader mark yes"));
  m_folder.Write("clip.mts.moff", MoffBytes({}, {{6, {{"BINA", log}}}}));
  EXPECT_THAT(Gps({"show", Path("clip.mts")}).errors, HasSubstr("FOLDER/clip.mts.moff holds no GPS log"));
}

TEST_F(GpsCommandsTest, LogWithoutSpeedsHasNoGreatestOne) {
  std::string gpx = "<gpx><trk><trkseg>";
  for (const char* minute : {"00", "01", "02"}) {
    gpx += std::string("<trkpt lat=\"1.") + minute + "\" lon=\"2\"><time>2024-05-01T10:" + minute +
           ":00Z</time></trkpt>";
  }
  m_folder.Write("sparse\xFF\x1B.gpx", gpx + "</trkseg></trk></gpx>");
  EXPECT_TRUE(Show("sparse\xFF\x1B.gpx")["maxSpeedKnots"].is_null());
  const VrxResult text = Gps({"show", Path("sparse\xFF\x1B.gpx")});
  EXPECT_THAT(text.output, HasSubstr("Speed       not in the log, on average"));
  EXPECT_THAT(text.output, Not(HasSubstr("\x1B")));
  EXPECT_THAT(Gps({"show", Path("sparse\xFF\x1B.gpx"), "--gpx"}).output,
              HasSubstr("<name>FOLDER/sparse\xEF\xBF\xBD.gpx</name>"));
}

struct Alignment {
  const char* name;
  const char* day;          // that the movie states; empty: none
  std::optional<int> modd;  // zone in the sidecar of metadata
  std::vector<std::string> options;
  int shift;
  std::optional<int> driveSecond;  // at which the movie begins; nothing: log and movie do not meet
  const char* covers;
  std::vector<const char*> notes;            // all lines on standard error hold one of these, in turn
  std::array<int, 5> local{5, 1, 14, 0, 0};  // the movie's own date: month, day, clock
};

TEST_F(GpsCommandsTest, LogMeetsTheMovieAndTheTimelineFindsItThere) {
  const DriveOptions drive{.tunnelSeconds = 0};
  const DriveRoute route(drive);
  m_folder.Write("log", LogOf("10hz", drive));
  const char* noZone = "2024-05-01T14:00:00";
  const Alignment cases[] = {
      {"zone of the movie", kDay, {}, {}, 0, 0, "00:05 to 10:00 of 10:00", {}},
      {"fast clock", kDay, {}, {"--offset", "-30"}, -30, -30, "00:35 to 10:00 of 10:00", {}},
      {"slow clock", kDay, {}, {"--offset", "60"}, 60, 60, "00:00 to 09:00 of 10:00", {}},
      {"zone of the sidecar", noZone, 120, {}, 0, 0, "00:05 to 10:00 of 10:00", {}},
      {"the sidecar goes first", kDay, 60, {}, 0, {}, "nothing", {"one hour earlier"}},
      {"no zone", noZone, {}, {}, 0, {}, "nothing", {"taken as UTC", "about 2 hours earlier"}},
      {"zone given", noZone, {}, {"--zone", "120"}, -7200, 0, "00:05 to 10:00 of 10:00", {}},
      {"another zone given", kDay, {}, {"--zone", "60"}, 3600, {}, "nothing", {"with --offset -3600\n"}},
      {"start", kDay, {}, {"--start", "2024-05-01T12:03:00Z"}, 180, 180, "00:00 to 07:00 of 10:00", {}},
      {"local start",
       kDay,
       {},
       {"--start", "2024-05-01T14:03:00+02:00", "--offset", "10"},
       190,
       190,
       "00:00 to 06:50 of 10:00",
       {}},
      {"no date",
       "",
       {},
       {"--start", "2024-05-01T12:03:00Z"},
       0,
       180,
       "00:00 to 07:00 of 10:00",
       {"the OriginalDateTime 2024-05-01T12:03:00Z in"},
       {5, 1, 12, 3, 0}},
      {"no date but a zone",
       "",
       120,
       {"--start", "2024-05-01T12:03:00Z", "--offset", "-3"},
       0,
       177,
       "00:00 to 07:03 of 10:00",
       {"the OriginalDateTime 2024-05-01T14:02:57Z in"},
       {5, 1, 14, 2, 57}},
      {"other day",
       "2024-05-03T14:00:00+0200",
       {},
       {},
       0,
       {},
       "nothing",
       {"2 days earlier.*--offset -172800\n"}},
      {"advice counts the offset",
       kDay,
       {},
       {"--offset", "3620"},
       3620,
       {},
       "nothing",
       {"one hour earlier.*--offset 20\n"}},
      {"other recording",
       "2024-06-01T20:20:00+0200",
       {},
       {},
       0,
       {},
       "nothing",
       {"31 days before.*another recording\n"}},
  };
  for (const Alignment& c : cases) {
    SCOPED_TRACE(c.name);
    m_folder.Write("drive.mp4", *c.day == '\0' ? UndatedMovie() : DatedMovie(c.day));
    fs::remove(Path("drive.mp4.moff"));
    fs::remove(Path("drive.mp4.modd"));
    if (c.modd) WriteZone(*c.modd);
    const VrxResult result = Import("drive.mp4", "log", c.options);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr(std::string("\nthe log covers ") + c.covers));
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), static_cast<std::ptrdiff_t>(c.notes.size()))
        << result.errors;
    std::istringstream lines(result.errors);
    std::string line;
    for (const char* note : c.notes) {
      std::getline(lines, line);
      EXPECT_THAT(line + "\n", testing::ContainsRegex(note));
    }
    const Json json = Show("drive.mp4");
    EXPECT_EQ(json["shiftSeconds"], c.shift);
    if (*c.day != '\0') {
      EXPECT_EQ(json["movie"]["coveredFrom"].is_null(), !c.driveSecond);
      EXPECT_EQ(json["movie"]["seconds"], kMovieSeconds);
    }
    LogDataEntry clip{.videoId = 1, .endTime = kMovieSeconds, .duration = kMovieSeconds};
    clip.gpsLogFilePath = XpNarrowString(Path("drive.mp4")).ToWide();
    const auto [month, day, hour, minute, second] = c.local;
    clip.originalDateTime.SetDateTime(2024, month, day, hour, minute, second);
    if (!c.driveSecond) continue;
    vrx::gps::GpsTimeline timeline;
    vrx::gps::PrepareTimeline({clip}, timeline);
    EXPECT_EQ(timeline.clips.at(0).summary.timeShiftSeconds, c.shift);
    ASSERT_EQ(timeline.points.size(), kMovieSeconds + 1U);
    for (int s = 0; s <= kMovieSeconds; s += 20) {
      const int inDrive = s + *c.driveSecond;
      const bool isLogged = inDrive >= 5 && inDrive <= 600;
      const KVUGPSInfo& point = timeline.points[static_cast<std::size_t>(s)];
      ASSERT_EQ(point.kind == GPSPointLogged, isLogged) << s;
      const RouteState state = route.At(inDrive * 1000);
      ASSERT_NEAR(point.latitude / 3600, isLogged ? state.latitude : point.latitude / 3600, 2e-7) << s;
      ASSERT_NEAR(point.longitude / 3600, isLogged ? state.longitude : point.longitude / 3600, 2e-7) << s;
    }
  }
}

TEST_F(GpsCommandsTest, RolledDatesAreMovedOnlyWhenAsked) {
  m_folder.Write("drive.mp4", DatedMovie(kDay));
  m_folder.Write("log", LogOf("rolled", {}));
  const VrxResult asWritten = Import("drive.mp4", "log");
  EXPECT_EQ(asWritten.status, 0);
  EXPECT_THAT(asWritten.errors, HasSubstr("1024 weeks earlier than the movie's"));
  EXPECT_THAT(asWritten.errors, HasSubstr("if so, import it with --fix-week-rollover\n"));
  EXPECT_EQ(Show("log")["start"], "2004-09-15T12:00:05Z");
  const VrxResult moved = Import("drive.mp4", "log", {"--fix-week-rollover"});
  EXPECT_THAT(moved.output, HasSubstr("the log covers 00:05 to 10:00 of 10:00"));
  EXPECT_EQ(Show("drive.mp4")["start"], "2024-05-01T12:00:05Z");
  EXPECT_THAT(Gps({"show", Path("log"), "--fix-week-rollover"}).output, HasSubstr("1 May 2024, 12:00:05"));
}

TEST_F(GpsCommandsTest, ImportKeepsTheRestOfTheSidecarAndTouchesNoneThatItCannotRead) {
  m_folder.Write("log", LogOf("classic", {.seconds = 20}));
  m_folder.Write("clip.mts", "film");
  const std::vector<std::string> options{"--start", "2024-05-01T12:00:00Z"};
  const MoffSource source{"clip.mts", 4, 1, 2};
  const std::vector<MoffGroup> groups{{3, {{"BINA", "other"}, {"STPD", "tree"}}}, {7, {{"BINA", "old log"}}}};
  m_folder.Write("clip.mts.moff", MoffBytes(source, groups));
  EXPECT_EQ(Import("clip.mts", "log", options).status, 0);
  const Json list = Json::parse(RunVrx({{"moff", "list", "--json", Path("clip.mts")}}).output);
  ASSERT_EQ(list["groups"].size(), 2U);
  EXPECT_EQ(list["groups"][0]["values"], Json({1, 2, 3, 4}));
  for (const auto& [group, entry, expected] : {std::tuple{"3", "1", "other"},
                                               {"3", "2", "tree"},
                                               {"7", "1", "@Kelogps/wgs-84/20240501120005.000/\r\n"}}) {
    const VrxResult result = RunVrx(
        {{"moff", "extract", Path("clip.mts"), "--group", group, "--entry", entry, "-o", Path("out")}});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(m_folder.Read("out"), testing::StartsWith(expected));
  }
  EXPECT_EQ(RunVrx({{"moff", "validate", Path("clip.mts")}}).status, 0);

  for (const auto& [bytes, cause] :
       {std::pair{MoffBytes(source, groups).substr(0, 900), "cannot be read and is left as it is"},
        std::pair{MoffBytes({"clip.mts", 5, 1, 2}, groups), "belongs to another movie (0x8105) and is left"},
        std::pair{std::string(), "cannot be read and is left as it is"}}) {
    m_folder.Write("clip.mts.moff", bytes);
    const VrxResult result = Import("clip.mts", "log", options);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(std::string("vrx: error: FOLDER/clip.mts.moff ") + cause));
    EXPECT_EQ(m_folder.Read("clip.mts.moff"), bytes);
  }
  // A disk that is full leaves the old one.
  m_folder.Write("clip.mts.moff", MoffBytes(source, groups));
  const VrxResult full =
      RunVrx({.arguments = {"gps", "import", Path("clip.mts"), Path("log"), options[0], options[1]},
              .fileSizeLimit = 1000});
  EXPECT_EQ(full.status, 1);
  EXPECT_THAT(full.errors, HasSubstr("the disk is full (0x8109)"));
  EXPECT_EQ(m_folder.Read("clip.mts.moff"), MoffBytes(source, groups));
  EXPECT_EQ(m_folder.Count(), 4);
}

TEST_F(GpsCommandsTest, FilesThatCannotBeMovieAndLogAreRefused) {
  m_folder.Write("drive.mp4", DatedMovie(kDay));
  m_folder.Write("undated.mp4", UndatedMovie());
  m_folder.Write("log", LogOf("classic", {.seconds = 20}));
  m_folder.Write("empty", "");
  m_folder.Write("picture.png", "\x89PNG\r\n\x1a\n$GPRMC but not really");
  m_folder.Write("untimed.gpx", "<gpx><trk><trkseg><trkpt lat=\"1\" lon=\"2\"/></trkseg></trk></gpx>");
  m_folder.Write("route.gpx", "<gpx><rte><rtept lat=\"1\" lon=\"2\"/></rte></gpx>");
  m_folder.Write("gga", "$GPGGA,120000,4722.6140,N,00832.5020,E,1,09,0.9,408.3,M,48.0,M,,\r\n");
  m_folder.Write("far", "$GPRMC,100000,A,0001.2000,S,17959.9400,E,10,77,040595\r\n");
  fs::create_directory(Path("folder.mp4"));
  fs::create_symlink("drive.mp4", Path("link"));
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  ASSERT_EQ(Import("drive.mp4", "log").status, 0);
  const std::string before = m_folder.Read("drive.mp4.moff");
  const std::ptrdiff_t count = m_folder.Count();
  struct Case {
    const char* movie;
    const char* log;
    const char* cause;
  };
  for (const Case& c :
       {Case{"drive.mp4", "drive.mp4", "the movie and the log are the same file"},
        Case{"drive.mp4", "link", "the movie and the log are the same file"},
        Case{"drive.mp4", "drive.mp4.moff", "FOLDER/drive.mp4.moff is the movie's own sidecar"},
        Case{"drive.mp4.moff", "log", "FOLDER/drive.mp4.moff is a sidecar, not a movie"},
        Case{"none.mp4", "log", "FOLDER/none.mp4 does not exist"},
        Case{"folder.mp4", "log", "FOLDER/folder.mp4 is a folder, not a movie"},
        Case{"pipe", "log", "FOLDER/pipe is a device, a pipe or a socket, not a movie"},
        Case{"picture.png", "log", "FOLDER/picture.png is a picture, not a movie"},
        Case{"undated.mp4", "log", "undated.mp4 states no date: --start DATETIME"},
        Case{"drive.mp4", "none", "FOLDER/none cannot be read: it does not exist"},
        Case{"drive.mp4", "folder.mp4", "FOLDER/folder.mp4 cannot be read: it is no file"},
        Case{"drive.mp4", "pipe", "FOLDER/pipe cannot be read"},
        Case{"drive.mp4", "empty", "FOLDER/empty is empty"},
        Case{"drive.mp4", "picture.png", "is neither an NMEA log nor a GPX document"},
        Case{"drive.mp4", "undated.mp4", "is neither an NMEA log nor a GPX document"},
        Case{"drive.mp4", "untimed.gpx", "holds no position: 1 rejected (1 no time)"},
        Case{"drive.mp4", "route.gpx", "no track that was recorded\n"},
        Case{"drive.mp4", "gga", "the log has no RMC sentences"},
        Case{"drive.mp4", "far", "do not lie between the years 2000 and 2099"}}) {
    const VrxResult result = Import(c.movie, c.log);
    EXPECT_EQ(result.status, 1) << c.cause;
    EXPECT_THAT(result.errors, HasSubstr(c.cause));
    EXPECT_EQ(result.output, "");
  }
  EXPECT_EQ(m_folder.Read("drive.mp4.moff"), before);
  EXPECT_EQ(m_folder.Count(), count);
  for (const auto& option :
       {std::vector<std::string>{"--start", "yesterday"}, {"--zone", "841"}, {"--offset", "x"}})
    EXPECT_EQ(Import("drive.mp4", "log", option).status, 2) << option[1];
  for (const Case& c :
       {Case{"undated.mp4", "", "there is no sidecar FOLDER/undated.mp4.moff"},
        Case{"none.mp4", "", "there is no sidecar FOLDER/none.mp4.moff"},
        Case{"gga", "", "FOLDER/gga holds no position"}, Case{"pipe", "", "FOLDER/pipe cannot be read"},
        Case{"drive.mp4", "drive.mp4", "and would be overwritten"},
        Case{"drive.mp4", "link", "and would be overwritten"},
        Case{"drive.mp4", "drive.mp4.moff", "and would be overwritten"},
        Case{"drive.mp4.moff", "drive.mp4", "and would be overwritten"},
        Case{"log", "log", "and would be overwritten"},
        Case{"log", "folder.mp4", "cannot be written: no permission, or it is a folder"},
        Case{"log", "none/plot.png", "cannot be written: it cannot be made there"}}) {
    std::vector<std::string> arguments{"show", Path(c.movie)};
    if (*c.log != '\0') arguments.insert(arguments.end(), {"--plot", Path(c.log)});
    const VrxResult result = Gps(arguments);
    EXPECT_EQ(result.status, 1) << c.cause;
    EXPECT_THAT(result.errors, HasSubstr(c.cause));
  }
  EXPECT_EQ(m_folder.Read("drive.mp4.moff"), before);
  EXPECT_EQ(m_folder.Read("drive.mp4"), DatedMovie(kDay));
  EXPECT_EQ(m_folder.Count(), count);
}

TEST_F(GpsCommandsTest, SidecarOfAMovieOfAnyExtensionIsShown) {
  m_folder.Write("drive.film", "film");
  m_folder.Write("log", LogOf("classic", {.seconds = 20}));
  ASSERT_EQ(Import("drive.film", "log", {"--start", "2024-05-01T12:00:00Z"}).status, 0);
  EXPECT_EQ(Show("drive.film")["source"], "FOLDER/drive.film.moff");
}

/// Where a picture has a colour, given as 0xRRGGBB.
struct Plot {
  explicit Plot(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return;
    image.format = PNG_FORMAT_RGB;
    width = static_cast<int>(image.width);
    height = static_cast<int>(image.height);
    bytes.resize(PNG_IMAGE_SIZE(image));
    png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr);
  }
  int At(int x, int y) const {
    const std::size_t at =
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 3;
    return bytes[at] << 16 | bytes[at + 1] << 8 | bytes[at + 2];
  }
  /// Columns with that colour in the rows from `top` to before `bottom`.
  std::vector<int> Columns(int color, int top, int bottom) const {
    std::vector<int> columns;
    for (int x = 0; x < width; ++x) {
      for (int y = top; y < bottom; ++y) {
        if (At(x, y) != color) continue;
        columns.push_back(x);
        break;
      }
    }
    return columns;
  }
  std::vector<int> Rows(int color, int top, int bottom) const {
    std::vector<int> rows;
    for (int y = top; y < bottom; ++y) {
      for (int x = 0; x < width && (rows.empty() || rows.back() != y); ++x) {
        if (At(x, y) == color) rows.push_back(y);
      }
    }
    return rows;
  }

  int width = 0;
  int height = 0;
  std::vector<png_byte> bytes;
};

TEST_F(GpsCommandsTest, PlotShowsTheTrackInTrueShapeAndItsGap) {
  constexpr int kWay = 0xFF7300, kGap = 0x8A929B, kMovie = 0x2F7BFF, kGround = 0xFFFFFF;
  constexpr int kMapTop = 120, kMapBottom = 640, kMovieRow = 690;
  // A kilometre to the north, then one to the east, where a degree of longitude is half as long. The middle
  // third of the latter is a gap.
  std::string gpx = "<gpx><trk><trkseg>";
  for (int second = 0; second <= 120; ++second) {
    if (second > 80 && second < 100) continue;
    const std::string clock =
        std::to_string(100 + second / 60).substr(1) + ":" + std::to_string(100 + second % 60).substr(1);
    gpx += "<trkpt lat=\"" + std::to_string(60 + 0.009 * std::min(second, 60) / 60) + "\" lon=\"" +
           std::to_string(10 + 0.018 * std::max(second - 60, 0) / 60) + "\"><time>2024-05-01T12:" + clock +
           "Z</time></trkpt>";
  }
  m_folder.Write("log.gpx", gpx + "</trkseg></trk></gpx>");
  const std::string name = "drive " + std::string(120, 'W') + ".mp4";
  m_folder.Write(name, DatedMovie("2024-05-01T12:01:00Z"));
  ASSERT_EQ(Import(name, "log.gpx").status, 0);
  ASSERT_EQ(Gps({"show", Path(name), "--plot", Path("plot.png")}).status, 0);
  const Plot plot(Path("plot.png"));
  ASSERT_EQ(plot.width, 1600);
  ASSERT_EQ(plot.height, 1000);
  const auto columns = plot.Columns(kWay, kMapTop, kMapBottom);
  const auto rows = plot.Rows(kWay, kMapTop, kMapBottom);
  ASSERT_FALSE(columns.empty());
  const int wide = columns.back() - columns.front();
  EXPECT_GT(wide, 300);
  EXPECT_NEAR(wide, rows.back() - rows.front(), 6);
  EXPECT_NEAR(plot.Columns(kWay, rows.front(), rows.front() + 5).back(), columns.back(), 2) << "north is up";
  const auto gap = std::ranges::adjacent_find(columns, [](int a, int b) { return b - a > 1; });
  ASSERT_NE(gap, columns.end());
  const double gapStart = static_cast<double>(*gap - columns.front()) / wide;
  const double gapLength = static_cast<double>(*(gap + 1) - *gap) / wide;
  EXPECT_NEAR(gapStart, 1 / 3.0, 0.03);
  EXPECT_NEAR(gapLength, 1 / 3.0, 0.03);
  const auto dashes = plot.Columns(kGap, kMapTop, kMapBottom);
  EXPECT_NEAR(static_cast<double>(dashes.size()) / (wide * gapLength), 0.5, 0.1);
  EXPECT_GT(dashes.front(), *gap - 2);
  EXPECT_LT(dashes.back(), *(gap + 1) + 2);
  // The movie begins in the middle of the log and goes on after it.
  const auto movie = plot.Columns(kMovie, kMovieRow, kMovieRow + 1);
  ASSERT_FALSE(movie.empty());
  EXPECT_NEAR(movie.front(), (110 + 1560) / 2, 4);
  EXPECT_NEAR(movie.back(), 1566, 8);  // perhaps with an arrow
  bool isLabelled = false;
  for (int x = 60; x < 100; ++x) isLabelled = isLabelled || plot.At(x, 700) != kGround;
  EXPECT_TRUE(isLabelled) << "the scale has numbers up to its top";
  // The long title ends where the map ends.
  int lastInk = 0;
  for (int y = 20; y < 70; ++y) {
    for (int x = 0; x < plot.width; ++x) lastInk = plot.At(x, y) == kGround ? lastInk : std::max(lastInk, x);
  }
  EXPECT_NEAR(lastInk, 1540, 20);

  // Without the movie in it the log has no bar; without a position there still is a picture.
  ASSERT_EQ(Import(name, "log.gpx", {"--offset", "90"}).status, 0);
  ASSERT_EQ(Gps({"show", Path(name), "--plot", Path("plot.png")}).status, 0);
  EXPECT_TRUE(Plot(Path("plot.png")).Columns(kMovie, kMovieRow, kMovieRow + 1).empty());
  m_folder.Write("small", kSmallLog);
  ASSERT_EQ(Gps({"show", Path("small"), "--plot", Path("small.png")}).status, 0);
  EXPECT_GT(Plot(Path("small.png")).Columns(kGap, kMapTop, kMapBottom).size(), 300U) << "the short way";
  m_folder.Write("void", "$GPRMC,100003,V,,,,,,,040518\r\n");
  EXPECT_EQ(Gps({"show", Path("void"), "--plot", Path("void.png")}).status, 1);
  EXPECT_EQ(Plot(Path("void.png")).width, 1600);
}

}  // namespace
