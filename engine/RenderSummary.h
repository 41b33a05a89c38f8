// What the last finished movie of this process holds. Kept by the sequence for the module's export.
#pragma once

#include "engine/EngineResult.h"
#include "vrx/VRXEngineExtras.h"

namespace vrx::engine {

/// Thread-safe, as is the other one.
void KeepRenderSummary(const VRXRenderSummary& summary);

/// kFailed, and `summary` as it was, while no movie was finished.
Result LastRenderSummary(VRXRenderSummary& summary);

}  // namespace vrx::engine
