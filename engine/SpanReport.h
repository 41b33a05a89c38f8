// Tells the host how the frames of a movie are made: which are copied and which are encoded, and why. Used by
// the sequence when it is made.
#pragma once

#include "vrx/VRXEngineExtras.h"

namespace vrx::engine {

/// Where spans go from now on; null ends that. Thread-safe, as is the other one.
void SetSpanCallback(VRXSpanFunction spans, void* context);

void ReportSpan(const VRXRenderSpan& span);

}  // namespace vrx::engine
