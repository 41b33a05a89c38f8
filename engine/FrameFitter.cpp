#include "engine/FrameFitter.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include <libyuv.h>

#include <algorithm>
#include <cmath>
#include <new>

#include "engine/ExactTime.h"
#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

constexpr PictureColour kFullRangeColours{AVCOL_SPC_RGB, AVCOL_PRI_UNSPECIFIED, AVCOL_TRC_UNSPECIFIED, true};
constexpr int kQuarterTurn = 90;  // degrees
constexpr int kFullTurn = 360;

/// The even number that is nearest to `length` * `numerator` / `denominator`; 2 at least.
int EvenSize(int length, Int128 numerator, Int128 denominator) {
  return std::max(2, 2 * static_cast<int>(RoundDivide(length * numerator, 2 * denominator)));
}

bool IsPlanar420(const AVFrame& frame) {
  return WithoutRange(static_cast<AVPixelFormat>(frame.format)) == AV_PIX_FMT_YUV420P &&
         frame.linesize[0] > 0;
}

/// Whether the samples are luma and chroma with eight bits.
bool IsShallowYuv(const AVFrame& frame) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
  return descriptor != nullptr && descriptor->nb_components >= 3 && descriptor->comp[0].depth <= 8 &&
         !IsRgb(format);
}

/// Of a planar RGB picture, whose planes are green, blue and red.
ColourRow ColoursOf(const AVFrame& frame, int row) {
  const auto plane = [&](int index) {
    return reinterpret_cast<const std::uint16_t*>(frame.data[index] +
                                                  static_cast<std::ptrdiff_t>(row) * frame.linesize[index]);
  };
  return {plane(2), plane(0), plane(1)};
}

bool SameSize(const AVFrame& frame, int width, int height) {
  return frame.width == width && frame.height == height;
}

/// The part of `frame` in `rectangle`, whose numbers are even. It does not own the samples.
FramePtr View(const AVFrame& frame, const FitRectangle& rectangle) {
  FramePtr view(av_frame_alloc());
  if (!view) throw std::bad_alloc();
  view->format = frame.format;
  view->width = rectangle.width;
  view->height = rectangle.height;
  for (int plane = 0; plane < 3; ++plane) {
    const int shift = plane == 0 ? 0 : 1;
    view->linesize[plane] = frame.linesize[plane];
    view->data[plane] = frame.data[plane] +
                        static_cast<std::ptrdiff_t>(rectangle.y >> shift) * frame.linesize[plane] +
                        (rectangle.x >> shift);
  }
  return view;
}

void FillBars(AVFrame& frame, const FitRectangle& fit) {
  const int right = fit.x + fit.width, bottom = fit.y + fit.height;
  for (const FitRectangle& bar : {FitRectangle{0, 0, frame.width, fit.y},
                                  {0, fit.y, fit.x, fit.height},
                                  {right, fit.y, frame.width - right, fit.height},
                                  {0, bottom, frame.width, frame.height - bottom}}) {
    if (bar.width > 0 && bar.height > 0) FillBlack(*View(frame, bar));
  }
}

}  // namespace

Orientation Orientation::OfDisplayMatrix(const std::int32_t* matrix) {
  const double counterClockwise = av_display_rotation_get(matrix);
  if (std::isnan(counterClockwise)) return {};
  const int quarters = static_cast<int>(std::lround(-counterClockwise / kQuarterTurn));
  const double determinant = double(matrix[0]) * double(matrix[4]) - double(matrix[1]) * double(matrix[3]);
  return {(quarters * kQuarterTurn + kFullTurn) % kFullTurn, determinant < 0};
}

FitRectangle FitPicture(int width, int height, AVRational sampleAspect, bool sideways, int outWidth,
                        int outHeight) {
  const bool square = sampleAspect.num <= 0 || sampleAspect.den <= 0;
  Int128 shapeWidth = Int128{width} * (square ? 1 : sampleAspect.num);
  Int128 shapeHeight = Int128{height} * (square ? 1 : sampleAspect.den);
  if (sideways) std::swap(shapeWidth, shapeHeight);
  FitRectangle fit{0, 0, outWidth, outHeight};
  if (outWidth * shapeHeight <= outHeight * shapeWidth) {
    fit.height = EvenSize(outWidth, shapeHeight, shapeWidth);
  } else {
    fit.width = EvenSize(outHeight, shapeWidth, shapeHeight);
  }
  fit.x = (outWidth - fit.width) / 2 & ~1;
  fit.y = (outHeight - fit.height) / 2 & ~1;
  return fit;
}

Result FrameFitter::Fit(const AVFrame& source, const Orientation& orientation, FramePtr& fitted) {
  const FitRectangle fit = FitPicture(source.width, source.height, source.sample_aspect_ratio,
                                      orientation.IsSideways(), m_width, m_height);
  const bool fills = fit.width == m_width && fit.height == m_height;
  if (orientation.IsUpright() && fills && SameSize(source, m_width, m_height) && IsOutputFormat(source)) {
    fitted = ShareFrame(source);
    return kOk;
  }
  fitted = m_frames.Get(m_width, m_height);
  VRX_TRY(Place(source, orientation, *View(*fitted, fit)));
  // After the scaler, which writes whole vectors and so past the right edge of the picture.
  if (!fills) FillBars(*fitted, fit);
  return kOk;
}

/// Fills `target`, a frame from the pool or a part of one, with the picture as it is displayed.
Result FrameFitter::Place(const AVFrame& source, const Orientation& orientation, AVFrame& target) {
  const int width = orientation.IsSideways() ? target.height : target.width;
  const int height = orientation.IsSideways() ? target.width : target.height;
  if (IsOutputFormat(source) && SameSize(source, width, height)) {
    Turn(source, orientation, target);
    return kOk;
  }
  if (orientation.IsUpright()) return Convert(source, target);
  const FramePtr upright = m_uprightFrames.Get(width, height);
  VRX_TRY(Convert(source, *upright));
  Turn(*upright, orientation, target);
  return kOk;
}

bool FrameFitter::HasOutputColour(const AVFrame& source) const {
  const PictureColour colour = ColourOf(source);
  return DynamicRangeOf(source) == VRXDynamicRangeStandard && !colour.fullRange &&
         WeightsOf(colour.matrix) == WeightsOf(m_colour.matrix);
}

bool FrameFitter::IsOutputFormat(const AVFrame& source) const {
  return source.format == AV_PIX_FMT_YUV420P && IsPlanar420(source) && HasOutputColour(source);
}

void FrameFitter::Turn(const AVFrame& upright, const Orientation& orientation, AVFrame& target) const {
  // A negative height turns the picture upside down first.
  libyuv::I420Rotate(upright.data[0], upright.linesize[0], upright.data[1], upright.linesize[1],
                     upright.data[2], upright.linesize[2], target.data[0], target.linesize[0], target.data[1],
                     target.linesize[1], target.data[2], target.linesize[2], upright.width,
                     orientation.flipped ? -upright.height : upright.height,
                     static_cast<libyuv::RotationMode>(orientation.clockwise));
}

/// Brings the picture to the size, format and colours of `target`.
Result FrameFitter::Convert(const AVFrame& source, AVFrame& target) {
  if (DynamicRangeOf(source) != VRXDynamicRangeStandard) return MapTones(source, target);
  const PictureColour colour = ColourOf(source);
  if (!IsShallowYuv(source)) return Scale(source, colour, target, m_colour);
  // Eight bits have no levels between them that a conversion in two steps would lose.
  const AVFrame* scaled = &source;
  if (!IsPlanar420(source) || !SameSize(source, target.width, target.height)) {
    VRX_TRY(Scale(source, colour, target, colour));
    scaled = &target;
  }
  if (HasOutputColour(source)) return kOk;
  m_conversion.Prepare(colour, m_colour.matrix);
  m_conversion.Apply(PlanarPicture::Of(*scaled), PlanarPicture::Of(target));
  return kOk;
}

Result FrameFitter::Scale(const AVFrame& source, const PictureColour& from, AVFrame& target,
                          const PictureColour& to) {
  if (IsAligned(target)) return m_scaler.Scale(source, from, target, to);
  const FramePtr aligned = m_alignedFrames.Get(target.width, target.height);
  VRX_TRY(m_scaler.Scale(source, from, *aligned, to));
  Turn(*aligned, Orientation{}, target);
  return kOk;
}

/// After the scaling, which leaves fewer pixels to map where a picture is reduced.
Result FrameFitter::MapTones(const AVFrame& source, AVFrame& target) {
  const FramePtr colours = m_deepFrames.Get(target.width, target.height);
  VRX_TRY(m_scaler.Scale(source, ColourOf(source), *colours, kFullRangeColours));
  m_toneMapper.Prepare(DynamicRangeOf(source), source.color_primaries, m_colour.matrix);
  for (int row = 0; row < target.height; row += 2) {
    m_toneMapper.Apply(ColoursOf(*colours, row), ColoursOf(*colours, row + 1), row,
                       PlanarPicture::Of(target));
  }
  return kOk;
}

}  // namespace vrx::engine
