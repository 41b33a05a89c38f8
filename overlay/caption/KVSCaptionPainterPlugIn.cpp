#include "overlay/caption/KVSCaptionPainterPlugIn.h"

#include <algorithm>
#include <cstring>

#include "foundation/number/Saturate.h"

namespace {

using namespace vrx::drawing;

constexpr std::int32_t kCanvasWidth = 1920;
constexpr std::int32_t kCanvasHeight = 1080;
constexpr std::int32_t kMargin = 10;  // on each side of the frame, pixels
constexpr std::int32_t kShadowOffset = 2;
constexpr ColorRef kShadowColor = 0x020000;
constexpr std::uint8_t kSaveModeShadowAlpha = 0x80;
constexpr std::int32_t kPlaces = 9;  // three rows of three
constexpr std::uint32_t kTextFormat = DT_EDITCONTROL | DT_NOPREFIX | DT_WORDBREAK | DT_VCENTER;

bool HasPlace(std::int32_t layoutType) { return layoutType >= 1 && layoutType <= kPlaces; }

std::uint32_t FormatOf(std::int32_t layoutType) {
  constexpr std::uint32_t kAlignments[] = {DT_LEFT, DT_CENTER, DT_RIGHT};
  return kTextFormat | kAlignments[(layoutType - 1) % 3];
}

/// The place of a text of this height on the canvas.
Rect PlaceOf(std::int32_t layoutType, std::int32_t textHeight) {
  const std::int32_t row = (layoutType - 1) / 3;
  Rect rect{0, 0, kCanvasWidth, textHeight};
  if (row == 1) {
    const std::int32_t height = std::min(textHeight, kCanvasHeight);
    rect.top = (kCanvasHeight - height) / 2;
    rect.bottom = rect.top + height;
  } else if (row == 2) {
    rect.top = std::max(kCanvasHeight - textHeight, 0);
    rect.bottom = kCanvasHeight;
  }
  return rect;
}

/// The rows of a frame that rows of the canvas fall on, and one more on each side for the rounding.
XpRowRange RowsOnFrame(XpRowRange canvas, std::int32_t frameHeight) {
  const std::int64_t height = std::int64_t{frameHeight} - 2 * kMargin;
  const auto onFrame = [&](std::int64_t row) { return kMargin + row * height / kCanvasHeight; };
  return {Saturated(onFrame(canvas.first) - 1), Saturated(onFrame(canvas.last) + 2)};
}

/// The stamp of a moment without a caption; others are the caption's place in the list, from 1.
constexpr std::uint64_t kNoCaption = 0;

}  // namespace

KVSCaptionPainterPlugIn::KVSCaptionPainterPlugIn(TextRenderer& textRenderer)
    : m_textRenderer(textRenderer), m_outputWidth(kCanvasWidth), m_outputHeight(kCanvasHeight) {
  painterType = KVSPainterCaption;
}

bool KVSCaptionPainterPlugIn::SetPainterInfo(const PainterInfo* info, const PainterInfoBase* record) {
  if (dynamic_cast<const CaptionInfo*>(record) == nullptr) return false;
  Configure(info, record);
  return true;
}

void KVSCaptionPainterPlugIn::Configure(const PainterInfo* info, const PainterInfoBase* record) {
  ++m_generation;
  m_captions.clear();
  m_layout.reset();
  const auto* caption = dynamic_cast<const CaptionInfo*>(record);
  if (info == nullptr || caption == nullptr) return;
  m_outputWidth = info->videoWidth;
  m_outputHeight = info->videoHeight;
  m_layoutKind = caption->layoutKind;
  m_saveMovieMode = info->saveMovieMode;
  ParseCaptionString(caption->captionString, m_captions);
  m_layout = std::make_unique<KVSCaptionPainterLayoutBase>(m_layoutKind, m_outputWidth, m_outputHeight);
}

void KVSCaptionPainterPlugIn::SetCaptionItems(std::span<const CaptionItem> items) {
  ++m_generation;
  m_captions.assign(items.begin(), items.end());
}

void KVSCaptionPainterPlugIn::SetOutputSize(std::int32_t width, std::int32_t height) {
  m_outputWidth = width;
  m_outputHeight = height;
  if (!m_layout) return;
  m_layout->width = width;
  m_layout->height = height;
}

const CaptionItem* KVSCaptionPainterPlugIn::SelectCaption(std::int64_t captionMs,
                                                          std::int32_t videoId) const {
  for (const CaptionItem& caption : m_captions) {
    if (!m_saveMovieMode && caption.videoId != videoId) continue;
    if (caption.startMs <= captionMs && captionMs <= caption.endMs) return &caption;
  }
  return nullptr;
}

PainterStamp KVSCaptionPainterPlugIn::GetContentStamp(const PainterTimes& times) {
  const XpSingleLock lock(&m_lock);
  PainterStamp stamp{.isKnown = true, .generation = m_generation, .content = kNoCaption};
  const CaptionItem* caption = SelectCaption(times.captionMs, times.videoId);
  if (caption != nullptr) stamp.content = static_cast<std::uint64_t>(caption - m_captions.data()) + 1;
  return stamp;
}

bool KVSCaptionPainterPlugIn::DrawForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs,
                                           std::int64_t captionMs, PixmapHolder& holder) {
  m_currentVideoId = videoId;
  return Draw(gpsMs, tennisMs, captionMs, holder);
}

bool KVSCaptionPainterPlugIn::Draw(std::int64_t /*gpsMs*/, std::int64_t /*tennisMs*/, std::int64_t captionMs,
                                   PixmapHolder& holder) {
  if (!holder) return false;
  const XpSingleLock lock(&m_lock);
  XpPixmap32& target = *holder;
  m_drawnRows = {0, 0};
  if (target.width != m_outputWidth || target.height != m_outputHeight)
    SetOutputSize(target.width, target.height);
  const CaptionItem* caption = SelectCaption(captionMs, m_currentVideoId);
  if (!m_layout || caption == nullptr || caption->text.IsEmpty() || !HasPlace(caption->layoutType))
    return true;
  // Without memory for the canvas the frame gets no caption.
  DrawCaption(*caption, target);
  return true;
}

bool KVSCaptionPainterPlugIn::EnsureCanvas() {
  return m_canvas.data != nullptr || m_canvas.Allocate(kCanvasWidth, kCanvasHeight) == XpOk;
}

void KVSCaptionPainterPlugIn::ClearCanvas(XpRowRange drawn) {
  if (drawn.first >= drawn.last) return;
  const std::size_t row = std::size_t{m_canvas.size} / kCanvasHeight;
  std::memset(m_canvas.data + row * static_cast<std::size_t>(drawn.first), 0,
              row * static_cast<std::size_t>(drawn.last - drawn.first));
}

bool KVSCaptionPainterPlugIn::DrawCaption(const CaptionItem& caption, XpPixmap32& target) {
  if (!EnsureCanvas()) return false;
  const Font& font = m_layout->SetFont(caption.fontName, vrx::Saturate<std::int32_t>(caption.fontSize));
  m_layout->textColor = caption.fontColor;
  const auto text = caption.text.AsView();
  const std::uint32_t format = FormatOf(caption.layoutType);
  const Size size = m_textRenderer.Measure(text, font, kCanvasWidth, format);
  const Rect place = PlaceOf(caption.layoutType, size.height);
  const std::int32_t width = target.width - 2 * kMargin;
  const std::int32_t height = target.height - 2 * kMargin;
  // Text is clipped to its place, so the rest of the canvas stays clear.
  const XpRowRange drawn{std::clamp(place.top - kShadowOffset, 0, kCanvasHeight),
                         std::clamp(place.bottom, 0, kCanvasHeight)};

  m_drawnRows = RowsOnFrame(drawn, target.height);
  Canvas canvas(m_canvas.GetBitmapHandle());
  m_textRenderer.Draw(canvas, text, font, kShadowColor, place, format);
  if (m_saveMovieMode) {
    // A shadow of half strength is composed on the frame by itself, before the text.
    OverlayPixmapWithAlpha(target, kMargin, kMargin, width, height, m_canvas, kCanvasWidth, kCanvasHeight,
                           kSaveModeShadowAlpha, drawn);
    ClearCanvas(drawn);
  }
  m_textRenderer.Draw(canvas, text, font, m_layout->textColor, Moved(place, -kShadowOffset, -kShadowOffset),
                      format);
  OverlaySmoothPixmap(target, kMargin, kMargin, width, height, m_canvas, kCanvasWidth, kCanvasHeight, drawn);
  ClearCanvas(drawn);
  return true;
}
