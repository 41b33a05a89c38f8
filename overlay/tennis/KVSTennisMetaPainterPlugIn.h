// Shows the statistics of a tennis match over the movie: a panel with the current stroke, counters that roll
// towards the next shot, the racket's swing and a time line of the coming shots.
#pragma once

#include <array>
#include <memory>

#include "drawing/TextRenderer.h"
#include "foundation/sync/XpCriticalSection.h"
#include "overlay/painter/KVSPainterPlugInBase.h"
#include "overlay/painter/KeptLayer.h"
#include "overlay/tennis/DigitStrip.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutBase.h"
#include "overlay/tennis/TennisPanel.h"
#include "overlay/tennis/TennisScene.h"
#include "overlay/tennis/TennisShots.h"

/// Every frame follows from its time alone. What stays from frame to frame is kept as pictures; the result is
/// the same as without them. Draws under a lock; the configuration must not change meanwhile.
class KVSTennisMetaPainterPlugIn final : public KVSPainterPlugInBase {
 public:
  /// The renderer must outlive the painter.
  explicit KVSTennisMetaPainterPlugIn(vrx::drawing::TextRenderer& textRenderer);

  /// True in any case; a record of another kind leaves the painter without configuration.
  bool SetPainterInfo(const PainterInfo* info, const PainterInfoBase* record) override;
  /// False without a layout.
  bool Draw(std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs, PixmapHolder& holder) override;
  bool DrawForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
                    PixmapHolder& holder) override;
  /// `first` and `second` are the low and the high half of a double: the seconds added to the painter's time.
  void SetClipDateTime(std::uint32_t first, std::uint32_t second, std::uint32_t third) override;
  void SetClipRange(double, double, std::int32_t) override {}
  bool IsDrawable() const override { return true; }
  void Configure(const PainterInfo* info, const PainterInfoBase* record) override;
  void SetOutputSize(std::int32_t width, std::int32_t height) override;
  void SetVideoLayout(std::int32_t, std::int32_t) override {}
  /// The unit of the speed counters.
  void SetMode(std::uint32_t mode) override;
  PainterStamp GetContentStamp(const PainterTimes& times) override;
  XpRowRange GetDrawnRows() const override { return m_drawnRows; }

 private:
  void Reset();
  /// Forgets everything that was measured and drawn for the size, fonts and texts of before.
  void ForgetDrawn();
  void SetUnit(std::int32_t unit);
  bool HasContent() const { return m_layout && m_resources && !m_shots.IsEmpty(); }

  void DrawPanel(vrx::overlay::PainterSurface& surface);
  void DrawStats(vrx::overlay::PainterSurface& surface);
  void DrawSwing(vrx::overlay::PainterSurface& surface);
  void DrawTimeLine(vrx::overlay::PainterSurface& surface);
  void DrawPictogram(const vrx::overlay::TennisScene::Marker& marker, vrx::overlay::PainterSurface& surface);

  vrx::drawing::TextRenderer& m_textRenderer;
  vrx::overlay::TennisShots m_shots;
  std::unique_ptr<KVSTennisMetaPainterLayoutBase> m_layout;  // null when there is none
  std::shared_ptr<TennisMetaResource> m_resources;
  vrx::overlay::PictureRenditions m_renditions;
  vrx::overlay::TextTable m_stringTable;
  vrx::overlay::TennisTexts m_texts;
  std::int32_t m_outputWidth = 0;
  std::int32_t m_outputHeight = 0;
  std::int64_t m_shiftMs = 0;  // added to the painter's time
  std::int32_t m_unit = 0;
  std::uint64_t m_generation = 0;

  vrx::overlay::TennisScene m_stamped;  // the scene of the last stamp, whose number is m_sceneNumber
  std::uint64_t m_sceneNumber = 0;
  bool m_isStamped = false;

  vrx::overlay::TennisScene m_scene;  // of the frame that is drawn
  XpRowRange m_drawnRows;
  bool m_isMeasured = false;
  vrx::overlay::DigitMetrics m_digits;
  std::array<vrx::overlay::DigitStrip, vrx::overlay::kTennisCounters> m_strips;
  vrx::overlay::KeptLayer m_panel;  // the parts that stay, for the stroke m_panelName
  XpString m_panelName;
  XpCriticalSection m_lock;
};
