#include "engine/FrameFitter.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <libyuv.h>

#include <algorithm>
#include <cmath>
#include <new>

#include "engine/EngineLog.h"
#include "engine/ExactTime.h"
#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

constexpr int kScalerFlags = SWS_BICUBIC | SWS_ACCURATE_RND;
constexpr int kUnitGain = 1 << 16;  // contrast and saturation of the scaler
constexpr int kQuarterTurn = 90;    // degrees
constexpr int kFullTurn = 360;

/// The even number that is nearest to `length` * `numerator` / `denominator`; 2 at least.
int EvenSize(int length, Int128 numerator, Int128 denominator) {
  return std::max(2, 2 * static_cast<int>(RoundDivide(length * numerator, 2 * denominator)));
}

bool IsPlanar420(const AVFrame& frame) {
  return WithoutRange(static_cast<AVPixelFormat>(frame.format)) == AV_PIX_FMT_YUV420P &&
         frame.linesize[0] > 0;
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
  if (orientation.IsUpright()) return Scale(source, target);
  const int width = orientation.IsSideways() ? target.height : target.width;
  const int height = orientation.IsSideways() ? target.width : target.height;
  if (IsOutputFormat(source) && SameSize(source, width, height)) {
    Turn(source, orientation, target);
    return kOk;
  }
  const FramePtr upright = m_uprightFrames.Get(width, height);
  VRX_TRY(Scale(source, *upright));
  Turn(*upright, orientation, target);
  return kOk;
}

bool FrameFitter::HasOutputColour(const AVFrame& source) const {
  const PictureColour colour = ColourOf(source);
  return !colour.fullRange && WeightsOf(colour.matrix) == WeightsOf(m_colour.matrix);
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

/// Brings the picture to the size and format of `target`, and after that to the movie's colours.
Result FrameFitter::Scale(const AVFrame& source, AVFrame& target) {
  const bool isPlanar = IsPlanar420(source), hasColour = HasOutputColour(source);
  const AVFrame* scaled = &target;
  if (!isPlanar) {
    VRX_TRY(ChangeFormat(source, target));
  } else if (!hasColour && SameSize(source, target.width, target.height)) {
    scaled = &source;
  } else {
    libyuv::I420Scale(source.data[0], source.linesize[0], source.data[1], source.linesize[1], source.data[2],
                      source.linesize[2], source.width, source.height, target.data[0], target.linesize[0],
                      target.data[1], target.linesize[1], target.data[2], target.linesize[2], target.width,
                      target.height, libyuv::kFilterBox);
  }
  if (hasColour || IsRgb(static_cast<AVPixelFormat>(source.format))) return kOk;
  m_conversion.Prepare(ColourOf(source), m_colour.matrix);
  m_conversion.Apply(PlanarPicture::Of(*scaled), PlanarPicture::Of(target));
  return kOk;
}

/// Scales as well. The matrix and range stay as they are, but RGB gets those of the movie.
Result FrameFitter::ChangeFormat(const AVFrame& source, AVFrame& target) {
  VRX_TRY(PrepareScaler(source, target));
  const int rows =
      sws_scale(m_scaler.get(), source.data, source.linesize, 0, source.height, target.data, target.linesize);
  if (rows >= 0) return kOk;
  Log(VRXLogError, "a picture cannot be converted: " + AvErrorText(rows));
  return kSourceUnreadable;
}

Result FrameFitter::PrepareScaler(const AVFrame& source, const AVFrame& target) {
  const auto format = static_cast<AVPixelFormat>(source.format);
  const ScalerKey key{source.width, source.height, source.format, target.width, target.height};
  if (m_scaler && key == m_scalerKey) return kOk;
  m_scaler.reset(sws_alloc_context());
  if (!m_scaler) return kOutOfMemory;
  SwsContext* scaler = m_scaler.get();
  // Equal ranges mean no conversion. For grey pictures the library takes no other range than full.
  const int range = IsRgb(format) ? 0 : 1;
  av_opt_set_int(scaler, "srcw", source.width, 0);
  av_opt_set_int(scaler, "srch", source.height, 0);
  av_opt_set_int(scaler, "src_format", WithoutRange(format), 0);
  av_opt_set_int(scaler, "src_range", range, 0);
  av_opt_set_int(scaler, "dstw", target.width, 0);
  av_opt_set_int(scaler, "dsth", target.height, 0);
  av_opt_set_int(scaler, "dst_format", AV_PIX_FMT_YUV420P, 0);
  av_opt_set_int(scaler, "dst_range", range, 0);
  av_opt_set_int(scaler, "sws_flags", kScalerFlags, 0);
  const int error = sws_init_context(scaler, nullptr, nullptr);
  if (error < 0) {
    m_scaler.reset();
    const char* name = av_get_pix_fmt_name(format);
    Log(VRXLogError, std::string("pictures of the format ") + (name == nullptr ? "?" : name) +
                         " cannot be converted: " + AvErrorText(error));
    return kSourceUnreadable;
  }
  // Its error is ignored: it fails for formats without a matrix, which need none.
  const int* matrix =
      sws_getCoefficients(MatrixOfHeight(m_height) == OutputMatrix::Bt709 ? SWS_CS_ITU709 : SWS_CS_ITU601);
  sws_setColorspaceDetails(scaler, matrix, range, matrix, range, 0, kUnitGain, kUnitGain);
  m_scalerKey = key;
  return kOk;
}

}  // namespace vrx::engine
