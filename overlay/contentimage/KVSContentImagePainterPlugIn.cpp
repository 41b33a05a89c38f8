#include "overlay/contentimage/KVSContentImagePainterPlugIn.h"

#include <utility>

#include "imaging/pixmap/XpPixmapBilinear.h"
#include "imaging/pixmap/XpPixmapBlock.h"

namespace {

using vrx::drawing::Canvas;
using vrx::drawing::Rect;
using vrx::drawing::Saturated;

// The frame that places are given in.
constexpr std::int64_t kLayoutWidth = 1920;
constexpr std::int64_t kLayoutHeight = 1080;

/// Truncates toward zero, as all layouts of overlays do.
std::int32_t Scaled(std::int64_t value, std::int32_t size, std::int64_t layoutSize) {
  return Saturated(value * size / layoutSize);
}

}  // namespace

KVSContentImagePainterPlugIn::KVSContentImagePainterPlugIn() { painterType = KVSPainterContentImage; }

bool KVSContentImagePainterPlugIn::SetPainterInfo(const PainterInfo* info, const PainterInfoBase* record) {
  Configure(info, record);
  return true;
}

void KVSContentImagePainterPlugIn::Configure(const PainterInfo* info, const PainterInfoBase* record) {
  const auto* content = dynamic_cast<const ContentImageInfo*>(record);
  if (info == nullptr || content == nullptr) return;
  ContentImageList overlayImages;
  if (content->useOverlayImages) {
    for (const ContentImageEntry& entry : content->images) {
      auto opaque = entry.picture ? MakeOpaquePixmap32(*entry.picture) : nullptr;
      overlayImages.Add({XpSharedPtr<XpPixmapBase>(opaque.release()), entry.rect});
    }
  }
  const XpSingleLock guard(&m_imageLock);
  m_outputWidth = info->videoWidth;
  m_outputHeight = info->videoHeight;
  m_useOverlayImages = content->useOverlayImages;
  if (m_useOverlayImages) {
    m_overlayImages = std::move(overlayImages);
  } else {
    m_images = content->images;
  }
  ++m_generation;
}

void KVSContentImagePainterPlugIn::SetOutputSize(std::int32_t width, std::int32_t height) {
  const XpSingleLock guard(&m_imageLock);
  m_outputWidth = width;
  m_outputHeight = height;
  ++m_generation;
}

PainterStamp KVSContentImagePainterPlugIn::GetContentStamp(const PainterTimes&) {
  const XpSingleLock guard(&m_imageLock);
  return {.isKnown = true, .generation = m_generation};
}

bool KVSContentImagePainterPlugIn::DrawForVideo(std::int32_t, std::int64_t gpsMs, std::int64_t tennisMs,
                                                std::int64_t captionMs, PixmapHolder& holder) {
  return Draw(gpsMs, tennisMs, captionMs, holder);
}

bool KVSContentImagePainterPlugIn::Draw(std::int64_t, std::int64_t, std::int64_t, PixmapHolder& holder) {
  if (!holder) return false;
  const XpSingleLock guard(&m_lock);
  const XpSingleLock imageGuard(&m_imageLock);
  // A picture of another size than the one that was announced is drawn in its own.
  m_outputWidth = holder->width;
  m_outputHeight = holder->height;
  Canvas canvas(holder->GetBitmapHandle());
  if (m_useOverlayImages) {
    DrawOverlayImages(canvas);
  } else {
    DrawImages(canvas);
  }
  return true;
}

void KVSContentImagePainterPlugIn::DrawOverlayImages(Canvas& canvas) const {
  for (const auto& [picture, rect] : m_overlayImages) {
    if (!picture) continue;
    const Rect to{
        Scaled(rect.left, m_outputWidth, kLayoutWidth), Scaled(rect.top, m_outputHeight, kLayoutHeight),
        Scaled(rect.right, m_outputWidth, kLayoutWidth), Scaled(rect.bottom, m_outputHeight, kLayoutHeight)};
    canvas.AlphaBlend(to, picture->GetBitmapHandle(), {0, 0, picture->width, picture->height});
  }
}

void KVSContentImagePainterPlugIn::DrawImages(Canvas& canvas) const {
  for (const auto& [picture, rect] : m_images) {
    if (!picture) continue;
    vrx::overlay::DrawPixmapScaled(canvas, Scaled(rect.left, m_outputWidth, kLayoutWidth),
                                   Scaled(rect.top, m_outputHeight, kLayoutHeight),
                                   Scaled(rect.Width(), m_outputWidth, kLayoutWidth),
                                   Scaled(rect.Height(), m_outputHeight, kLayoutHeight), *picture);
  }
}

namespace vrx::overlay {

void DrawPixmapScaled(Canvas& canvas, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                      std::int32_t destHeight, const XpPixmapBase& source) {
  const Rect place{destX, destY, Saturated(std::int64_t{destX} + destWidth),
                   Saturated(std::int64_t{destY} + destHeight)};
  const Rect clipped = Intersect(place, canvas.GetClipBox());
  if (clipped.IsEmpty()) return;
  const auto width = static_cast<std::int32_t>(clipped.Width());
  const auto height = static_cast<std::int32_t>(clipped.Height());
  XpPixmap24 part;
  if (part.Allocate(width, height) != XpOk) return;  // no memory: this picture is left out
  const std::int32_t x = destX - clipped.left;
  const std::int32_t y = destY - clipped.top;
  if (destWidth < source.width && destHeight < source.height) {
    StretchPixmapBilinear(part, x, y, destWidth, destHeight, source);
  } else {
    StretchPixmapBlock(part, x, y, destWidth, destHeight, source, 0, 0, source.width, source.height);
  }
  canvas.StretchBlt(clipped, part.GetBitmapHandle(), {0, 0, width, height});
}

}  // namespace vrx::overlay
