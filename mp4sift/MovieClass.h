// Which class of MP4 a file belongs to, by its brands. The module's GetFormatType answers with it.
#pragma once

#include <cstdint>

#include "content/mp4/MovieInfo.h"

namespace vrx::mp4sift {

/// The table that says which brand makes which class is in MovieClass.cpp.
enum MovieClass : std::int32_t {
  kNoMp4 = 0,
  kPortable = 1,  // for portable players: H.264 with AAC, in a restricted form
  kMobile = 2,    // 3GPP and 3GPP2
  kAvc = 3,       // with the extensions for H.264
  kHighDefinition = 4,
  kMp4Version1 = 5,  // ISO/IEC 14496-1:2001
  kMp4Version2 = 6,  // ISO/IEC 14496-14, and the ISO base format without a finer brand
};

/// By the major brand when the table has it, else by that of the compatible brands that stands first in the
/// table. The brands of the base format alone count last, since nearly every file carries one.
MovieClass ClassOf(const mp4::FileType& type);

}  // namespace vrx::mp4sift
