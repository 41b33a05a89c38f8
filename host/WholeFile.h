// Reads small files as a whole, for the commands that import tables and logs.
#pragma once

#include <cstdint>
#include <string>

#include "vrx/XpString.h"

namespace vrx::host {

/// False with the cause, which names the file, when it cannot be read or is larger than `mostMiB`; `kind`
/// says what it then is not, as "log of a recording".
bool ReadWholeFile(const XpString& path, std::int64_t mostMiB, const char* kind, std::string& bytes,
                   std::string& cause);

}  // namespace vrx::host
