#include "samples/clipmaker/ClipPicture.h"

#include <cmath>

#include "samples/clipmaker/FramePattern.h"

extern "C" {
#include <libavutil/display.h>
}

namespace vrx::test_support {
namespace {

constexpr int kFullTurn = 360;
constexpr int kMilliseconds = 1000;
constexpr int kLastFrameMs = 40;
constexpr int kMatrixEntries = 9;

bool IsQuarterTurn(int degrees) { return degrees == 90 || degrees == 270; }

const char* EncoderName(const std::string& codec) {
  return codec == "h264" ? "libx264" : codec == "hevc" ? "libx265" : codec.c_str();
}

}  // namespace

ClipPicture::ClipPicture(const PatternClip& clip, ClipMuxer& muxer)
    : m_clip(clip),
      m_muxer(muxer),
      m_frames(clip.timesMs.empty() ? clip.frames : static_cast<int>(clip.timesMs.size())),
      m_scene(clip.seed),
      m_frame(NewFrame()) {
  OpenEncoder();
  if (clip.style == ClipStyle::kRoad) {
    const double seconds = static_cast<double>(FrameTime(m_frames)) * av_q2d(TimeBase());
    m_roadScene.emplace(clip.route, clip.routeSecond + static_cast<int>(std::ceil(seconds)));
  }
  m_stream = muxer.AddStream(*m_encoder);
  m_stream->avg_frame_rate = m_encoder->framerate;
  m_stream->sample_aspect_ratio = m_encoder->sample_aspect_ratio;
  AddRotation();
  OpenScaler();
  m_frame->format = m_encoder->pix_fmt;
  m_frame->width = clip.width;
  m_frame->height = clip.height;
  m_frame->color_range = m_encoder->color_range;
  m_frame->colorspace = m_encoder->colorspace;
  m_frame->sample_aspect_ratio = m_encoder->sample_aspect_ratio;
  Check(av_frame_get_buffer(m_frame.get(), 0), "frame buffer");
  const bool quarter = IsQuarterTurn(clip.rotation);
  m_upright.Resize(quarter ? clip.height : clip.width, quarter ? clip.width : clip.height);
}

void ClipPicture::OpenEncoder() {
  const AVCodec* codec = CheckPointer(avcodec_find_encoder_by_name(EncoderName(m_clip.codec)), m_clip.codec);
  m_encoder.reset(CheckPointer(avcodec_alloc_context3(codec), m_clip.codec));
  AVCodecContext& encoder = *m_encoder;
  encoder.width = m_clip.width;
  encoder.height = m_clip.height;
  encoder.pix_fmt = AV_PIX_FMT_YUV420P;
  if (m_clip.timesMs.empty()) {
    encoder.framerate = {m_clip.rateNum, m_clip.rateDen};
    encoder.time_base = av_inv_q(encoder.framerate);
  } else {
    encoder.time_base = {1, kMilliseconds};
    m_frameLength = kLastFrameMs;
  }
  encoder.sample_aspect_ratio = {m_clip.sarNum, m_clip.sarDen};
  encoder.gop_size = m_clip.gop;
  encoder.max_b_frames = m_clip.codec == "ffv1" ? 0 : m_clip.bFrames;
  encoder.colorspace = m_clip.bt601 ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
  encoder.color_primaries = m_clip.bt601 ? AVCOL_PRI_SMPTE170M : AVCOL_PRI_BT709;
  encoder.color_trc = m_clip.bt601 ? AVCOL_TRC_SMPTE170M : AVCOL_TRC_BT709;
  if (m_clip.saysHlg) encoder.color_trc = AVCOL_TRC_ARIB_STD_B67;
  encoder.color_range = m_clip.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  encoder.flags |= AV_CODEC_FLAG_BITEXACT;
  encoder.log_level_offset = AV_LOG_INFO - AV_LOG_ERROR;  // errors only
  if (m_muxer.WantsGlobalHeader()) encoder.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  AVDictionary* options = nullptr;
  if (m_clip.codec == "h264") {
    av_dict_set(&options, "preset", "veryfast", 0);
    av_dict_set_int(&options, "crf", m_clip.crf, 0);
    encoder.keyint_min = m_clip.gop;
    if (!m_clip.x264.empty()) av_dict_set(&options, "x264-params", m_clip.x264.c_str(), 0);
  } else if (m_clip.codec == "hevc") {
    av_dict_set(&options, "preset", "ultrafast", 0);
    av_dict_set_int(&options, "crf", m_clip.crf, 0);
    av_dict_set(&options, "x265-params", "log-level=none:open-gop=0:info=0", 0);
  } else if (m_clip.codec != "ffv1") {
    encoder.flags |= AV_CODEC_FLAG_QSCALE;
    encoder.global_quality = FF_QP2LAMBDA * m_clip.quantizer;
  }
  const int code = avcodec_open2(&encoder, codec, &options);
  av_dict_free(&options);
  Check(code, m_clip.codec);
}

void ClipPicture::OpenScaler() {
  m_scaler.reset(CheckPointer(
      sws_getContext(m_clip.width, m_clip.height, AV_PIX_FMT_RGB24, m_clip.width, m_clip.height,
                     m_encoder->pix_fmt, SWS_BILINEAR | SWS_ACCURATE_RND, nullptr, nullptr, nullptr),
      "colour conversion"));
  const int* matrix = sws_getCoefficients(m_clip.bt601 ? SWS_CS_ITU601 : SWS_CS_ITU709);
  constexpr int kNeutral = 1 << 16;  // contrast and saturation in 16.16
  Check(sws_setColorspaceDetails(m_scaler.get(), matrix, 1, matrix, m_clip.fullRange ? 1 : 0, 0, kNeutral,
                                 kNeutral),
        "colour conversion");
}

void ClipPicture::AddRotation() {
  if (m_clip.rotation == 0) return;
  std::uint8_t* data = CheckPointer(
      av_stream_new_side_data(m_stream, AV_PKT_DATA_DISPLAYMATRIX, kMatrixEntries * sizeof(std::int32_t)),
      "rotation");
  av_display_rotation_set(reinterpret_cast<std::int32_t*>(data), m_clip.rotation);
}

std::int64_t ClipPicture::FrameTime(int index) const {
  if (m_clip.timesMs.empty()) return index;
  if (index < m_frames) return m_clip.timesMs[static_cast<std::size_t>(index)];
  return m_clip.timesMs.back() + m_frameLength;
}

void ClipPicture::Draw(int index) {
  const double seconds = static_cast<double>(FrameTime(index)) * av_q2d(TimeBase());
  switch (m_clip.style) {
    case ClipStyle::kPattern:
      DrawPattern(m_clip.firstNumber + static_cast<std::uint32_t>(index), m_upright);
      break;
    case ClipStyle::kScene:
      m_scene.Draw(seconds, m_upright);
      break;
    case ClipStyle::kCourt:
      m_courtScene.Draw(seconds, m_upright);
      break;
    case ClipStyle::kRoad:
      m_roadScene->Draw(m_clip.routeSecond + seconds, m_upright);
      break;
  }
  if (m_clip.rotation != 0) m_upright.Turn(kFullTurn - m_clip.rotation, m_stored);
}

void ClipPicture::Write(int index) {
  Draw(index);
  const RgbImage& picture = m_clip.rotation != 0 ? m_stored : m_upright;
  Check(av_frame_make_writable(m_frame.get()), "frame buffer");
  const std::uint8_t* rows[] = {picture.Row(0), nullptr, nullptr, nullptr};
  const int strides[] = {3 * picture.Width(), 0, 0, 0};
  sws_scale(m_scaler.get(), rows, strides, 0, m_clip.height, m_frame->data, m_frame->linesize);
  m_frame->pts = FrameTime(index) - FrameTime(m_clip.hidden);
  m_frame->quality = m_encoder->global_quality;
  m_muxer.Encode(*m_encoder, *m_stream, m_frame.get(), m_frameLength);
}

}  // namespace vrx::test_support
