#include "engine/AudioEncoder.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr int kPcmBlockSize = 1024;  // samples; PCM codecs take any number

AVCodecID CodecId(AudioCodec codec) {
  switch (codec) {
    case AudioCodec::Aac:
      return AV_CODEC_ID_AAC;
    case AudioCodec::Ac3:
      return AV_CODEC_ID_AC3;
    case AudioCodec::Pcm16:
      return AV_CODEC_ID_PCM_S16LE;
    case AudioCodec::Pcm24:
      return AV_CODEC_ID_PCM_S24LE;
  }
  return AV_CODEC_ID_NONE;
}

/// Bits per second that leave no audible loss: the usual figures of broadcast and disc.
std::int64_t Bitrate(const AudioPlan& plan) {
  constexpr std::int64_t kMono = 128'000;
  constexpr std::int64_t kStereo = 192'000;
  constexpr std::int64_t kSurround = 448'000;
  return plan.channels == 1 ? kMono : plan.channels == 2 ? kStereo : kSurround;
}

/// The nearest whole number of `bits` bits for a sample of -1 to 1. Louder samples are clipped, and one that
/// is not a number is silent.
std::int32_t Quantise(float sample, int bits) {
  if (std::isnan(sample)) return 0;
  const double scale = std::int32_t{1} << (bits - 1);
  return static_cast<std::int32_t>(std::clamp(std::nearbyint(double{sample} * scale), -scale, scale - 1));
}

/// The upper `bits` bits of each `Sample` carry the sound.
template <typename Sample>
void Interleave(const std::vector<std::vector<float>>& planes, int count, int bits, std::uint8_t* bytes) {
  const int factor = 1 << (std::numeric_limits<Sample>::digits + 1 - bits);
  auto* out = reinterpret_cast<Sample*>(bytes);
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    for (const auto& plane : planes) *out++ = static_cast<Sample>(Quantise(plane[i], bits) * factor);
  }
}

bool TakesRate(const AVCodec& encoder, int rate) {
  if (encoder.supported_samplerates == nullptr) return true;
  for (const int* known = encoder.supported_samplerates; *known != 0; ++known) {
    if (*known == rate) return true;
  }
  return false;
}

}  // namespace

Result AudioEncoder::Open(const AudioPlan& plan, bool globalHeader) {
  const AVCodec* encoder = avcodec_find_encoder(CodecId(plan.codec));
  if (encoder == nullptr) {
    Log(VRXLogError, "no encoder for the sound in the installed libavcodec");
    return kEncoderFailed;
  }
  if (!TakesRate(*encoder, plan.sampleRate)) {
    Log(VRXLogError, "output setting not usable: samplingRate is " + std::to_string(plan.sampleRate) +
                         " Hz, which " + encoder->name + " does not take");
    return kUnusableSettings;
  }
  m_codec.reset(avcodec_alloc_context3(encoder));
  m_packet.reset(av_packet_alloc());
  m_frame.reset(av_frame_alloc());
  if (!m_codec || !m_packet || !m_frame) return kOutOfMemory;
  m_codec->sample_fmt = encoder->sample_fmts[0];
  m_codec->sample_rate = plan.sampleRate;
  m_codec->time_base = {1, plan.sampleRate};
  av_channel_layout_default(&m_codec->ch_layout, plan.channels);
  if (plan.codec == AudioCodec::Aac || plan.codec == AudioCodec::Ac3) m_codec->bit_rate = Bitrate(plan);
  if (globalHeader) m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (const int error = avcodec_open2(m_codec.get(), encoder, nullptr); error < 0) {
    Log(VRXLogError, std::string("the sound encoder ") + encoder->name + " does not take " +
                         std::to_string(plan.channels) + " channels at " + std::to_string(plan.sampleRate) +
                         " Hz: " + AvErrorText(error));
    return error == AVERROR(ENOMEM) ? kOutOfMemory : kUnusableSettings;
  }
  m_channels = plan.channels;
  m_blockSize = m_codec->frame_size > 0 ? m_codec->frame_size : kPcmBlockSize;
  // Codecs that give nothing when they are drained would end with what they hold back.
  if ((encoder->capabilities & AV_CODEC_CAP_DELAY) == 0) m_tail = m_codec->initial_padding;
  m_planes.assign(static_cast<std::size_t>(m_channels),
                  std::vector<float>(static_cast<std::size_t>(m_blockSize)));
  for (auto& plane : m_planes) m_planePointers.push_back(plane.data());
  return kOk;
}

std::int64_t AudioEncoder::PacketsOf(std::int64_t samples) const {
  constexpr std::int64_t kFromTheCodec = 8;  // those that it begins and ends with, of samples of its own
  return samples / m_blockSize + kFromTheCodec;
}

Result AudioEncoder::EncodeUpTo(std::int64_t samples, AudioTrack& track, MovieWriter& writer, int stream) {
  bool ended = false;
  while (!ended && m_samples < samples) {
    VRX_TRY(ReadBlock(track, ended));
    VRX_TRY(WritePackets(writer, stream));
  }
  return kOk;
}

Result AudioEncoder::Drain(AudioTrack& track, MovieWriter& writer, int stream) {
  constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();
  VRX_TRY(EncodeUpTo(kAll, track, writer, stream));
  VRX_TRY(Send(nullptr));
  return WritePackets(writer, stream);
}

Result AudioEncoder::ReadBlock(AudioTrack& track, bool& ended) {
  int got = 0;
  VRX_TRY(track.Read(m_planePointers.data(), m_blockSize, got));
  const int silence = std::min(m_blockSize - got, m_tail);
  for (auto& plane : m_planes) std::fill_n(plane.begin() + got, silence, 0.0F);
  m_tail -= silence;
  m_samples += got;
  const int count = got + silence;
  ended = count < m_blockSize;
  if (count == 0) return kOk;
  VRX_TRY(StoreBlock(count));
  m_sent += count;
  return Send(m_frame.get());
}

Result AudioEncoder::StoreBlock(int count) {
  AVFrame& frame = *m_frame;
  av_frame_unref(&frame);
  frame.nb_samples = count;
  frame.format = m_codec->sample_fmt;
  frame.sample_rate = m_codec->sample_rate;
  frame.pts = m_sent;
  if (av_channel_layout_copy(&frame.ch_layout, &m_codec->ch_layout) < 0) return kOutOfMemory;
  if (av_frame_get_buffer(&frame, 0) < 0) return kOutOfMemory;
  switch (m_codec->sample_fmt) {
    case AV_SAMPLE_FMT_FLTP:
      for (std::size_t c = 0; c < m_planes.size(); ++c) {
        std::copy_n(m_planes[c].data(), count, reinterpret_cast<float*>(frame.extended_data[c]));
      }
      return kOk;
    case AV_SAMPLE_FMT_S16:
      Interleave<std::int16_t>(m_planes, count, 16, frame.data[0]);
      return kOk;
    case AV_SAMPLE_FMT_S32:
      // The 24-bit encoder cuts off the lowest byte, so the samples are rounded here.
      Interleave<std::int32_t>(m_planes, count, 24, frame.data[0]);
      return kOk;
    default:
      Log(VRXLogError, "the sound encoder wants an unknown sample format");
      return kEncoderFailed;
  }
}

Result AudioEncoder::Send(const AVFrame* frame) {
  const int error = avcodec_send_frame(m_codec.get(), frame);
  if (error >= 0) return kOk;
  Log(VRXLogError, "the sound encoder failed: " + AvErrorText(error));
  return error == AVERROR(ENOMEM) ? kOutOfMemory : kEncoderFailed;
}

Result AudioEncoder::WritePackets(MovieWriter& writer, int stream) {
  for (;;) {
    const int error = avcodec_receive_packet(m_codec.get(), m_packet.get());
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return kOk;
    if (error < 0) {
      Log(VRXLogError, "the sound encoder failed: " + AvErrorText(error));
      return kEncoderFailed;
    }
    m_packet->duration = std::min(m_packet->duration, m_samples - m_packet->pts);
    VRX_TRY(writer.Write(*m_packet, stream, m_codec->time_base));
  }
}

}  // namespace vrx::engine
