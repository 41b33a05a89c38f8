// Parses the JSON of a timeline within limits, without its metadata. The reader of timelines uses it.
#pragma once

#include <span>
#include <string>

#include <nlohmann/json.hpp>

#include "vrx/XpResult.h"

namespace vrx::otio {

using Json = nlohmann::json;

/// Replaces `tree` by the document in `bytes`. Members named "metadata" are left out with all that is in
/// them, and the numbers NaN and Infinity, which are no JSON but are written by other programs, become null.
/// Results as ReadTimeline.
XpResult ParseJson(std::span<const char> bytes, Json& tree, std::string& cause);

}  // namespace vrx::otio
