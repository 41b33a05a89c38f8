// Dates on the command line. Edits of pictures and of sidecars take them.
#pragma once

#include <string>

#include "foundation/time/XpDateTime.h"

namespace vrx::host {

/// Local time, in the form of ISO 8601 or as the tags have it, 2024:05:01 10:11:12. Seconds may be missing.
/// False for any other text and for a date that does not exist.
bool ReadLocalDate(const std::string& text, XpDateTime& date);

}  // namespace vrx::host
