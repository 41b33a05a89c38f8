#include "host/GpsSidecar.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include "content/moff/MoffSource.h"
#include "content/moff/SfMoffFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/number/Saturate.h"
#include "gps/receiver/LogWriter.h"
#include "gps/receiver/UtcTime.h"
#include "host/Console.h"
#include "host/FileCauses.h"

namespace vrx::host {
namespace {

XpDateTime LocalTime(std::int64_t utcSeconds, int zoneMinutes) {
  XpDateTime date;
  const receiver::CivilTime time =
      receiver::CivilUtc((utcSeconds + std::int64_t{zoneMinutes} * 60) * receiver::kMillisecondsPerSecond);
  date.SetDateTime(time.year, time.month, time.day, time.hour, time.minute, time.second);
  return date;
}

/// Opens the movie's sidecar with all that it holds, or begins one.
bool OpenSidecar(const XpString& movie, SfMoffFile& sidecar, std::string& cause) {
  const XpString path = moff::MoffPathFor(movie);
  const bool exists = XpPathIsFile(path);
  const XpResult result = exists ? sidecar.OpenFully(movie) : sidecar.Create(movie);
  if (result == XpOk) return true;
  cause = exists && result == XpErrFileNotFound
              ? Utf8(path) + " belongs to another movie (" + CodeText(result) + ") and is left as it is"
          : exists ? Utf8(path) + " cannot be read and is left as it is: " + ReadCause(result)
                   : Utf8(movie) + " cannot be read: " + ReadCause(result);
  return false;
}

}  // namespace

bool PlaceLog(std::span<const receiver::Fix> seconds, const receiver::AlignRequest& request,
              const std::string& logName, const std::string& movieName, receiver::MovieTime& movie,
              PlacedLog& placed, std::string& cause) {
  placed = {};
  if (!movie.localStart.IsValid() && request.startUtcSeconds) {
    movie.localStart =
        LocalTime(*request.startUtcSeconds + request.offsetSeconds, movie.zoneMinutes.value_or(0));
    placed.isDated = true;
  }
  if (!movie.localStart.IsValid()) {
    cause = movieName + " states no date: --start DATETIME says at which moment of the log it begins";
    return false;
  }
  const receiver::LogSpan span{seconds.front().utcMilliseconds, seconds.back().utcMilliseconds};
  if (receiver::AlignLog(movie, request, span, placed.alignment) != XpOk) {
    cause = logName + " and the movie are too far apart in time to be brought together";
    return false;
  }
  if (receiver::WriteLog(seconds, {.shiftSeconds = placed.alignment.shiftSeconds}, placed.text) == XpOk)
    return true;
  cause = logName + ": its dates do not lie between the years 2000 and 2099";
  return false;
}

bool WriteGpsSidecar(const XpString& movie, const std::string& log, std::string& cause) {
  SfMoffFile sidecar;
  if (!OpenSidecar(movie, sidecar, cause)) return false;
  XpResult result = sidecar.SetGroupData(moff::kGpsGroup, {}, std::as_bytes(std::span(log)));
  const XpString path = sidecar.GetMoffPath();
  if (result == XpOk) result = sidecar.Close(true);
  if (result != XpOk) cause = Utf8(path) + " cannot be written: " + WriteCause(result);
  return result == XpOk;
}

std::string MismatchText(const receiver::Alignment& alignment, std::int64_t offsetSeconds, const char* verb) {
  if (alignment.hasOverlap) return {};
  const std::string advice = std::string("; if so, ") + verb + " it ";
  const std::int64_t better = SaturatedAdd(offsetSeconds, alignment.correctionSeconds);
  const std::string cause = receiver::DescribeMismatch(alignment);
  switch (alignment.mismatch) {
    case receiver::Mismatch::OneHour:
    case receiver::Mismatch::Zone:
    case receiver::Mismatch::WholeDays:
      return cause + advice + (better == 0 ? "without --offset" : "with --offset " + std::to_string(better));
    case receiver::Mismatch::WeekRollover:
      return cause + advice + "with --fix-week-rollover";
    case receiver::Mismatch::None:
    case receiver::Mismatch::OtherRecording:
      break;
  }
  return cause;
}

std::string LocalDateText(const XpDateTime& date) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02dZ", date.GetYear(), date.GetMonth(),
                date.GetDay(), date.GetHour(), date.GetMinute(), date.GetSecond());
  return text.data();
}

}  // namespace vrx::host
