// Where a caption goes: its font, its lines and its place on the canvas that documents count captions in, and
// how that canvas lies on a frame. The caption painter draws it; the check of a project asks whether it fits.
#pragma once

#include <cstdint>

#include "drawing/TextRenderer.h"
#include "overlay/caption/KVSCaptionPainterLayoutBase.h"
#include "overlay/document/CaptionItem.h"

namespace vrx::overlay {

inline constexpr std::int32_t kCaptionFrameMargin = 10;  // on each side of the frame, pixels of the frame
inline constexpr double kWidestCaptionMargin = 480.0;    // wider ones count as this, so that room is left
inline constexpr std::int32_t kCaptionShadowOffset = 2;  // the text lies left of and above its shadow
inline constexpr double kWholeCaptionBox = 100.0;        // percent

struct CaptionCanvas {
  drawing::Size size;          // pixels of the canvas
  drawing::TextScale onFrame;  // from the canvas to the frame; not usable on a frame without room
};

/// 1920 by 1080, stretched over the frame less its margin. With `keepShape` the shape of the frame, with 1080
/// as the shorter side, scaled alike in both directions and in the middle of that room.
CaptionCanvas MakeCaptionCanvas(drawing::Size frame, bool keepShape);

/// Whether there is a place for the number; others show nothing.
bool IsCaptionPlace(std::int32_t layoutType);

struct CaptionLayout {
  drawing::Font font;
  drawing::Rect place;  // of the text's shadow, on the canvas; lines break at its width
  std::uint32_t format = 0;
  drawing::Size text;       // the widest line and all lines, also those that have no room
  drawing::Rect box;        // around the lines, as far as there is room for them, on the canvas
  bool hasAllLines = true;  // false: the last lines have no room and are left out
};

/// `caption` has a place. `fonts` keeps the font that was chosen last.
CaptionLayout LayOutCaption(const CaptionItem& caption, drawing::Size canvas, drawing::TextRenderer& renderer,
                            KVSCaptionPainterLayoutBase& fonts);

}  // namespace vrx::overlay
