// What a source holds and whether it can be decoded, for a host that checks it before the render. Used by the
// module's export.
#pragma once

#include <span>
#include <string_view>

#include "engine/EngineResult.h"
#include "vrx/VRXEngineExtras.h"

namespace vrx::engine {

/// Decodes the first picture and the first samples, measures both, and fills `probe`. A source is usable with
/// either of them; on failure there is the cause alone, and the result as a sequence would give it.
Result ProbeSource(std::u16string_view path, VRXSourceProbe& probe);

/// Copies as many whole UTF-8 characters of `text` as fit into `field`, which is not empty, and ends them.
void FillText(std::string_view text, std::span<char> field);

}  // namespace vrx::engine
