// Lays still pictures onto every frame, each at a place of its own. No document names them: a host that works
// with painters directly fills the record.
#pragma once

#include "drawing/Canvas.h"
#include "foundation/sync/XpCriticalSection.h"
#include "overlay/document/ContentImageEntry.h"
#include "overlay/painter/KVSPainterPlugInBase.h"

/// Pictures may be exchanged from another thread between two frames.
class KVSContentImagePainterPlugIn final : public KVSPainterPlugInBase {
 public:
  KVSContentImagePainterPlugIn();

  /// Always true; a record of another kind changes nothing.
  bool SetPainterInfo(const PainterInfo* info, const PainterInfoBase* record) override;
  bool Draw(std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs, PixmapHolder& holder) override;
  bool DrawForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
                    PixmapHolder& holder) override;
  void SetClipDateTime(std::uint32_t, std::uint32_t, std::uint32_t) override {}
  void SetClipRange(double, double, std::int32_t) override {}
  bool IsDrawable() const override { return true; }
  void Configure(const PainterInfo* info, const PainterInfoBase* record) override;
  void SetOutputSize(std::int32_t width, std::int32_t height) override;
  void SetVideoLayout(std::int32_t, std::int32_t) override {}
  void SetMode(std::uint32_t) override {}
  /// Every frame shows the same.
  PainterStamp GetContentStamp(const PainterTimes& times) override;

 private:
  void DrawOverlayImages(vrx::drawing::Canvas& canvas) const;
  void DrawImages(vrx::drawing::Canvas& canvas) const;

  ContentImageList m_images;
  ContentImageList m_overlayImages;  // 32-bit copies
  bool m_useOverlayImages = false;
  std::int32_t m_outputWidth = 0;
  std::int32_t m_outputHeight = 0;
  std::uint64_t m_generation = 0;
  XpCriticalSection m_lock;       // held by Draw
  XpCriticalSection m_imageLock;  // guards the lists and what goes with them; taken after m_lock
};

namespace vrx::overlay {

/// Copies a 24-bit picture, opaque, to a rectangle of the canvas, clipped to it: smoothed where both
/// directions shrink, else by nearest neighbour.
void DrawPixmapScaled(drawing::Canvas& canvas, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                      std::int32_t destHeight, const XpPixmapBase& source);

}  // namespace vrx::overlay
