// Brings a decoded picture of any size, shape, orientation, pixel format and dynamic range into the movie's
// frame. Used on the decode thread and for still pictures.
#pragma once

#include <cstdint>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/FramePool.h"
#include "engine/MatrixConversion.h"
#include "engine/PictureColour.h"
#include "engine/PictureScaler.h"
#include "engine/ToneMapper.h"

namespace vrx::engine {

/// How a stored picture is turned for display: first upside down if `flipped`, then clockwise.
struct Orientation {
  int clockwise = 0;  // degrees: 0, 90, 180 or 270
  bool flipped = false;

  /// From the nine numbers of a container's display matrix; the angle is rounded to quarter turns.
  static Orientation OfDisplayMatrix(const std::int32_t* matrix);
  bool IsUpright() const { return clockwise == 0 && !flipped; }
  bool IsSideways() const { return clockwise == 90 || clockwise == 270; }
};

/// A rectangle in the movie's frame, in pixels from the top left; all four are even.
struct FitRectangle {
  int x;
  int y;
  int width;
  int height;
};

/// The largest centred rectangle of the picture's shape, to the nearest even pixel. `width` and `height` are
/// those of the stored picture, before it is turned.
FitRectangle FitPicture(int width, int height, AVRational sampleAspect, bool sideways, int outWidth,
                        int outHeight);

/// Belongs to one thread.
class FrameFitter {
 public:
  FrameFitter(int width, int height) : m_width(width), m_height(height), m_colour(OutputColour(height)) {}

  /// `fitted` is a frame of the movie's size and format: a reference to `source` where that already is one,
  /// else a new one. kSourceUnreadable, with a logged line, for a pixel format that cannot be converted.
  Result Fit(const AVFrame& source, const Orientation& orientation, FramePtr& fitted);

 private:
  bool IsOutputFormat(const AVFrame& source) const;
  bool HasOutputColour(const AVFrame& source) const;
  Result Place(const AVFrame& source, const Orientation& orientation, AVFrame& target);
  void Turn(const AVFrame& upright, const Orientation& orientation, AVFrame& target) const;
  Result Convert(const AVFrame& source, AVFrame& target);
  Result Scale(const AVFrame& source, const PictureColour& from, AVFrame& target, const PictureColour& to);
  Result MapTones(const AVFrame& source, AVFrame& target);

  int m_width;  // pixels of the movie's frame
  int m_height;
  PictureColour m_colour;  // of the movie
  FramePool m_frames;
  FramePool m_uprightFrames;  // scaled, not yet turned
  FramePool m_alignedFrames;  // scaled, not yet between their bars
  FramePool m_deepFrames{AV_PIX_FMT_GBRP12};
  PictureScaler m_scaler;
  MatrixConversion m_conversion;
  ToneMapper m_toneMapper;
};

}  // namespace vrx::engine
