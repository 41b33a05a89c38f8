// What a piece of a movie is called: which one of how many, and of which plan.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vrx::host {

/// Piece 0 is the sound alone, the others are parts of the picture alone.
struct PieceName {
  /// As many as job systems take in one array by default.
  static constexpr std::uint32_t kMostPieces = 1000;

  std::uint32_t piece = 0;
  std::uint32_t count = 0;  // of the picture
  std::string plan;         // 1 to 64 letters and digits, equal for all pieces of one plan
};

/// "3/8:PLAN".
std::string PieceNameText(const PieceName& name);
/// Nothing for what is none.
std::optional<PieceName> ParsePieceName(const std::string& text);
/// Empty when the text is such a name.
std::string CheckPieceName(const std::string& text);

}  // namespace vrx::host
