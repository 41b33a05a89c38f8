#include "engine/CopyConditions.h"

extern "C" {
#include <libavutil/mathematics.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cstdio>

#include "engine/EncoderTable.h"
#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

template <class Tag>
bool IsTag(Tag found, Tag wanted, Tag unknown) {
  return found == wanted || found == unknown;
}

bool HasColourOf(const AVCodecParameters& stream, int height) {
  const PictureColour colour = OutputColour(height);
  return IsTag(stream.color_space, colour.matrix, AVCOL_SPC_UNSPECIFIED) &&
         IsTag(stream.color_primaries, colour.primaries, AVCOL_PRI_UNSPECIFIED) &&
         IsTag(stream.color_trc, colour.transfer, AVCOL_TRC_UNSPECIFIED) &&
         IsTag(stream.color_range, AVCOL_RANGE_MPEG, AVCOL_RANGE_UNSPECIFIED) &&
         IsTag(stream.chroma_location, AVCHROMA_LOC_LEFT, AVCHROMA_LOC_UNSPECIFIED);
}

/// Profiles that every player of the movie's files knows.
bool HasUsualProfile(const AVCodecParameters& stream) {
  switch (stream.codec_id) {
    case AV_CODEC_ID_H264:
      return stream.profile == FF_PROFILE_H264_BASELINE ||
             stream.profile == FF_PROFILE_H264_CONSTRAINED_BASELINE ||
             stream.profile == FF_PROFILE_H264_MAIN || stream.profile == FF_PROFILE_H264_HIGH;
    case AV_CODEC_ID_HEVC:
      return stream.profile == FF_PROFILE_HEVC_MAIN;
    default:
      return stream.profile == FF_PROFILE_MPEG2_MAIN || stream.profile == FF_PROFILE_MPEG2_SIMPLE;
  }
}

bool HasFieldsOf(const AVCodecParameters& stream, const VideoPlan& movie) {
  if (movie.interlaced) return stream.field_order == AV_FIELD_TT;
  return IsTag(stream.field_order, AV_FIELD_PROGRESSIVE, AV_FIELD_UNKNOWN);
}

std::string SizeOf(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

std::string Megabits(double bitsPerSecond) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f Mbit/s", bitsPerSecond / 1e6);
  return text;
}

}  // namespace

AVCodecID CodecIdOf(VideoCodec codec) {
  switch (codec) {
    case VideoCodec::H264:
      return AV_CODEC_ID_H264;
    case VideoCodec::Mpeg2:
      return AV_CODEC_ID_MPEG2VIDEO;
    case VideoCodec::Hevc:
      return AV_CODEC_ID_HEVC;
    case VideoCodec::Av1:
      return AV_CODEC_ID_AV1;
  }
  return AV_CODEC_ID_NONE;
}

bool CanCopyInto(std::uint32_t codecType, std::uint32_t specificationType) {
  constexpr std::array<std::uint32_t, 8> kSpecifications{0, 1, 3, 4, 6, 7, 8, 9};
  constexpr std::uint32_t kLastCodec = 1;  // H.264 and MPEG-2, which all files hold
  return codecType <= kLastCodec && std::ranges::count(kSpecifications, specificationType) != 0;
}

std::string WhyNotCopied(const SourceFile& source, const VideoPlan& movie) {
  const AVCodecParameters& stream = *source.GetStream().codecpar;
  const std::string codec = FactsOf(movie.codec).name;
  // Its header lies beside the pictures and may not change, and every encoder writes another.
  if (movie.codec == VideoCodec::Av1) return "cannot be copied, since AV1 has one header for a whole movie";
  if (stream.codec_id != CodecIdOf(movie.codec))
    return std::string("is ") + avcodec_get_name(stream.codec_id) + ", and the movie " + codec;
  if (stream.width != movie.width || stream.height != movie.height)
    return "has " + SizeOf(stream.width, stream.height) + " pixels, and the movie " +
           SizeOf(movie.width, movie.height);
  const AVRational aspect = stream.sample_aspect_ratio;
  if (aspect.num > 0 && aspect.num != aspect.den) return "has pixels that are not square";
  if (!source.GetOrientation().IsUpright()) return "is turned for display";
  if (stream.format != AV_PIX_FMT_YUV420P) {
    const char* format = av_get_pix_fmt_name(static_cast<AVPixelFormat>(stream.format));
    return std::string("has the pixel format ") + (format == nullptr ? "unknown" : format) + ", not yuv420p";
  }
  if (!HasColourOf(stream, movie.height)) return "has other colours than the movie";
  if (!HasFieldsOf(stream, movie))
    return movie.interlaced ? "is not interlaced with the upper field first" : "is interlaced";
  if (!HasUsualProfile(stream)) {
    const char* profile = avcodec_profile_name(stream.codec_id, stream.profile);
    return std::string("has the profile ") + (profile == nullptr ? "unknown" : profile);
  }
  return "";
}

std::string WhyTooLarge(const PacketIndex& index, AVRational timeBase, const VideoPlan& movie) {
  constexpr double kTolerance = 1.25;  // encoders miss a bitrate by about as much
  if (movie.bitrate <= 0 || index.pictures.empty()) return "";
  const auto [first, last] =
      std::ranges::minmax(index.pictures, {}, [](const CodedPicture& picture) { return picture.ticks; });
  const double frame =
      static_cast<double>(movie.frameDuration.value) / static_cast<double>(movie.frameDuration.scale);
  const double seconds = static_cast<double>(last.ticks - first.ticks) * av_q2d(timeBase) + frame;
  const double bitrate = static_cast<double>(index.bytes) * 8.0 / seconds;
  if (bitrate <= static_cast<double>(movie.bitrate) * kTolerance) return "";
  return "has " + Megabits(bitrate) + ", and the movie " + Megabits(static_cast<double>(movie.bitrate));
}

}  // namespace vrx::engine
