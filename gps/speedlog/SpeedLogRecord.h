// The speeds of a clip, or of the whole movie, and the curve that the speed graph shows of them. Made before
// the first frame; x and y are in the pixels of a 1920 by 1080 frame.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/Geometry.h"
#include "gps/log/KVUGPSInfo.h"

namespace vrx::gps {

/// One second of a record.
struct SpeedSample {
  std::uint32_t key = 0;  // index of the point in its list
  double speed = 0.0;     // knots; negative: not known
  bool valid = false;     // logged as valid, or held
  friend bool operator==(const SpeedSample&, const SpeedSample&) = default;
};

/// A vertex of the curve.
struct SpeedLogPoint {
  std::int32_t x = 0;
  std::int32_t y = 0;  // upwards from the base line
  bool valid = false;
  friend bool operator==(const SpeedLogPoint&, const SpeedLogPoint&) = default;
};

struct SpeedLogRecord {
  double pixelsPerSecond = 0.0;
  std::uint32_t firstMs = 0;  // of the first sample
  std::uint32_t lastMs = 0;   // of the last one
  double startMs = 0.0;       // in the movie
  double endMs = 0.0;
  double maxSpeed = 0.0;             // knots, of the valid samples; -1 when there is none
  double speedPerPixel = 0.0;        // knots
  std::vector<SpeedSample> samples;  // by key
  std::vector<SpeedLogPoint> points;

  /// Null when the record has no such sample.
  const SpeedSample* FindSample(std::int64_t key) const;
};

/// The height of the curve's area in a speed log that is `height` high. Below it are the base line and the
/// labels.
std::int32_t SpeedGraphHeight(std::int32_t height);

/// Starts the record afresh with the speeds from the first fix of the list on and up to its last one.
void FillSpeedSamples(const KVUGPSInfoList& list, SpeedLogRecord& record);

/// Makes the curve of the record's samples, of all when `isWhole`, otherwise of those from `startMs` to
/// `endMs`, counted from the first one. `size` is that of the speed log, which shows `viewSeconds` at a time.
/// A speed that is not known lies on the base line, and so do all when none is above 0. `accumulatedMs` is
/// where the record begins in the movie, and ends up where it ends.
void LayoutSpeedRecord(drawing::Size size, std::int32_t viewSeconds, bool isWhole, double startMs,
                       double endMs, double& accumulatedMs, SpeedLogRecord& record);

}  // namespace vrx::gps
