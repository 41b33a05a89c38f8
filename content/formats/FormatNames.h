// What the format codes are called in words. Commands that show the format of a file use it.
#pragma once

#include <string_view>

#include "content/formats/FormatCodes.h"

namespace vrx::formats {

/// Such as "JPEG picture"; "unknown" for kUnknown and for any number that is no code.
std::string_view FormatName(FormatCode code);

}  // namespace vrx::formats
