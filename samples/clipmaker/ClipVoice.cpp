#include "samples/clipmaker/ClipVoice.h"

#include <algorithm>

#include "samples/clipmaker/ClickTrack.h"

namespace vrx::test_support {
namespace {

constexpr int kPcmFrame = 1024;
constexpr std::int64_t kBitsPerSecond = 192000;

float SampleOf(ClipSoundStyle style, std::int64_t position, int rate) {
  switch (style) {
    case ClipSoundStyle::kTone:
      return ToneSample(position, rate);
    case ClipSoundStyle::kClickOverTone:
      return ClickSample(position, rate, ClickBackground::kTone);
    case ClipSoundStyle::kClick:
      break;
  }
  return ClickSample(position, rate, ClickBackground::kSilence);
}

}  // namespace

ClipVoice::ClipVoice(const ClipSound& sound, const std::string& defaultCodec, std::int64_t samples,
                     ClipMuxer& muxer)
    : m_sound(sound),
      m_muxer(muxer),
      m_end(sound.samples < 0 ? samples : sound.start + sound.samples),
      m_position(sound.start),
      m_frame(NewFrame()) {
  OpenEncoder(sound.codec.empty() ? defaultCodec : sound.codec);
  m_stream = muxer.AddStream(*m_encoder);

  SwrContext* converter = nullptr;
  AVChannelLayout mono;
  av_channel_layout_default(&mono, 1);
  Check(swr_alloc_set_opts2(&converter, &m_encoder->ch_layout, m_encoder->sample_fmt, sound.rate, &mono,
                            AV_SAMPLE_FMT_FLT, sound.rate, 0, nullptr),
        "sound conversion");
  m_converter.reset(converter);
  const std::vector<double> sameOnAll(static_cast<std::size_t>(sound.channels), 1.0);
  Check(swr_set_matrix(converter, sameOnAll.data(), 1), "sound conversion");
  Check(swr_init(converter), "sound conversion");
}

void ClipVoice::OpenEncoder(const std::string& name) {
  const AVCodec* codec = CheckPointer(avcodec_find_encoder_by_name(name.c_str()), name);
  m_encoder.reset(CheckPointer(avcodec_alloc_context3(codec), name));
  m_encoder->sample_rate = m_sound.rate;
  m_encoder->sample_fmt = codec->sample_fmts != nullptr ? codec->sample_fmts[0] : AV_SAMPLE_FMT_S16;
  m_encoder->time_base = {1, m_sound.rate};
  m_encoder->bit_rate = kBitsPerSecond;
  m_encoder->flags |= AV_CODEC_FLAG_BITEXACT;
  m_encoder->log_level_offset = AV_LOG_INFO - AV_LOG_ERROR;  // errors only
  if (m_muxer.WantsGlobalHeader()) m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  av_channel_layout_default(&m_encoder->ch_layout, m_sound.channels);
  Check(avcodec_open2(m_encoder.get(), codec, nullptr), name);
  if (!m_sound.jumps.empty() && m_encoder->frame_size != 0) {
    throw std::runtime_error(name + ": only PCM sound can jump in time");
  }
}

int ClipVoice::NextFrameLength() const {
  const int frame = m_encoder->frame_size != 0 ? m_encoder->frame_size : kPcmFrame;
  std::int64_t end = m_end;
  if (m_jump < m_sound.jumps.size()) end = std::min(end, m_sound.jumps[m_jump].at);
  return static_cast<int>(std::min<std::int64_t>(frame, end - m_position));
}

void ClipVoice::WriteFrame() {
  const int count = NextFrameLength();
  m_samples.resize(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    m_samples[static_cast<std::size_t>(i)] = SampleOf(m_sound.style, m_position + i, m_sound.rate);
  }
  av_frame_unref(m_frame.get());
  m_frame->format = m_encoder->sample_fmt;
  m_frame->sample_rate = m_sound.rate;
  m_frame->nb_samples = count;
  Check(av_channel_layout_copy(&m_frame->ch_layout, &m_encoder->ch_layout), "sound frame");
  Check(av_frame_get_buffer(m_frame.get(), 0), "sound frame");
  const auto* in = reinterpret_cast<const std::uint8_t*>(m_samples.data());
  Check(swr_convert(m_converter.get(), m_frame->extended_data, count, &in, count), "sound conversion");
  m_frame->pts = m_position;
  m_muxer.Encode(*m_encoder, *m_stream, m_frame.get(), count);
  m_position += count;
}

void ClipVoice::WriteUntil(std::int64_t position) {
  const std::int64_t end = std::min(position, m_end);
  while (m_position < end) {
    if (m_jump < m_sound.jumps.size() && m_position >= m_sound.jumps[m_jump].at) {
      m_position += m_sound.jumps[m_jump++].by;
      continue;
    }
    WriteFrame();
  }
}

void ClipVoice::Finish() {
  WriteUntil(m_end);
  m_muxer.Encode(*m_encoder, *m_stream, nullptr, 0);
}

}  // namespace vrx::test_support
