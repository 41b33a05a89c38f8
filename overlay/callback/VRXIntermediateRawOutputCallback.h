// Takes each frame of the overlay ranges from the engine, has the painters draw that moment's overlays and
// lays them over the frame in place. The manager makes one for each project.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "foundation/memory/XpSharedPtr.h"
#include "imaging/pixmap/XpPixmap.h"
#include "overlay/callback/DrawnArea.h"
#include "overlay/callback/TimeGenerators.h"
#include "overlay/document/PainterInfo.h"
#include "overlay/painter/IKVSDynamicInfoPainter.h"
#include "vrx/VRXEngine.h"

/// What a callback draws for and with; the pointers must outlive it and may be null, which draws nothing.
struct OverlayContext {
  std::int32_t width = 0;   // of the movie, pixels
  std::int32_t height = 0;  // of the movie, pixels
  VRXTimeInfo frameLength;  // of the movie
  const PainterInfo* info = nullptr;
  IKVSDynamicInfoPainter* painters = nullptr;
  vrx::overlay::PainterKinds kinds = {};  // which clocks run for which records
};

class VRXIntermediateRawOutputCallback final : public IVRXIntermediateRawOutputCallback {
 public:
  /// What the engine gets with each range and must give back with each frame.
  static constexpr std::int32_t kStage = 2;
  static constexpr std::int32_t kFormat = 5;

  explicit VRXIntermediateRawOutputCallback(const OverlayContext& context) : m_context(context) {}

  /// Called before a render; its frames then come in rising order.
  void ResetTimeGenerators(std::span<const SlowInfoRecord> records);

  /// Moves the clocks over frames `first` to `end` - 1 as ProcessFrame would, without drawing, so that `end`
  /// can be the first frame that is drawn.
  void SkipFrames(std::uint64_t first, std::uint64_t end) override;

  /// True when the frame was handled, which may mean left as it is. Frames whose painters report the content
  /// of the frame before are blended from the picture that is there.
  bool ProcessFrame(std::uint64_t frame, void* buffer, std::uint32_t size, std::int32_t stage,
                    std::int32_t format) override;
  void GetChangedRows(std::int32_t& first, std::int32_t& end) const override;
  const std::uint32_t* GetDrawing() const override;

  /// The picture that was laid over the last frame: the movie's size, straight alpha. Null before the first.
  const XpPixmap32* GetOverlay() const { return m_overlay.Get(); }

 private:
  /// Some wanted kind of painter runs on `clock`.
  bool IsWanted(vrx::overlay::PainterClock clock) const;
  /// Moves the clocks that run to `frame`; the times of the others are below 0.
  PainterTimes Advance(std::uint64_t frame);
  /// Draws the overlay of these times, unless the picture already shows it.
  bool Paint(const PainterTimes& times);

  OverlayContext m_context;
  XpSharedPtr<XpPixmap32> m_overlay;  // kept from frame to frame; m_drawn says what has to be cleared
  vrx::overlay::DrawnArea m_drawn;
  std::vector<PainterStamp> m_shown;  // content of m_overlay; only right while m_isShown
  std::vector<PainterStamp> m_wanted;
  bool m_isShown = false;
  bool m_isBlended = false;  // the last frame was changed, where m_drawn says
  VRXGPSTimeGenerate m_gpsTime;
  VRXTennisMetaTimeGenerate m_tennisTime;
  VRXCaptionTimeGenerate m_captionTime;
};
