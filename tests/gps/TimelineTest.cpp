// Logs in the sidecars of movies, and the clips of a movie joined to one timeline.
#include <gmock/gmock.h>

#include "content/moff/SfMoffFile.h"
#include "gps/log/GpsTime.h"
#include "gps/log/ReadGPSLog.h"
#include "gps/track/GeodesicDistance.h"
#include "gps/track/GpsTimeline.h"
#include "tests/foundation/FolderTest.h"
#include "tests/gps/GpsLogText.h"

namespace {

using namespace vrx::gps;

std::string Kinds(const KVUGPSInfoList& list) {
  std::string kinds;
  for (const KVUGPSInfo& point : list) kinds += "LBIAH"[point.kind];
  return kinds;
}

/// Fixes of each second from `first` to `last`, an arc-second a second along the equator.
std::string Fixes(int first, int last) {
  std::string log;
  for (int second = first; second <= last; ++second)
    log += Fix({.second = second, .latitude = 0.0, .longitude = second / 3600.0, .knots = 60.0 + second});
  return log;
}

const double kStep = GeodesicDistance(0, 0, 0, 1) / 1000.0;  // km

class TimelineTest : public FolderTest {
 protected:
  /// A movie, which need not be one, with a log in its sidecar.
  XpString Movie(const std::string& name, const std::string& log, std::uint32_t group = 7) {
    const XpString path = Put(name, "movie");
    SfMoffFile sidecar;
    EXPECT_EQ(sidecar.Create(path), XpOk);
    EXPECT_EQ(sidecar.SetGroupData(group, {1, 2, 3, 4}, std::as_bytes(std::span(log))), XpOk);
    EXPECT_EQ(sidecar.Close(true), XpOk);
    return path;
  }
  void WriteZone(const std::string& name, int minutes) {
    Put(name,
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>XMLFileType</key><string>ModdXML"
        "</string><key>MetaDataList</key><array><dict><key>FileTimeZoneOffset</key><integer>" +
            std::to_string(minutes) + "</integer></dict></array></dict></plist>");
  }
  LogDataEntry Clip(int videoId, const XpString& path, int start, double duration) {
    LogDataEntry clip;
    clip.videoId = videoId;
    clip.gpsLogFilePath = path;
    clip.originalDateTime = After(start);
    clip.duration = duration;
    clip.endTime = duration;
    return clip;
  }

  GpsTimeline timeline;
};

TEST_F(TimelineTest, LogIsReadFromTheSidecarOrTheReasonIsGiven) {
  KVUGPSLogReader reader;
  KVUGPSInfoList list(2);
  std::int64_t shift = 0;
  bool mark = false;
  const auto read = [&](const XpString& path) {
    return ReadGPSLog(path, reader, After(0), After(100), list, 0, shift, mark);
  };
  const XpString movie = Movie("a.mp4", "@Kelogps/d/wgs-84/\n" + Fixes(3, 5));
  EXPECT_EQ(read(movie), XpOk);
  EXPECT_EQ(list.size(), 3u);
  EXPECT_TRUE(mark);
  EXPECT_EQ(read(Path("a.mp4.moff")), XpOk);
  EXPECT_EQ(list.size(), 3u);
  EXPECT_EQ(read(u""), XpErrInvalidArgument);
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(read(Path("none.mp4")), XpErrFileNotFound);
  EXPECT_EQ(read(Path("")), XpErrFileNotFound);
  EXPECT_EQ(read(Movie("b.mp4", Fixes(3, 5), 6)), XpErrFileNotFound);
  Put("c.mp4", "movie");
  EXPECT_NE(read(Path("c.mp4")), XpOk);
  // A transport stream that is not the one of the sidecar.
  const XpString changed = Movie("d.mts", Fixes(3, 5));
  EXPECT_EQ(read(changed), XpOk);
  Put("d.mts", "another movie");
  EXPECT_EQ(read(changed), XpErrFileNotFound);
}

TEST_F(TimelineTest, ZoneComesFromTheSidecarOrIsUtc) {
  const XpString movie = Movie("a.mp4", Fixes(0, 60));
  EXPECT_EQ(FindTimeZoneMinutes(movie), 0);
  WriteZone("a.mp4.modd", 540);
  EXPECT_EQ(FindTimeZoneMinutes(movie), 540);
  PrepareTimeline({Clip(1, movie, 10 + 540 * 60, 4)}, timeline);
  EXPECT_EQ(Kinds(timeline.points), "LLLLL");
  EXPECT_EQ(Clock(timeline.points[0].time), "2018-05-04 19:00:10");
  EXPECT_EQ(Clock(timeline.clips[0].points[0].time), "2018-05-04 10:00:10");
  EXPECT_EQ(timeline.clips[0].summary.timeZoneMinutes, 540);
}

TEST_F(TimelineTest, ShiftOfTheLogMovesTheTrackAndItsRange) {
  const XpString movie =
      Movie("a.mp4", "@Kelogpsoption/x/20180504100000.000/20180504100020.000/\n" + Fixes(25, 60));
  PrepareTimeline({Clip(1, movie, 0, 10)}, timeline);
  EXPECT_EQ(Kinds(timeline.points), "BBBBBLLLLLL");
  EXPECT_EQ(timeline.clips[0].summary.timeShiftSeconds, 20);
}

TEST_F(TimelineTest, ClipsThatShareALogShowTheirPartsOfIt) {
  const XpString movie = Movie("a.mp4", Fixes(0, 100));
  LogDataEntry first = Clip(1, movie, 0, 100);
  first.startTime = 10.75;
  first.endTime = 20.75;
  LogDataEntry second = first;
  second.videoId = 2;
  second.startTime = 50.0;
  second.endTime = 55.5;
  timeline.drawTrimmedOutArea = false;
  timeline.unit = kGpsUnitKilometers;
  PrepareTimeline({first, second}, timeline);
  ASSERT_EQ(timeline.clips.size(), 2u);
  const ClipTrack& a = *timeline.FindClip(1);
  EXPECT_EQ(Clock(a.points.front().time), "2018-05-04 10:00:10");
  EXPECT_EQ(Clock(a.points.back().time), "2018-05-04 10:00:21");  // one second past the end
  EXPECT_NEAR(a.summary.distance, 10 * kStep, 1e-4);
  EXPECT_NEAR(a.summary.averageSpeed, 10 * kStep * 360, 1e-2);
  EXPECT_DOUBLE_EQ(a.summary.maxSpeed, 80.0);
  EXPECT_NEAR(a.points.back().distance, 11 * kStep, 1e-4);
  EXPECT_NEAR(a.bounds.left, 10.0, 1e-3);
  EXPECT_NEAR(a.bounds.width, 11.0, 1e-3);
  EXPECT_DOUBLE_EQ(a.movieStartSeconds, 0.0);
  EXPECT_DOUBLE_EQ(a.movieEndSeconds, 10.0);
  const ClipTrack& b = *timeline.FindClip(2);
  EXPECT_NEAR(b.summary.distance, 5 * kStep, 1e-4);
  EXPECT_DOUBLE_EQ(b.movieStartSeconds, 10.0);
  EXPECT_DOUBLE_EQ(b.movieEndSeconds, 15.5);
  EXPECT_EQ(timeline.FindClip(3), nullptr);
  EXPECT_EQ(timeline.points.size(), a.points.size() + b.points.size());
  EXPECT_DOUBLE_EQ(timeline.totals.maxSpeed, 60.0 + 56.0);
  EXPECT_NEAR(timeline.totals.distance, 46 * kStep, 1e-4);
  // With all that was recorded both clips are the whole recording.
  timeline.drawTrimmedOutArea = true;
  PrepareTimeline({first, second}, timeline);
  EXPECT_EQ(timeline.clips[0].points.size(), 101u);
  EXPECT_DOUBLE_EQ(timeline.clips[1].movieEndSeconds, 200.0);
}

TEST_F(TimelineTest, FillingBeforeTheFirstFixThatIsShownIsNoPosition) {
  const XpString movie = Movie("a.mp4", Fixes(0, 5) + Fixes(15, 30));
  LogDataEntry clip = Clip(1, movie, 0, 30);
  clip.startTime = 6;
  clip.endTime = 18;
  timeline.drawTrimmedOutArea = false;
  PrepareTimeline({clip}, timeline);
  EXPECT_EQ(Kinds(timeline.clips[0].points), "BBBBBBBBBLLLLL");
  EXPECT_EQ(Kinds(timeline.logs.begin()->second.points).substr(0, 18), "LLLLLLHHHIIIIIILLL");
}

TEST_F(TimelineTest, PointsBetweenTheFixesOfTwoClipsBecomeTheWayBetweenThem) {
  const XpString a = Movie("a.mp4", Fixes(0, 4));
  const XpString none = Movie("b.mp4", "");
  const XpString c = Movie("c.mp4", Fixes(102, 110));
  PrepareTimeline({Clip(1, a, 0, 6), Clip(2, none, 50, 3), Clip(3, c, 100, 4)}, timeline);
  EXPECT_EQ(Kinds(timeline.points),
            "LLLLL"
            "II"
            "IIII"
            "II"
            "LLL");
  EXPECT_EQ(Kinds(timeline.clips[1].points), "BBBB");
  const std::size_t steps = 9;
  for (std::size_t i = 0; i <= steps; ++i)
    EXPECT_NEAR(timeline.points[4 + i].longitude, 4 + 98.0 * static_cast<double>(i) / steps, 1e-3) << i;
  EXPECT_EQ(timeline.lastFixIndex, timeline.points.size() - 1);
  // Without a later fix there is no way.
  PrepareTimeline({Clip(1, a, 0, 6), Clip(2, none, 50, 3)}, timeline);
  EXPECT_EQ(Kinds(timeline.points),
            "LLLLL"
            "AA"
            "AAAA");
  // A fix at index 0 does not count.
  const XpString one = Movie("d.mp4", Fixes(0, 0));
  PrepareTimeline({Clip(1, one, 0, 2), Clip(2, c, 100, 4)}, timeline);
  EXPECT_EQ(Kinds(timeline.points),
            "LHH"
            "BB"
            "LLL");
}

TEST_F(TimelineTest, WayBetweenClipsCrossesTheAntimeridianTheShortWay) {
  std::string west, east;
  for (int second = 0; second <= 4; ++second) {
    west += Fix({.second = second, .latitude = 1.0, .longitude = 179.99});
    east += Fix({.second = second, .latitude = 1.0, .longitude = -179.99});
  }
  PrepareTimeline({Clip(1, Movie("a.mp4", west), 0, 8), Clip(2, Movie("b.mp4", east), 0, 4)}, timeline);
  EXPECT_LT(timeline.totals.distance, 3.0);
  EXPECT_GT(timeline.totals.distance, 2.0);
}

TEST_F(TimelineTest, SecondPreparationReadsNoLogAgainAndStartsAfresh) {
  const XpString movie = Movie("a.mp4", Fixes(0, 20));
  PrepareTimeline({Clip(1, movie, 0, 20)}, timeline);
  const double kilometers = timeline.totals.distance;
  Put("a.mp4.moff", "gone");
  timeline.unit = kGpsUnitMiles;
  PrepareTimeline({Clip(1, movie, 0, 20)}, timeline);
  EXPECT_EQ(timeline.points.size(), 21u);
  EXPECT_NEAR(timeline.totals.distance, kilometers * 0.62137, 1e-9);
  // A clip whose log was never read adds nothing; one that cannot be read has no position.
  double seconds = 5.0;
  AddClipToTimeline(Clip(9, Path("other.mp4"), 0, 20), seconds, timeline);
  EXPECT_DOUBLE_EQ(seconds, 5.0);
  PrepareTimeline({Clip(9, Path("other.mp4"), 0, 3)}, timeline);
  EXPECT_EQ(Kinds(timeline.points), "BBBB");
  EXPECT_DOUBLE_EQ(timeline.totals.distance, 0.0);
}

}  // namespace
