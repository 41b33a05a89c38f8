#include "engine/VideoEncoder.h"

extern "C" {
#include <libavutil/cpu.h>
#include <libavutil/opt.h>
}

#include <cerrno>

#include "engine/EngineLog.h"
#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

constexpr double kH264Quality = 20.0;  // constant rate factor
constexpr int kMpeg2Quality = 3;       // constant quantiser
constexpr int kMpeg2GroupLength = 15;  // frames
constexpr int kMpeg2BFrames = 2;

void SetUpH264(const VideoPlan& plan, AVCodecContext& codec) {
  av_opt_set(codec.priv_data, "preset", plan.preset, 0);
  // Frames that wait for the lookahead's thread. With one the encoder often waits for it, which costs a
  // twentieth of the speed; each takes 22 MiB in a 4K movie. Without that thread x264 takes a tenth longer;
  // with it x264 sometimes leaks one frame of a movie.
  av_opt_set(codec.priv_data, "x264-params", "sync-lookahead=4", 0);
  if (plan.bitrate == 0) av_opt_set_double(codec.priv_data, "crf", kH264Quality, 0);
  if (plan.interlaced) codec.flags |= AV_CODEC_FLAG_INTERLACED_DCT;
}

void SetUpMpeg2(const VideoPlan& plan, AVCodecContext& codec) {
  codec.gop_size = kMpeg2GroupLength;
  codec.max_b_frames = kMpeg2BFrames;
  if (plan.bitrate == 0) {
    codec.flags |= AV_CODEC_FLAG_QSCALE;
    codec.global_quality = kMpeg2Quality * FF_QP2LAMBDA;
  }
  if (plan.interlaced) codec.flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
}

void SetUpCommon(const VideoPlan& plan, bool globalHeader, AVCodecContext& codec) {
  codec.width = plan.width;
  codec.height = plan.height;
  codec.pix_fmt = AV_PIX_FMT_YUV420P;
  codec.sample_aspect_ratio = {1, 1};
  codec.time_base = {static_cast<int>(plan.frameDuration.value), static_cast<int>(plan.frameDuration.scale)};
  codec.framerate = {codec.time_base.den, codec.time_base.num};
  codec.field_order = plan.interlaced ? AV_FIELD_TT : AV_FIELD_PROGRESSIVE;
  const PictureColour colour = OutputColour(plan.height);
  codec.colorspace = colour.matrix;
  codec.color_primaries = colour.primaries;
  codec.color_trc = colour.transfer;
  codec.color_range = AVCOL_RANGE_MPEG;
  codec.chroma_sample_location = AVCHROMA_LOC_LEFT;
  // By itself x264 starts half as many threads again, each with frames of its own, but the decoder needs a
  // share too.
  codec.thread_count = av_cpu_count();
  if (plan.bitrate > 0) codec.bit_rate = plan.bitrate;
  if (globalHeader) codec.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
}

}  // namespace

Result VideoEncoder::Open(const VideoPlan& plan, bool globalHeader) {
  const bool h264 = plan.codec == VideoCodec::H264;
  const AVCodec* encoder =
      h264 ? avcodec_find_encoder_by_name("libx264") : avcodec_find_encoder(AV_CODEC_ID_MPEG2VIDEO);
  if (encoder == nullptr) {
    Log(VRXLogError,
        std::string("no encoder for ") + (h264 ? "H.264" : "MPEG-2") + " in the installed libavcodec");
    return kEncoderFailed;
  }
  m_interlaced = plan.interlaced;
  m_packet.reset(av_packet_alloc());
  m_codec.reset(avcodec_alloc_context3(encoder));
  if (!m_packet || !m_codec) return kOutOfMemory;
  SetUpCommon(plan, globalHeader, *m_codec);
  h264 ? SetUpH264(plan, *m_codec) : SetUpMpeg2(plan, *m_codec);
  const int error = avcodec_open2(m_codec.get(), encoder, nullptr);
  if (error >= 0) return kOk;
  if (error == AVERROR(ENOMEM)) return kOutOfMemory;
  Log(VRXLogError, std::string(h264 ? "H.264" : "MPEG-2") + " does not take " + std::to_string(plan.width) +
                       "x" + std::to_string(plan.height) + " with frameDuration " +
                       std::to_string(plan.frameDuration.value) + "/" +
                       std::to_string(plan.frameDuration.scale) + " and averageBitrate " +
                       std::to_string(plan.bitrate) + ": " + AvErrorText(error));
  return kUnusableSettings;
}

Result VideoEncoder::Encode(AVFrame& frame, std::int64_t index, MovieWriter& writer, int stream) {
  frame.pts = index;
  frame.pict_type = AV_PICTURE_TYPE_NONE;
  frame.key_frame = 0;
  frame.quality = m_codec->global_quality;
  frame.interlaced_frame = m_interlaced ? 1 : 0;
  frame.top_field_first = m_interlaced ? 1 : 0;
  VRX_TRY(Send(&frame));
  return WritePackets(writer, stream, StopSignal());
}

Result VideoEncoder::Drain(MovieWriter& writer, int stream, const StopSignal& stop) {
  VRX_TRY(Send(nullptr));
  return WritePackets(writer, stream, stop);
}

Result VideoEncoder::Send(const AVFrame* frame) {
  const int error = avcodec_send_frame(m_codec.get(), frame);
  if (error >= 0) return kOk;
  Log(VRXLogError, "the video encoder failed: " + AvErrorText(error));
  return error == AVERROR(ENOMEM) ? kOutOfMemory : kEncoderFailed;
}

Result VideoEncoder::WritePackets(MovieWriter& writer, int stream, const StopSignal& stop) {
  while (!stop.IsSet()) {
    const int error = avcodec_receive_packet(m_codec.get(), m_packet.get());
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return kOk;
    if (error < 0) {
      Log(VRXLogError, "the video encoder failed: " + AvErrorText(error));
      return kEncoderFailed;
    }
    // Some packets come without a length, and the movie ends with that of the last one.
    if (m_packet->duration == 0) m_packet->duration = 1;
    VRX_TRY(writer.Write(*m_packet, stream, m_codec->time_base));
  }
  return kOk;
}

}  // namespace vrx::engine
