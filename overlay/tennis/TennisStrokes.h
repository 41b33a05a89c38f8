// The strokes of tennis that the metadata knows: one row each, with its name, its pictogram and the view of
// the racket that shows it. Parser, painter, checks and the importer of shots walk it.
#pragma once

#include <cstdint>
#include <span>

#include "overlay/resources/PainterResources.h"

namespace vrx::overlay {

/// The three sets of swing pictures.
enum class FrameSet : std::uint8_t { Racket, Back, Fore };

struct TennisStroke {
  std::int32_t swingType;    // the bit of the metadata
  std::int32_t strokeClass;  // 0 to 7
  std::int32_t nameText;     // entry of the string table
  PainterPicture TennisMetaResource::*pictogram;
  const char* key;  // as tables of shots write it
  const char16_t* englishName;
};

std::span<const TennisStroke> TennisStrokes();

/// Null for a swing type outside the table.
const TennisStroke* FindStroke(std::int32_t swingType);

/// By the bits of the swing type, so that values outside the table get an answer too. `swapSides` exchanges
/// forehand and backhand.
FrameSet FrameSetOf(std::int32_t swingType, bool swapSides);

/// The pictures of a set, from the first of the swing to the racket at rest.
const std::vector<PainterPicture>& FramesOf(const TennisMetaResource& resources, FrameSet set);

}  // namespace vrx::overlay
