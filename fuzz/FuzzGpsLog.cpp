// Reads any bytes as a GPS log and makes a track and its figures of it.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "gps/log/KVUGPSLogReader.h"
#include "gps/track/ResampleTrack.h"
#include "gps/track/TrackMetrics.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vrx::gps;
  const std::string_view log(reinterpret_cast<const char*>(data), size);
  XpDateTime first;
  first.SetDateTime(2018, 5, 4, 10, 0, 0);
  XpDateTime last = first;
  last.AddMinutesSeconds(60, 0);
  KVUGPSLogReader reader;
  KVUGPSInfoList list;
  std::int64_t shift = 0;
  bool mark = false;
  ParseGPSLog(log, reader, first, last, list, 60, shift, mark);
  ResampleTrack(list, first, last, 60);
  AccumulateDistance(list, 0);
  AccumulateDistanceFrom(list, 1, first);
  KVSGPSBounds bounds;
  TrackBounds(list, 3.0, bounds);
  const double figures[] = {TotalDistance(list, 2, 0.0),
                            AverageSpeed(list, 2, 1.0),
                            MaxSpeed(list),
                            DistanceInRange(list, 0, first, last),
                            AverageSpeedInRange(list, 0, first, last),
                            bounds.width,
                            bounds.height};
  for (const double figure : figures) {
    if (!std::isfinite(figure)) std::abort();
  }
  return 0;
}
