#include "overlay/caption/KVSCaptionPainterPlugIn.h"

namespace {

using namespace vrx::drawing;
using namespace vrx::overlay;

constexpr std::int32_t kUsualWidth = 1920;
constexpr std::int32_t kUsualHeight = 1080;

/// The stamp of a moment without a caption; others are the caption's place in the list, from 1.
constexpr std::uint64_t kNoCaption = 0;

}  // namespace

KVSCaptionPainterPlugIn::KVSCaptionPainterPlugIn(TextRenderer& textRenderer, TextResolution resolution)
    : m_textRenderer(textRenderer),
      m_resolution(resolution),
      m_outputWidth(kUsualWidth),
      m_outputHeight(kUsualHeight) {
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
  m_lines.reset();
  m_layout.reset();
  const auto* caption = dynamic_cast<const CaptionInfo*>(record);
  if (info == nullptr || caption == nullptr) return;
  m_outputWidth = info->videoWidth;
  m_outputHeight = info->videoHeight;
  m_layoutKind = caption->layoutKind;
  m_keepShape = caption->keepShape;
  m_saveMovieMode = info->saveMovieMode;
  ParseCaptionString(caption->captionString, m_captions);
  m_layout = std::make_unique<KVSCaptionPainterLayoutBase>(m_layoutKind, m_outputWidth, m_outputHeight);
}

void KVSCaptionPainterPlugIn::SetCaptionItems(std::span<const CaptionItem> items) {
  ++m_generation;
  m_captions.assign(items.begin(), items.end());
  m_lines.reset();
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
  if (m_layout && caption != nullptr && !caption->text.IsEmpty() && IsCaptionPlace(caption->layoutType)) {
    DrawCaption(*caption, target);
  }
  return true;
}

const CaptionLayout& KVSCaptionPainterPlugIn::LayOut(const CaptionItem& caption,
                                                     const CaptionCanvas& canvas) {
  if (!m_lines || m_linesOf != &caption || !(m_linesOn == canvas.size)) {
    m_lines = LayOutCaption(caption, canvas.size, m_textRenderer, *m_layout);
    m_linesOf = &caption;
    m_linesOn = canvas.size;
  }
  return *m_lines;
}

void KVSCaptionPainterPlugIn::DrawCaption(const CaptionItem& caption, XpPixmap32& target) {
  const CaptionCanvas canvas = MakeCaptionCanvas({target.width, target.height}, m_keepShape);
  const CaptionLayout& layout = LayOut(caption, canvas);
  const CaptionLook look = LookOf(caption, m_saveMovieMode);
  const std::u16string_view text = caption.text.AsView();
  m_layout->textColor = look.textColor;
  m_drawnRows = m_resolution == TextResolution::Frame
                    ? DrawSharpCaption(text, layout, look, canvas, m_textRenderer, target)
                    : m_stretched.Draw(text, layout, look, canvas, m_textRenderer, target);
}
