#include "engine/PictureColour.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace vrx::engine {
namespace {

constexpr int kMaxStandardHeight = 576;  // lines of standard definition

bool IsGrey(AVPixelFormat format) {
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
  return descriptor != nullptr && descriptor->nb_components >= 1 && descriptor->nb_components <= 2 &&
         !IsRgb(format);
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
  } else if (DynamicRangeOf(frame) != VRXDynamicRangeStandard) {
    colour.matrix = AVCOL_SPC_BT2020_NCL;
  }
  const bool usuallyFull = WithoutRange(format) != format || IsRgb(format) || IsGrey(format);
  const bool saysLimited = frame.color_range == AVCOL_RANGE_MPEG && IsGrey(format);
  colour.fullRange = frame.color_range == AVCOL_RANGE_JPEG || (usuallyFull && !saysLimited);
  return colour;
}

VRXDynamicRange DynamicRangeOf(const AVFrame& frame) {
  switch (frame.color_trc) {
    case AVCOL_TRC_SMPTE2084:
      return VRXDynamicRangePq;
    case AVCOL_TRC_ARIB_STD_B67:
      return VRXDynamicRangeHlg;
    default:
      return VRXDynamicRangeStandard;
  }
}

const char* NameOf(VRXDynamicRange range) {
  switch (range) {
    case VRXDynamicRangePq:
      return "PQ";
    case VRXDynamicRangeHlg:
      return "HLG";
    case VRXDynamicRangeStandard:
      break;
  }
  return "SDR";
}

LumaWeights WeightsOf(AVColorSpace matrix) {
  switch (matrix) {
    case AVCOL_SPC_BT709:
      return kBt709Weights;
    case AVCOL_SPC_FCC:
      return {0.30, 0.11};
    case AVCOL_SPC_SMPTE240M:
      return {0.212, 0.087};
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return {0.2627, 0.0593};
    default:
      return kBt601Weights;
  }
}

bool IsRgb(AVPixelFormat format) {
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
  return descriptor != nullptr && (descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
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
