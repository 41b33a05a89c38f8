#include "engine/StillEncoder.h"

#include <cerrno>
#include <string>

#include "engine/EngineLog.h"

namespace vrx::engine {

Result StillEncoder::Create(const char* name, AVPixelFormat format, const VideoPlan& plan) {
  const AVCodec* encoder = avcodec_find_encoder_by_name(name);
  if (encoder == nullptr) {
    Log(VRXLogError, std::string("no encoder ") + name + " in the installed libavcodec");
    return kEncoderFailed;
  }
  m_packet.reset(av_packet_alloc());
  m_codec.reset(avcodec_alloc_context3(encoder));
  if (!m_packet || !m_codec) return kOutOfMemory;
  m_codec->width = plan.width;
  m_codec->height = plan.height;
  m_codec->pix_fmt = format;
  m_codec->sample_aspect_ratio = {1, 1};
  m_codec->time_base = {static_cast<int>(plan.frameDuration.value),
                        static_cast<int>(plan.frameDuration.scale)};
  m_codec->framerate = {m_codec->time_base.den, m_codec->time_base.num};
  m_codec->thread_count = 1;  // with more, pictures come out later
  return kOk;
}

Result StillEncoder::Open() {
  const int error = avcodec_open2(m_codec.get(), m_codec->codec, nullptr);
  if (error >= 0) return kOk;
  if (error == AVERROR(ENOMEM)) return kOutOfMemory;
  Log(VRXLogError, std::string(m_codec->codec->long_name) + " does not take " +
                       std::to_string(m_codec->width) + "x" + std::to_string(m_codec->height) + ": " +
                       AvErrorText(error));
  return kUnusableSettings;
}

Result StillEncoder::Encode(AVFrame& frame) {
  av_packet_unref(m_packet.get());
  int error = avcodec_send_frame(m_codec.get(), &frame);
  if (error >= 0) error = avcodec_receive_packet(m_codec.get(), m_packet.get());
  if (error >= 0) return kOk;
  Log(VRXLogError, "the encoder of overlays failed: " + AvErrorText(error));
  return error == AVERROR(ENOMEM) ? kOutOfMemory : kEncoderFailed;
}

}  // namespace vrx::engine
