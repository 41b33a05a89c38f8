#include "overlay/caption/CaptionDrawing.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "drawing/Coverage.h"
#include "foundation/number/Saturate.h"
#include "imaging/pixmap/XpPixmapOverlay.h"

namespace vrx::overlay {
namespace {

using namespace drawing;

constexpr ColorRef kShadowColor = 0x020000;
constexpr ColorRef kBoxColor = MakeColor(11, 14, 18);  // the dark ground of all overlays
constexpr std::uint8_t kFaintShadowAlpha = 0x80;
constexpr std::uint8_t kOpaqueAlpha = 255;

void FillBox(const XpBitmap& bitmap, const Rect& box, std::uint8_t alpha) {
  const Rect visible = Intersect(box, {0, 0, bitmap.width, bitmap.height});
  if (visible.IsEmpty() || alpha == 0) return;
  const std::vector<unsigned char> coverage(static_cast<std::size_t>(visible.Width()), alpha);
  for (std::int32_t y = visible.top; y < visible.bottom; ++y) {
    unsigned char* row = bitmap.bits + std::int64_t{y} * bitmap.rowBytes;
    ComposeRow(row + std::int64_t{visible.left} * bitmap.BytesPerPixel(), bitmap.format, coverage.data(),
               coverage.size(), kBoxColor);
  }
}

/// A length of the canvas on the frame, at least one pixel, so that a shadow never vanishes.
std::int32_t PixelsOf(std::int32_t length, double factor) {
  return std::max(1, static_cast<std::int32_t>(std::lround(length * factor)));
}

XpRowRange RowsOf(const Rect& rect) {
  return rect.IsEmpty() ? XpRowRange{0, 0} : XpRowRange{rect.top, rect.bottom};
}

/// The rows of a frame that rows of the canvas fall on, and one more on each side for the rounding.
XpRowRange RowsOnFrame(XpRowRange rows, const CaptionCanvas& canvas) {
  const auto onFrame = [&](std::int32_t row) {
    return static_cast<std::int32_t>(std::floor(canvas.onFrame.top + row * canvas.onFrame.yFactor));
  };
  return {onFrame(rows.first) - 1, onFrame(rows.last) + 2};
}

}  // namespace

CaptionLook LookOf(const CaptionItem& caption, bool saveMovieMode) {
  const double box = std::clamp(caption.boxOpacity, 0.0, kWholeCaptionBox) * kOpaqueAlpha / kWholeCaptionBox;
  return {.textColor = caption.fontColor,
          .outlineColor = caption.outlineColor,
          .outline = caption.outline > 0.0 ? std::min(caption.outline, kWidestOutline) : 0.0,
          .boxAlpha = static_cast<std::uint8_t>(Saturate<std::int32_t>(std::round(box))),
          .hasFaintShadow = saveMovieMode};
}

XpRowRange DrawSharpCaption(std::u16string_view text, const CaptionLayout& layout, const CaptionLook& look,
                            const CaptionCanvas& canvas, TextRenderer& renderer, XpPixmap32& frame) {
  const TextScale& scale = canvas.onFrame;
  if (!scale.IsUsable()) return {0, 0};
  const Canvas on(frame.GetBitmapHandle());
  Rect touched;
  if (look.boxAlpha != 0) {
    const Rect box = Intersect(ScaledOutwards(layout.box, scale), on.GetClipBox());
    FillBox(on.GetBitmap(), box, look.boxAlpha);
    touched = box;
  }
  const ScaledText scaled{text, layout.font,
                          Moved(layout.place, -kCaptionShadowOffset, -kCaptionShadowOffset), layout.format,
                          scale};
  // Nothing is cut of letters at the canvas's edge: they lie left of and above their shadows.
  const std::int32_t overhang = kCaptionShadowOffset + static_cast<std::int32_t>(std::ceil(look.outline));
  const Rect clip = ScaledOutwards(Grown({0, 0, canvas.size.width, canvas.size.height}, overhang), scale);
  const auto draw = [&](const TextInk& ink) {
    touched = Unite(touched, renderer.DrawScaled(on, scaled, ink, clip));
  };
  draw({.color = kShadowColor,
        .outline = look.outline,
        .alpha = look.hasFaintShadow ? kFaintShadowAlpha : kOpaqueAlpha,
        .offset = {PixelsOf(kCaptionShadowOffset, scale.xFactor),
                   PixelsOf(kCaptionShadowOffset, scale.yFactor)},
        .isSilhouette = true});
  if (look.outline > 0.0) draw({.color = look.outlineColor, .outline = look.outline});
  draw({.color = look.textColor});
  return RowsOf(touched);
}

bool StretchedCaption::EnsureCanvas(Size size) {
  const bool hasSize = m_canvas.width == size.width && m_canvas.height == size.height;
  return hasSize || m_canvas.Allocate(size.width, size.height) == XpOk;
}

void StretchedCaption::Clear(XpRowRange rows) {
  if (rows.first >= rows.last) return;
  const std::size_t row = std::size_t{m_canvas.size} / static_cast<std::size_t>(m_canvas.height);
  std::memset(m_canvas.data + row * static_cast<std::size_t>(rows.first), 0,
              row * static_cast<std::size_t>(rows.last - rows.first));
}

XpRowRange StretchedCaption::Draw(std::u16string_view text, const CaptionLayout& layout,
                                  const CaptionLook& look, const CaptionCanvas& canvas,
                                  TextRenderer& renderer, XpPixmap32& frame) {
  if (!canvas.onFrame.IsUsable() || !EnsureCanvas(canvas.size)) return {0, 0};
  const Size size = canvas.size;
  const Canvas on(m_canvas.GetBitmapHandle());
  // Letters are clipped to their place; only the additions reach beyond it.
  Rect area = Unite(layout.place, Moved(layout.place, -kCaptionShadowOffset, -kCaptionShadowOffset));
  if (look.outline > 0.0) area = Grown(area, static_cast<std::int32_t>(std::ceil(look.outline)));
  if (look.boxAlpha != 0) area = Unite(area, layout.box);
  const XpRowRange rows{std::clamp(area.top, 0, size.height), std::clamp(area.bottom, 0, size.height)};
  const Rect clip = Intersect(area, on.GetClipBox());
  const auto left = static_cast<std::int32_t>(std::lround(canvas.onFrame.left));
  const auto top = static_cast<std::int32_t>(std::lround(canvas.onFrame.top));
  const std::int32_t width = frame.width - 2 * left, height = frame.height - 2 * top;

  const auto lay = [&] {
    OverlaySmoothPixmap(frame, left, top, width, height, m_canvas, size.width, size.height, rows);
    Clear(rows);
  };
  const auto write = [&](ColorRef color, const Rect& place, double outline) {
    if (outline > 0.0) {
      renderer.DrawScaled(on, {text, layout.font, place, layout.format, {}},
                          {.color = color, .outline = outline}, clip);
    } else {
      renderer.Draw(on, text, layout.font, color, place, layout.format);
    }
  };
  if (look.boxAlpha != 0) {
    FillBox(on.GetBitmap(), layout.box, look.boxAlpha);
    lay();
  }
  write(kShadowColor, layout.place, look.outline);
  if (look.hasFaintShadow) {
    // A shadow of half strength is composed on the frame by itself, before the text.
    OverlayPixmapWithAlpha(frame, left, top, width, height, m_canvas, size.width, size.height,
                           kFaintShadowAlpha, rows);
    Clear(rows);
  }
  const Rect letters = Moved(layout.place, -kCaptionShadowOffset, -kCaptionShadowOffset);
  if (look.outline > 0.0) write(look.outlineColor, letters, look.outline);
  write(look.textColor, letters, 0.0);
  lay();
  return RowsOnFrame(rows, canvas);
}

}  // namespace vrx::overlay
