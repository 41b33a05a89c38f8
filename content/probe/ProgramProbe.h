// Tells MPEG program streams (ISO/IEC 11172-1 and 13818-1) by their first pack header. The deep check uses
// it, and so do the kinds by content.
#pragma once

#include <cstddef>
#include <string_view>

#include "content/formats/FormatCodes.h"
#include "foundation/file/XpAbstractFile.h"

namespace vrx::formats {

/// The start code of a pack, and the byte that tells the version.
inline constexpr std::size_t kPackStartBytes = 5;

/// kMpeg1Program, kMpeg2Program, or kUnknown. `start` are the first bytes of a file.
FormatCode ProgramOf(std::string_view start);
FormatCode CheckProgram(XpAbstractFile& file);

}  // namespace vrx::formats
