// One clip of a movie with the log of its recording, as painter documents list them.
#pragma once

#include <cstdint>

#include "foundation/time/XpDateTime.h"
#include "vrx/XpString.h"

struct LogDataEntry {
  std::int32_t videoId = 0;
  double startTime = 0.0;       // s in the clip: where the part that is shown begins
  double endTime = 0.0;         // s in the clip: where it ends
  XpString gpsLogFilePath;      // the movie whose sidecar holds the log, or the sidecar
  XpDateTime originalDateTime;  // when the clip's recording began, in its own local time
  double duration = 0.0;        // s of the whole clip
  std::uint64_t line = 0;       // of the document, on which the entry begins; 0 when unknown
};
