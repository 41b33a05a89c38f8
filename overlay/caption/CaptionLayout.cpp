#include "overlay/caption/CaptionLayout.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"

namespace vrx::overlay {
namespace {

using namespace drawing;

constexpr Size kWideCanvas{1920, 1080};
constexpr std::int32_t kShorterSide = 1080;
constexpr std::int32_t kPlaces = 9;  // three rows of three
constexpr std::int32_t kBoldWeight = 700;
constexpr std::uint32_t kTextFormat = DT_EDITCONTROL | DT_NOPREFIX | DT_WORDBREAK | DT_VCENTER;
// Of the box, beyond the lines, in parts of a line's height.
constexpr std::int32_t kBoxSidePart = 4;
constexpr std::int32_t kBoxEndPart = 12;

enum Row : std::int32_t { kTopRow, kMiddleRow, kBottomRow };
Row RowOf(std::int32_t layoutType) { return static_cast<Row>((layoutType - 1) / 3); }

std::uint32_t FormatOf(std::int32_t layoutType) {
  constexpr std::uint32_t kAlignments[] = {DT_LEFT, DT_CENTER, DT_RIGHT};
  return kTextFormat | kAlignments[(layoutType - 1) % 3];
}

Size CanvasOfShape(Size frame) {
  const auto longer = [](std::int32_t longSide, std::int32_t shortSide) {
    return Saturate<std::int32_t>(std::round(double{kShorterSide} * longSide / shortSide));
  };
  return frame.width >= frame.height ? Size{longer(frame.width, frame.height), kShorterSide}
                                     : Size{kShorterSide, longer(frame.height, frame.width)};
}

/// The room of a text of this height inside `area`, over the area's whole width. In the top row a text that
/// is too high goes on past the area's end.
Rect PlaceOf(Row row, const Rect& area, std::int32_t textHeight) {
  const auto areaHeight = static_cast<std::int32_t>(area.Height());
  Rect place{area.left, area.top, area.right, Saturated(std::int64_t{area.top} + textHeight)};
  if (row == kMiddleRow) {
    const std::int32_t height = std::min(textHeight, areaHeight);
    place.top = area.top + (areaHeight - height) / 2;
    place.bottom = place.top + height;
  } else if (row == kBottomRow) {
    place.top = area.bottom - std::min(textHeight, areaHeight);
    place.bottom = area.bottom;
  }
  return place;
}

/// A narrower one in the place, as its text is aligned.
void Narrow(Rect& place, std::int32_t width, std::uint32_t format) {
  const auto spare = static_cast<std::int32_t>(place.Width() - width);
  if ((format & DT_CENTER) != 0) place.left += spare / 2;
  if ((format & DT_RIGHT) != 0) place.left += spare;
  place.right = place.left + width;
}

/// The smallest width that gives no more lines than `room` and breaks no word.
std::int32_t BalancedWidth(TextRenderer& renderer, std::u16string_view text, const Font& font,
                           std::int32_t room, std::uint32_t format) {
  const std::uint32_t wholeWords = format & ~DT_EDITCONTROL;
  const std::size_t lines = renderer.CountLines(text, font, room, format);
  std::int32_t tooNarrow = 0, width = room;
  while (width - tooNarrow > 1) {
    const std::int32_t middle = tooNarrow + (width - tooNarrow) / 2;
    const bool isEnough = renderer.CountLines(text, font, middle, wholeWords) <= lines &&
                          renderer.Measure(text, font, middle, wholeWords).width <= middle;
    (isEnough ? width : tooNarrow) = middle;
  }
  return width;
}

Rect BoxAround(const CaptionLayout& layout, std::int32_t lineHeight) {
  Rect box = layout.place;
  Narrow(box, std::min(layout.text.width, static_cast<std::int32_t>(box.Width())), layout.format);
  const std::int32_t side = lineHeight / kBoxSidePart, end = lineHeight / kBoxEndPart;
  box = {box.left - side, box.top - end, box.right + side, box.bottom + end};
  return Moved(box, -kCaptionShadowOffset, -kCaptionShadowOffset);
}

}  // namespace

CaptionCanvas MakeCaptionCanvas(Size frame, bool keepShape) {
  const double width = frame.width - 2.0 * kCaptionFrameMargin;
  const double height = frame.height - 2.0 * kCaptionFrameMargin;
  if (width <= 0.0 || height <= 0.0) return {kWideCanvas, {0.0, 0.0, 0.0, 0.0}};
  const Size size = keepShape ? CanvasOfShape(frame) : kWideCanvas;
  TextScale scale{width / size.width, height / size.height, kCaptionFrameMargin, kCaptionFrameMargin};
  if (keepShape) {
    const double factor = std::min(scale.xFactor, scale.yFactor);
    scale = {factor, factor, (frame.width - size.width * factor) / 2,
             (frame.height - size.height * factor) / 2};
  }
  return {size, scale};
}

bool IsCaptionPlace(std::int32_t layoutType) { return layoutType >= 1 && layoutType <= kPlaces; }

CaptionLayout LayOutCaption(const CaptionItem& caption, Size canvas, TextRenderer& renderer,
                            KVSCaptionPainterLayoutBase& fonts) {
  CaptionLayout layout;
  layout.font = fonts.SetFont(caption.fontName, Saturate<std::int32_t>(caption.fontSize));
  if (caption.isBold) layout.font.weight = kBoldWeight;
  layout.font.italic = caption.isItalic;
  layout.format = FormatOf(caption.layoutType);
  const auto margin = Saturate<std::int32_t>(std::clamp(caption.margin, 0.0, kWidestCaptionMargin));
  const Rect area{margin, margin, canvas.width - margin, canvas.height - margin};
  auto width = static_cast<std::int32_t>(area.Width());
  const std::u16string_view text = caption.text.AsView();
  if (caption.isBalanced) width = BalancedWidth(renderer, text, layout.font, width, layout.format);
  layout.text = renderer.Measure(text, layout.font, width, layout.format);
  layout.place = PlaceOf(RowOf(caption.layoutType), area, layout.text.height);
  // A margin is kept free of lines that have no room, too.
  if (margin > 0) layout.place.bottom = std::min(layout.place.bottom, area.bottom);
  Narrow(layout.place, width, layout.format);
  layout.hasAllLines = layout.text.height <= area.Height();
  const std::int32_t lineHeight = renderer.Measure({}, layout.font, 0, DT_SINGLELINE).height;
  layout.box = BoxAround(layout, lineHeight);
  return layout;
}

}  // namespace vrx::overlay
