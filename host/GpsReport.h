// What `vrx gps show` found, as text for people, JSON, a table or a GPX document.
#pragma once

#include <optional>
#include <string>

#include "gps/receiver/LogAlignment.h"
#include "host/GpsFacts.h"
#include "host/GpsSource.h"

namespace vrx::host {

struct GpsReport {
  const GpsSource& source;
  const GpsFacts& facts;
  std::optional<receiver::Alignment> movie;  // where the movie lies in the log, when both are known
};

void PrintGpsText(const GpsReport& report);
/// With `points`, also each second of the track.
void PrintGpsJson(const GpsReport& report, bool points);
/// Both print positions that are in the log, none that are made between them; the table has a row for each
/// second and says of what kind it is.
void PrintGpsCsv(const GpsReport& report);
void PrintGpsGpx(const GpsReport& report);

/// "4 May 2018, 10:00:13 to 10:12:53 UTC, 12.3 km, at most 83 km/h", the line below a plot's title.
std::string GpsSummary(const GpsFacts& facts);

/// "3 rejected (2 wrong checksum, 1 no date)"; empty when there is none.
std::string RejectedText(const GpsSource& source);

}  // namespace vrx::host
