// Writes the user's captions onto the movie: each is a block of text in one of nine places, with a dark
// shadow, for a span of time.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "drawing/TextRenderer.h"
#include "foundation/sync/XpCriticalSection.h"
#include "overlay/caption/CaptionDrawing.h"
#include "overlay/caption/CaptionLayout.h"
#include "overlay/caption/KVSCaptionPainterLayoutBase.h"
#include "overlay/document/CaptionItem.h"
#include "overlay/painter/KVSPainterPlugInBase.h"
#include "overlay/painter/TextResolution.h"

/// Lays text out on a canvas of 1920 by 1080, or of the frame's shape, which fills the frame less a margin of
/// 10 pixels. Draws under a lock; the captions and the configuration must not change meanwhile.
class KVSCaptionPainterPlugIn final : public KVSPainterPlugInBase {
 public:
  /// The renderer must outlive the painter.
  explicit KVSCaptionPainterPlugIn(
      vrx::drawing::TextRenderer& textRenderer,
      vrx::overlay::TextResolution resolution = vrx::overlay::TextResolution::Frame);

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
  void DrawCaption(const CaptionItem& caption, XpPixmap32& target);
  const vrx::overlay::CaptionLayout& LayOut(const CaptionItem& caption,
                                            const vrx::overlay::CaptionCanvas& canvas);

  vrx::drawing::TextRenderer& m_textRenderer;
  vrx::overlay::TextResolution m_resolution;
  std::int32_t m_outputWidth;
  std::int32_t m_outputHeight;
  std::int32_t m_layoutKind = 0;
  bool m_keepShape = false;
  bool m_saveMovieMode = false;  // a caption shows whatever clip is current, with half the shadow
  std::int32_t m_currentVideoId = 0;
  std::vector<CaptionItem> m_captions;
  std::uint64_t m_generation = 0;  // of configuration and captions
  std::unique_ptr<KVSCaptionPainterLayoutBase> m_layout;
  XpRowRange m_drawnRows;
  vrx::overlay::StretchedCaption m_stretched;
  std::optional<vrx::overlay::CaptionLayout> m_lines;  // of the caption below, on a canvas of this size
  const CaptionItem* m_linesOf = nullptr;
  vrx::drawing::Size m_linesOn;
  XpCriticalSection m_lock;
};
