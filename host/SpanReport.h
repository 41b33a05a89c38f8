// How a movie is made, for people and as JSON: the shares of copied and encoded frames, and the spans.
#pragma once

#include <cstdint>
#include <string>

#include "host/Console.h"
#include "host/EngineSpans.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

/// "99.2 %". Only all frames are 100 %, and only no frame is 0 %.
std::string ShareText(std::int64_t frames, std::int64_t ofFrames);

/// "17850 of 18000 frames (99.2 %) are copied, the sound is encoded: REASON".
std::string PlanText(const EngineSpans& spans);

/// A line for each span of the picture; for many of them one for each reason. `report` has the names of the
/// clips and the length of a frame.
std::string SpanLines(const EngineSpans& spans, const check::ProjectReport& report);

/// "copiedFrames", "encodedFrames" and the list "spans", into an object. "spansLeftOut" where there are too
/// many to keep.
void AddSpans(const EngineSpans& spans, Json& object);

}  // namespace vrx::host
