// What a movie that is a piece of a larger one says of itself in its file, so that the pieces can be copied
// together. Written with the piece, and read by the join.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/ExactTime.h"

namespace vrx::engine {

/// Of the file's metadata.
inline constexpr const char* kPieceKey = "com.vrx.piece";

struct PieceLabel {
  std::string movie;            // its name, letters and digits
  std::uint32_t number = 0;     // from 1 on; 0 for the sound
  std::uint32_t count = 0;      // pieces of pictures
  std::int64_t firstFrame = 0;  // of the whole movie
  std::int64_t frameCount = 0;
  FrameDuration frameDuration{1, 1};
  bool hasSound = false;  // the whole movie
};

inline constexpr std::size_t kLongestMovieName = 64;
/// 1 to 64 letters and digits of ASCII.
bool IsMovieName(std::string_view name);

/// Such as "holiday 3/7 1500+250 1001/30000 sound".
std::string TextOf(const PieceLabel& label);

/// Nothing for any text that TextOf would not give for a label that makes sense.
std::optional<PieceLabel> ReadPieceLabel(std::string_view text);

}  // namespace vrx::engine
