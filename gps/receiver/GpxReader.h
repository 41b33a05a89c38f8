// Reads the track points of GPX 1.0 and 1.1 documents.
#pragma once

#include <span>

#include "gps/receiver/ReceiverLog.h"
#include "vrx/XpResult.h"

namespace vrx::receiver {

/// Replaces `log` by the points of all tracks, in the document's order. The speed of a point is that of the
/// first "speed" inside it, whichever prefix and depth that has, in metres a second. Times without a zone are
/// UTC. A document that breaks off gives the points up to there and a warning. XpErrNotWellFormed when there
/// are none, XpErrInvalidFile when it is another kind of document.
XpResult ReadGpx(std::span<const char> bytes, const ReadOptions& options, ReceiverLog& log);

/// True when the bytes begin as a GPX document, in UTF-8 or UTF-16.
bool HoldsGpx(std::span<const char> bytes);

}  // namespace vrx::receiver
