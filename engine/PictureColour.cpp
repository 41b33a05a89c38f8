#include "engine/PictureColour.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace vrx::engine {
namespace {

constexpr int kMaxStandardHeight = 576;  // lines of standard definition

bool IsRgb(AVPixelFormat format) {
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
  return descriptor != nullptr && (descriptor->flags & AV_PIX_FMT_FLAG_RGB) != 0;
}

}  // namespace

OutputMatrix MatrixOfHeight(int height) {
  return height > kMaxStandardHeight ? OutputMatrix::Bt709 : OutputMatrix::Bt601;
}

PictureColour OutputColour(int height) {
  if (MatrixOfHeight(height) == OutputMatrix::Bt709) {
    return {AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, false};
  }
  if (height == kMaxStandardHeight) {
    return {AVCOL_SPC_BT470BG, AVCOL_PRI_BT470BG, AVCOL_TRC_SMPTE170M, false};
  }
  return {AVCOL_SPC_SMPTE170M, AVCOL_PRI_SMPTE170M, AVCOL_TRC_SMPTE170M, false};
}

PictureColour ColourOf(const AVFrame& frame) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  PictureColour colour = OutputColour(frame.height);
  if (frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RESERVED) {
    colour.matrix = frame.colorspace;
  }
  colour.fullRange = frame.color_range == AVCOL_RANGE_JPEG || WithoutRange(format) != format || IsRgb(format);
  return colour;
}

bool SameCoefficients(AVColorSpace a, AVColorSpace b) { return ScalerMatrix(a) == ScalerMatrix(b); }

int ScalerMatrix(AVColorSpace matrix) {
  switch (matrix) {
    case AVCOL_SPC_BT709:
      return SWS_CS_ITU709;
    case AVCOL_SPC_FCC:
      return SWS_CS_FCC;
    case AVCOL_SPC_SMPTE240M:
      return SWS_CS_SMPTE240M;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return SWS_CS_BT2020;
    default:
      return SWS_CS_ITU601;
  }
}

AVPixelFormat WithoutRange(AVPixelFormat format) {
  switch (format) {
    case AV_PIX_FMT_YUVJ420P:
      return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ411P:
      return AV_PIX_FMT_YUV411P;
    case AV_PIX_FMT_YUVJ422P:
      return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
      return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
      return AV_PIX_FMT_YUV440P;
    default:
      return format;
  }
}

}  // namespace vrx::engine
