// How long it takes to read a GPS log and to make the track and its figures of it, by the hours of the log.
#include <cmath>
#include <cstdio>
#include <string>

#include <benchmark/benchmark.h>

#include "gps/log/KVUGPSLogReader.h"
#include "gps/track/ResampleTrack.h"
#include "gps/track/TrackMetrics.h"

namespace {

using namespace vrx::gps;

XpDateTime Start() {
  XpDateTime start;
  start.SetDateTime(2018, 5, 4, 0, 0, 0);
  return start;
}

/// One fix a second, with a gap of a minute each quarter of an hour.
std::string WriteLog(int seconds) {
  std::string log = "@Kelogps/any/wgs-84/20180504000000.000/\r\n";
  for (int i = 0; i < seconds; ++i) {
    if (i % 900 >= 840) continue;
    char line[200];
    std::snprintf(line, sizeof line,
                  "$GPGGA,%02d%02d%02d.000,35%07.4f,N,139%07.4f,E,1,08,1.0,10.0,M,,,,*00\r\n"
                  "$GPRMC,%02d%02d%02d.000,A,35%07.4f,N,139%07.4f,E,%.2f,,040518,,,A*00\r\n",
                  i / 3600, i / 60 % 60, i % 60, 30 + 20 * std::sin(i * 1e-4), 30 + 20 * std::cos(i * 1e-4),
                  i / 3600, i / 60 % 60, i % 60, 30 + 20 * std::sin(i * 1e-4), 30 + 20 * std::cos(i * 1e-4),
                  10 + 5 * std::sin(i * 1e-2));
    log += line;
  }
  return log;
}

void ReadLogAndMakeTrack(benchmark::State& state) {
  const int seconds = static_cast<int>(state.range(0)) * 3600 - 1;
  const std::string log = WriteLog(seconds);
  XpDateTime last = Start();
  last.AddMinutesSeconds(0, seconds);
  for (auto _ : state) {
    KVUGPSLogReader reader;
    KVUGPSInfoList list;
    std::int64_t shift = 0;
    bool mark = false;
    ParseGPSLog(log, reader, Start(), last, list, 0, shift, mark);
    ResampleTrack(list, Start(), last, 0);
    AccumulateDistance(list, 0);
    KVSGPSBounds bounds;
    TrackBounds(list, 0.0, bounds);
    benchmark::DoNotOptimize(TotalDistance(list, 0, 0.0) + MaxSpeed(list) + bounds.width);
    if (list.size() != static_cast<std::size_t>(seconds) + 1) state.SkipWithError("seconds are missing");
  }
  state.SetComplexityN(state.range(0));
}

}  // namespace

BENCHMARK(ReadLogAndMakeTrack)->Arg(3)->Arg(6)->Arg(12)->Arg(23)->Unit(benchmark::kMillisecond)->Complexity();
