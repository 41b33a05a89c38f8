#include "engine/AudioDecoder.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "engine/EngineLog.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avstring.h>
#include <libavutil/mathematics.h>
}

namespace vrx::engine {
namespace {

constexpr int kMaxSourceChannels = 64;  // libswresample's limit
constexpr int kFinerSteps = 64;         // to a sample, for times that are subtracted before they are rounded
constexpr int kJitterPerSecond = 200;   // smaller errors of timestamps, 1 / 200 s, are ignored
constexpr int kMaxEmptyReads = 1000;    // reads in a row that give neither a packet nor the end

bool IsUsable(const AVCodecParameters& parameters) {
  return parameters.sample_rate >= AudioDecoder::kMinRate &&
         parameters.sample_rate <= AudioDecoder::kMaxRate && parameters.ch_layout.nb_channels > 0 &&
         parameters.ch_layout.nb_channels <= kMaxSourceChannels;
}

}  // namespace

AudioDecoder::~AudioDecoder() {
  Close();
  av_packet_free(&m_packet);
  av_frame_free(&m_frame);
}

void AudioDecoder::Close() {
  avcodec_free_context(&m_codec);
  m_input.reset();
  m_demuxer = nullptr;
  m_stream = nullptr;
}

Result AudioDecoder::Open(const std::string& path, const StopSignal& stop,
                          std::unique_ptr<AudioDecoder>& decoder) {
  std::unique_ptr<AudioDecoder> opened(new AudioDecoder(path, stop));
  opened->m_packet = av_packet_alloc();
  opened->m_frame = av_frame_alloc();
  if (opened->m_packet == nullptr || opened->m_frame == nullptr) return kOutOfMemory;
  const Refusal refusal = opened->OpenFile();
  if (stop.IsSet()) return kFailed;
  const Result result = Report(path, refusal);
  if (result == kOk) decoder = std::move(opened);
  return result;
}

Refusal AudioDecoder::OpenFile() {
  VRX_TRY(MediaInput::Open(m_path, m_stop, m_input));
  m_demuxer = &m_input->GetDemuxer();
  const int code = avformat_find_stream_info(m_demuxer, nullptr);
  if (code < 0) return {kSourceNotMovie, "is no movie and no sound file (" + AvErrorText(code) + ")"};

  const AVCodec* codec = nullptr;
  const int index = av_find_best_stream(m_demuxer, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
  if (index < 0) {
    if (index == AVERROR_DECODER_NOT_FOUND) return {kSourceNotMovie, "has sound that no decoder here reads"};
    const bool picture = av_find_best_stream(m_demuxer, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0) >= 0;
    return picture ? Refusal{} : Refusal{kSourceNotMovie, "has neither sound nor picture"};
  }
  m_stream = m_demuxer->streams[index];
  for (unsigned i = 0; i < m_demuxer->nb_streams; ++i) {
    if (m_demuxer->streams[i] != m_stream) m_demuxer->streams[i]->discard = AVDISCARD_ALL;
  }
  m_untouched = true;
  if (!IsUsable(*m_stream->codecpar)) return {kSourceNotMovie, "has sound in a format that does not exist"};
  m_rate = m_stream->codecpar->sample_rate;
  return OpenCodec();
}

Refusal AudioDecoder::OpenCodec() {
  const AVCodecParameters& parameters = *m_stream->codecpar;
  m_isFed = false;
  const AVCodec* codec = avcodec_find_decoder(parameters.codec_id);
  m_codec = avcodec_alloc_context3(codec);
  if (m_codec == nullptr) return RefuseForMemory();
  int code = avcodec_parameters_to_context(m_codec, &parameters);
  m_codec->pkt_timebase = m_stream->time_base;
  if (code >= 0) code = avcodec_open2(m_codec, codec, nullptr);
  if (code < 0) return {kSourceNotMovie, "has sound that cannot be decoded (" + AvErrorText(code) + ")"};
  return {};
}

std::int64_t AudioDecoder::GetFileMicroseconds() const {
  return m_demuxer->duration == AV_NOPTS_VALUE || m_demuxer->duration < 0 ? 0 : m_demuxer->duration;
}

bool AudioDecoder::HasExactTimes() const {
  return m_demuxer != nullptr && m_demuxer->duration != AV_NOPTS_VALUE &&
         m_demuxer->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
}

int AudioDecoder::GetTickSamples() const {
  const std::int64_t tick = av_rescale_q_rnd(1, m_stream->time_base, {1, m_rate}, AV_ROUND_UP);
  return tick < 1 || tick > m_rate ? 1 : static_cast<int>(tick);
}

int AudioDecoder::GetJitter() const { return std::max(m_rate / kJitterPerSecond, 2 * GetTickSamples()); }

std::int64_t AudioDecoder::GetFirstPlace() const {
  return m_stream->start_time == AV_NOPTS_VALUE ? 0 : PlaceOf(m_stream->start_time);
}

std::int64_t AudioDecoder::PlaceOf(std::int64_t timestamp) const {
  if (timestamp == AV_NOPTS_VALUE) return kNoPlace;
  // Both times in steps much finer than a sample, so that two roundings never add up to one.
  const AVRational fine = {1, m_rate * kFinerSteps};
  const std::int64_t limit = kMaxSeconds * m_rate * kFinerSteps;
  const std::int64_t at = av_rescale_q(timestamp, m_stream->time_base, fine);
  const std::int64_t zero =
      m_demuxer->start_time == AV_NOPTS_VALUE ? 0 : av_rescale_q(m_demuxer->start_time, AV_TIME_BASE_Q, fine);
  if (at < -limit || at > limit || zero < -limit || zero > limit) return kNoPlace;
  return av_rescale_rnd(at - zero, 1, kFinerSteps, AV_ROUND_NEAR_INF);
}

std::int64_t AudioDecoder::GetEditedEnd() const {
  if (m_stream->duration == AV_NOPTS_VALUE || m_stream->start_time == AV_NOPTS_VALUE) return kNoPlace;
  std::int64_t end = 0;
  if (av_match_name("mov", m_demuxer->iformat->name) == 0) return kNoPlace;
  return __builtin_add_overflow(m_stream->start_time, m_stream->duration, &end) ? kNoPlace : PlaceOf(end);
}

/// With a new codec: a flushed one keeps the state of its noise, and a cut must not sound otherwise after one
/// clip than after another.
bool AudioDecoder::Restart() {
  m_draining = false;
  m_failed = false;
  if (!m_isFed) return true;
  avcodec_free_context(&m_codec);
  m_failed = !IsOk(OpenCodec());
  return !m_failed;
}

bool AudioDecoder::Seek(std::int64_t place) {
  if (m_stream == nullptr) return false;
  std::int64_t target = av_rescale_q(place, {1, m_rate}, m_stream->time_base);
  if (m_demuxer->start_time != AV_NOPTS_VALUE) {
    const std::int64_t zero = av_rescale_q(m_demuxer->start_time, AV_TIME_BASE_Q, m_stream->time_base);
    if (__builtin_add_overflow(target, zero, &target)) return Rewind();
  }
  if (av_seek_frame(m_demuxer, m_stream->index, target, AVSEEK_FLAG_BACKWARD) < 0) return Rewind();
  m_untouched = false;
  return Restart();
}

bool AudioDecoder::Rewind() {
  if (m_stream == nullptr) return false;
  // Not every format can seek back to its start. Such a file is opened again.
  if (!m_untouched) {
    // A second early, since packets that only prime the codec come before the stated start.
    const std::int64_t second = av_rescale_q(1, {1, 1}, m_stream->time_base);
    const std::int64_t start = (m_stream->start_time == AV_NOPTS_VALUE ? 0 : m_stream->start_time) - second;
    if (av_seek_frame(m_demuxer, m_stream->index, start, AVSEEK_FLAG_BACKWARD) < 0) {
      Close();
      if (!IsOk(OpenFile()) || m_stream == nullptr) {
        m_failed = true;
        return false;
      }
    }
  }
  return Restart();
}

bool AudioDecoder::ReadPacket() {
  m_untouched = false;
  for (int empty = 0; empty < kMaxEmptyReads;) {
    av_packet_unref(m_packet);
    const int code = av_read_frame(m_demuxer, m_packet);
    if (m_stop.IsSet()) return false;  // also with a packet, which may be cut short
    if (code == AVERROR(EAGAIN)) {
      ++empty;
      continue;
    }
    if (code < 0) {
      if (code != AVERROR_EOF) m_damaged = true;
      return false;
    }
    if (m_packet->stream_index == m_stream->index) return true;
  }
  m_damaged = true;
  return false;
}

const AVFrame* AudioDecoder::Next(std::int64_t& place) {
  if (m_stream == nullptr || m_failed) return nullptr;
  for (;;) {
    const int code = avcodec_receive_frame(m_codec, m_frame);
    if (code == 0) {
      if (m_frame->decode_error_flags != 0 || (m_frame->flags & AV_FRAME_FLAG_CORRUPT) != 0) m_damaged = true;
      place = PlaceOf(m_frame->best_effort_timestamp);
      return m_frame;
    }
    if (code == AVERROR_EOF) return nullptr;
    if (code != AVERROR(EAGAIN)) m_damaged = true;
    if (m_draining) {
      if (code == AVERROR(EAGAIN)) return nullptr;
      continue;
    }
    m_draining = !ReadPacket();
    if (!m_draining && (m_packet->flags & AV_PKT_FLAG_CORRUPT) != 0) m_damaged = true;
    m_isFed = true;
    if (avcodec_send_packet(m_codec, m_draining ? nullptr : m_packet) < 0) m_damaged = true;
  }
}

const AVPacket* AudioDecoder::NextPacket(std::int64_t& place) {
  if (m_stream == nullptr || m_failed || !ReadPacket()) return nullptr;
  if ((m_packet->flags & AV_PKT_FLAG_CORRUPT) != 0) m_damaged = true;
  place = PlaceOf(m_packet->pts);
  return m_packet;
}

bool AudioDecoder::TakeDamage() {
  const bool damaged = m_damaged;
  m_damaged = false;
  return damaged;
}

}  // namespace vrx::engine
