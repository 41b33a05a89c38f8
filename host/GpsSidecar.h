// Brings a receiver's log to a movie: finds the movie's place in it, and writes it into the movie's sidecar.
// The commands `gps import`, `make` and `new` use it.
#pragma once

#include <span>
#include <string>

#include "gps/receiver/LogAlignment.h"
#include "gps/receiver/ReceiverLog.h"
#include "vrx/XpString.h"

namespace vrx::host {

struct PlacedLog {
  receiver::Alignment alignment;
  std::string text;      // the log as a sidecar holds it
  bool isDated = false;  // the movie states no date of its own; it was given that of the request
};

/// `seconds` are not empty. `movie` gets the date of the request when it states none. False with the cause,
/// which names `logName` or `movieName`.
bool PlaceLog(std::span<const receiver::Fix> seconds, const receiver::AlignRequest& request,
              const std::string& logName, const std::string& movieName, receiver::MovieTime& movie,
              PlacedLog& placed, std::string& cause);

/// What most likely keeps movie and log apart, and how to bring them together with `verb` and an option;
/// empty when they overlap. `offsetSeconds` is the one that was given.
std::string MismatchText(const receiver::Alignment& alignment, std::int64_t offsetSeconds, const char* verb);

/// As documents have the dates of clips: local time, though a Z ends it.
std::string LocalDateText(const XpDateTime& date);

/// Puts the log into the sidecar of the movie at `movie`, with what the sidecar holds besides. False with the
/// cause, which names the file.
bool WriteGpsSidecar(const XpString& movie, const std::string& log, std::string& cause);

}  // namespace vrx::host
