// Reads any bytes as the log of a receiver, makes seconds of it and writes them; what was written must read
// back.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "gps/receiver/GpxReader.h"
#include "gps/receiver/LogAlignment.h"
#include "gps/receiver/LogFormat.h"
#include "gps/receiver/LogWriter.h"
#include "gps/receiver/NmeaReader.h"
#include "gps/receiver/SecondFixes.h"

namespace {

using namespace vrx::receiver;

void Align(const std::vector<Fix>& seconds) {
  MovieTime movie{.durationSeconds = static_cast<double>(seconds.size())};
  movie.localStart.SetDateTime(2024, 5, 1, 12, 0, 0);
  Alignment alignment;
  const LogSpan span{seconds.front().utcMilliseconds, seconds.back().utcMilliseconds};
  if (AlignLog(movie, {}, span, alignment) != XpOk) return;
  if (DescribeOverlap(alignment).empty()) std::abort();
  if (DescribeMismatch(alignment).empty() != alignment.hasOverlap) std::abort();
}

void UseFixes(const ReceiverLog& log) {
  ThinCounts counts;
  std::vector<Fix> seconds = ThinToSeconds(log.fixes, &counts);
  if (seconds.size() + counts.voidFixes + counts.duplicates + counts.outOfOrder + counts.thinned !=
      log.fixes.size()) {
    std::abort();
  }
  if (seconds.empty()) return;
  FillSpeeds(seconds);
  Align(seconds);
  std::string text;
  if (WriteLog(seconds, {.shiftSeconds = 3600}, text) != XpOk) return;  // its years are fewer than those read
  constexpr std::int64_t kYear2080 = 3'471'292'800;  // receivers' dates of these years mean the last century
  if (NearestSecond(seconds.back()) >= kYear2080) return;
  ReceiverLog again;
  if (ReadNmea(text, {}, again) != XpOk) std::abort();
  if (again.GetRejected() != 0 || again.fixes.size() != seconds.size()) std::abort();
  for (std::size_t i = 0; i < seconds.size(); ++i) {
    if (NearestSecond(again.fixes[i]) != NearestSecond(seconds[i])) std::abort();
    if (DistanceMeters(again.fixes[i], seconds[i]) > 0.01) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span bytes(reinterpret_cast<const char*>(data), size);
  const bool isOdd = size % 2 == 1;
  const ReadOptions options{.correctWeekRollover = isOdd,
                            .xmlLimits = {.bytes = 1 << 16, .depth = 16, .elements = 1000}};
  ReceiverLog log;
  const LogFormat format = DetectFormat(bytes);
  if (ReadNmea(bytes, options, log) == XpOk) {
    UseFixes(log);
  } else if (format == LogFormat::Nmea) {
    std::abort();
  }
  if (format == LogFormat::Gpx && ReadGpx(bytes, options, log) == XpOk) UseFixes(log);
  return 0;
}
