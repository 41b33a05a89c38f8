// The check of an option that names a moment, for the commands that read such options.
#pragma once

#include <string>

namespace vrx::host {

/// Empty when the text is a date and time as in ISO 8601; otherwise what is wrong, as CLI11 wants it.
std::string CheckMoment(const std::string& text);

}  // namespace vrx::host
