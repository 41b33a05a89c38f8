// The base of all painters: each draws one kind of overlay into the frame's pixmap. The painter manager owns
// and drives them.
#pragma once

#include <cstdint>

#include "foundation/memory/XpSharedPtr.h"
#include "imaging/pixmap/XpPixmap.h"
#include "imaging/pixmap/XpRowRange.h"
#include "overlay/document/PainterInfo.h"
#include "overlay/painter/PainterStamp.h"

/// The frame's pixmap; one without a pixmap makes every Draw answer false.
using PixmapHolder = XpSharedPtr<XpPixmap32>;

class KVSPainterPlugInBase {
 public:
  KVSPainterPlugInBase() = default;
  KVSPainterPlugInBase(const KVSPainterPlugInBase&) = delete;
  KVSPainterPlugInBase& operator=(const KVSPainterPlugInBase&) = delete;
  virtual ~KVSPainterPlugInBase() = default;

  /// Takes the configuration; false when `record` is not of this painter's kind.
  virtual bool SetPainterInfo(const PainterInfo* info, const PainterInfoBase* record) = 0;
  /// Draws the overlay of these times (ms) over what the pixmap holds.
  virtual bool Draw(std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
                    PixmapHolder& holder) = 0;
  /// The same while the clip `videoId` is current.
  virtual bool DrawForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs,
                            std::int64_t captionMs, PixmapHolder& holder) = 0;
  /// Updates a clip's date or offset; what the three words mean is up to the painter.
  virtual void SetClipDateTime(std::uint32_t first, std::uint32_t second, std::uint32_t third) = 0;
  virtual void SetClipRange(double startTime, double endTime, std::int32_t videoId) = 0;
  /// There is something to draw at all.
  virtual bool IsDrawable() const = 0;
  virtual void Configure(const PainterInfo* info, const PainterInfoBase* record) = 0;
  /// Pixels of the pixmaps to come.
  virtual void SetOutputSize(std::int32_t width, std::int32_t height) = 0;
  virtual void SetVideoLayout(std::int32_t layoutType, std::int32_t subVideoSize) = 0;
  virtual void SetMode(std::uint32_t mode) = 0;

  /// The content that DrawForVideo would draw. A painter that doesn't know draws every frame.
  virtual PainterStamp GetContentStamp(const PainterTimes& /*times*/) { return {}; }

  /// The rows of the pixmap outside of which the last DrawForVideo touched nothing.
  virtual XpRowRange GetDrawnRows() const { return {}; }

  std::int32_t painterType = KVSPainterNone;
  bool enabled = false;
};
