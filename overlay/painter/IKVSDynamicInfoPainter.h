// The painter manager as others see it: makes painters by kind, configures them and has them draw in the
// order of their layers. Render control owns one.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/Geometry.h"
#include "overlay/painter/PainterKind.h"

class IKVSDynamicInfoPainter {
 public:
  virtual ~IKVSDynamicInfoPainter() = default;

  /// Makes or reconfigures a painter for each valid record; null does nothing.
  virtual void SetPainterInfo(const PainterInfo* info) = 0;
  virtual void SetClipDateTime(std::uint32_t first, std::uint32_t second, std::uint32_t third) = 0;
  virtual void SetClipRange(double startTime, double endTime, std::int32_t videoId) = 0;
  virtual void SetOutputSize(std::int32_t width, std::int32_t height) = 0;
  /// False, with `id` as it was, for a kind without a painter.
  virtual bool CreatePainter(std::int32_t& id, std::int32_t painterType, std::int32_t layer) = 0;
  /// The first by id; null when there is none. Painters stay owned by the manager.
  virtual KVSPainterPlugInBase* FindPainterByType(std::int32_t painterType) const = 0;
  virtual KVSPainterPlugInBase* GetPainter(std::int32_t id) const = 0;
  virtual bool EnablePainter(std::int32_t id, bool enable) = 0;
  virtual void ClearPainters() = 0;
  /// True unless the holder is empty, whatever the painters answer.
  virtual bool DrawAll(std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
                       PixmapHolder& holder) = 0;
  virtual bool DrawAllForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs,
                               std::int64_t captionMs, PixmapHolder& holder) = 0;
  /// Also a painter that isn't enabled; its own answer.
  virtual bool DrawPainter(std::int32_t id, std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
                           PixmapHolder& holder) = 0;
  virtual bool IsAnyDrawable() const = 0;
  virtual void SetModeAll(std::uint32_t mode) = 0;
  /// The place of a video in the layout in force, in a 1920 by 1080 frame, or in the output when `scaled`.
  /// `rect` stays as it is when there is no such layout or video; the answer is true all the same.
  virtual bool GetVideoRect(std::size_t index, vrx::drawing::Rect& rect, bool scaled) const = 0;
  /// Whether the layout in force has sizes of the small videos; false when there is no such layout.
  virtual bool GetVideoLayoutFlag(bool& hasSizes) const = 0;
  virtual void SetVideoLayout(std::int32_t layoutType, std::int32_t subVideoSize) = 0;
  virtual void SetSubVideoSize(std::int32_t subVideoSize) = 0;
  /// Destroys the object.
  virtual void Release() = 0;

  /// Appends the stamp of each painter that DrawAllForVideo would ask, in that order. False when one of them
  /// does not know its content.
  virtual bool GetContentStamps(const PainterTimes& times, std::vector<PainterStamp>& stamps) const = 0;
  /// The rows outside of which the last DrawAllForVideo touched nothing.
  virtual XpRowRange GetDrawnRows() const = 0;
};

/// Makes the manager of the painters in `kinds`, which must outlive it like the tools. False when there is no
/// memory; `out` must not be null and is then left as it was.
bool CreateDynamicInfoPainter(IKVSDynamicInfoPainter** out, vrx::overlay::PainterKinds kinds,
                              const vrx::overlay::PainterTools& tools);
