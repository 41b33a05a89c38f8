// A look into one source for a host that wants to tell its user about it before the render. Used by the
// module's export.
#pragma once

#include <string_view>

#include "engine/EngineResult.h"
#include "vrx/VRXEngine.h"

namespace vrx::engine {

/// Fills `probe`; on failure with the cause alone, and the result as VRX_CreateSequence would give it.
Result ProbeSource(std::u16string_view path, VRXSourceProbe& probe);

}  // namespace vrx::engine
