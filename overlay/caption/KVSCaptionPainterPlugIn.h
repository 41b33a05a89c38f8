// Writes the user's captions onto the movie: each is a block of text in one of nine places, with a dark
// shadow, for a span of time.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "drawing/TextRenderer.h"
#include "foundation/sync/XpCriticalSection.h"
#include "imaging/pixmap/XpPixmapOverlay.h"
#include "overlay/caption/KVSCaptionPainterLayoutBase.h"
#include "overlay/document/CaptionItem.h"
#include "overlay/painter/KVSPainterPlugInBase.h"

/// Lays text out on a canvas of 1920 by 1080 and scales that into the frame less a margin of 10 pixels. Draws
/// under a lock; the captions and the configuration must not change meanwhile.
class KVSCaptionPainterPlugIn final : public KVSPainterPlugInBase {
 public:
  /// The renderer must outlive the painter.
  explicit KVSCaptionPainterPlugIn(vrx::drawing::TextRenderer& textRenderer);

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
  PainterStamp GetContentStamp(const PainterTimes& times) override;
  XpRowRange GetDrawnRows() const override { return m_drawnRows; }

  /// Replaces the captions by copies, in this order: where two overlap, the earlier in the list is shown.
  void SetCaptionItems(std::span<const CaptionItem> items);

 private:
  /// The caption of a moment (ms in the movie, ends included); null for none.
  const CaptionItem* SelectCaption(std::int64_t captionMs, std::int32_t videoId) const;
  bool DrawCaption(const CaptionItem& caption, XpPixmap32& target);
  bool EnsureCanvas();
  void ClearCanvas(XpRowRange drawn);

  vrx::drawing::TextRenderer& m_textRenderer;
  std::int32_t m_outputWidth;
  std::int32_t m_outputHeight;
  std::int32_t m_layoutKind = 0;
  bool m_saveMovieMode = false;  // a caption shows whatever clip is current, with half the shadow
  std::int32_t m_currentVideoId = 0;
  std::vector<CaptionItem> m_captions;
  std::uint64_t m_generation = 0;  // of configuration and captions
  std::unique_ptr<KVSCaptionPainterLayoutBase> m_layout;
  XpRowRange m_drawnRows;
  XpPixmap32 m_canvas;  // made with the first caption; clear between captions
  XpCriticalSection m_lock;
};
