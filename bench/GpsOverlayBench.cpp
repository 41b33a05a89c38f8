// What a frame of the GPS overlay costs at 1920 by 1080: where something changed, where nothing did, and with
// logs of a minute and of twelve hours.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

#include <benchmark/benchmark.h>

#include "content/moff/MoffSource.h"
#include "content/moff/SfMoffFile.h"
#include "drawing/pango/PangoTextRenderer.h"
#include "gps/painter/KVSGPSOverlayPainterPlugIn.h"
#include "overlay/callback/DrawnArea.h"
#include "overlay/resources/LoadResources.h"

namespace {

constexpr std::int32_t kWidth = 1920, kHeight = 1080;

/// A winding drive with a fix a second.
std::string DriveLog(int seconds) {
  std::string log = "@Kelogps/any/wgs-84/20180504000000.000/\r\n";
  for (int i = 0; i < seconds; ++i) {
    char line[200];
    const double way = i * 60.0 / seconds;
    const double latitude = 30 + 8 * std::sin(way) + 2 * std::sin(7 * way),
                 longitude = 30 + 12 * std::cos(way * 0.7);
    std::snprintf(line, sizeof line,
                  "$GPGGA,%02d%02d%02d.000,35%07.4f,N,139%07.4f,E,1,08,1.0,10.0,M,,,,*00\r\n"
                  "$GPRMC,%02d%02d%02d.000,A,35%07.4f,N,139%07.4f,E,%.2f,,040518,,,A*00\r\n",
                  i / 3600, i / 60 % 60, i % 60, latitude, longitude, i / 3600, i / 60 % 60, i % 60, latitude,
                  longitude, 20 + 15 * std::sin(i * 0.05));
    log += line;
  }
  return log;
}

class GpsMovie {
 public:
  GpsMovie(std::int32_t scenario, int seconds)
      : m_folder(std::filesystem::temp_directory_path() / "vrx-bench-gps") {
    std::filesystem::create_directories(m_folder);
    const XpString movie = XpNarrowString((m_folder / "drive.mp4").string()).ToWide();
    std::ofstream(m_folder / "drive.mp4") << "a movie";
    const std::string log = DriveLog(seconds);
    SfMoffFile sidecar;
    sidecar.Create(movie);
    sidecar.SetGroupData(vrx::moff::kGpsGroup, {}, std::as_bytes(std::span(log)));
    sidecar.Close(true);
    info.videoWidth = kWidth;
    info.videoHeight = kHeight;
    info.videoLayoutType = 1;
    info.saveMovieMode = true;
    info.gpsUnitFromUser = 0;
    for (std::int32_t i = 0; i < 14; ++i) info.stringTable[i] = u"Words";
    TemplateInfo& look = info.templateInfo;
    look.valid = true;
    look.scenarioType = scenario;
    look.width = kWidth;
    look.height = kHeight;
    LogDataEntry clip{.videoId = 1, .endTime = double(seconds), .gpsLogFilePath = movie};
    clip.originalDateTime.SetDateTime(2018, 5, 4, 0, 0, 0);
    clip.duration = seconds;
    look.logData = {clip};
    look.resources = vrx::overlay::LoadTemplateResource(scenario);
  }
  ~GpsMovie() { std::filesystem::remove_all(m_folder); }

  PainterInfo info;

 private:
  std::filesystem::path m_folder;
};

/// Draws one moment after the other, as the frame callback does: a stamp first, then the frame.
void DrawGps(benchmark::State& state) {
  const auto seconds = static_cast<int>(state.range(1));
  const std::int64_t stepMs = state.range(2);
  const GpsMovie movie(static_cast<std::int32_t>(state.range(0)), seconds);
  vrx::drawing::PangoTextRenderer text;
  KVSGPSOverlayPainterPlugIn painter(text);
  if (!painter.SetPainterInfo(&movie.info, &movie.info.templateInfo)) return;
  PixmapHolder frame(new XpPixmap32);
  if (frame->Allocate(kWidth, kHeight) != XpOk) return;
  vrx::overlay::DrawnArea drawn;
  std::int64_t ms = seconds * 500;
  painter.DrawForVideo(1, ms, 0, 0, frame);
  drawn.Find(*frame, painter.GetDrawnRows());
  PainterStamp shown = painter.GetContentStamp({.videoId = 1, .gpsMs = ms});
  const bool hasPosition = drawn.GetFirstRow() < kHeight * 2 / 3;  // the route lies there
  std::int64_t redrawn = 0;
  for (auto _ : state) {
    ms = ms + stepMs < seconds * 1000 ? ms + stepMs : seconds * 500;
    const PainterStamp stamp = painter.GetContentStamp({.videoId = 1, .gpsMs = ms});
    if (stamp == shown) continue;
    drawn.Clear(*frame);
    painter.DrawForVideo(1, ms, 0, 0, frame);
    drawn.Find(*frame, painter.GetDrawnRows());
    shown = stamp;
    ++redrawn;
  }
  if (!painter.HasTimeline() || !hasPosition) state.SkipWithError("the log has no position");
  state.counters["redrawn"] =
      benchmark::Counter(static_cast<double>(redrawn), benchmark::Counter::kAvgIterations);
}
// Scenario (1 needle, 4 graph), length of the log in seconds, and what a frame moves on: a second, a frame of
// 25 a second, nothing.
BENCHMARK(DrawGps)
    ->ArgNames({"scenario", "log", "step"})
    ->ArgsProduct({{1, 4}, {60, 43200}, {1000, 40, 0}})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
