#include "engine/FileVideoSource.h"

extern "C" {
#include <libavutil/cpu.h>
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <cerrno>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr std::int64_t kReadOnSeconds = 3;  // a gap up to here is decoded through rather than jumped over
constexpr std::int64_t kMaxPixels = std::int64_t{16384} * 16384;
constexpr int kMaxThreads = 4;  // each keeps frames of its own; more do not help, since encoding takes longer
constexpr int kMaxIdleErrors = 64;  // of the decoder in a row, without a frame between
constexpr int kDamage =
    FF_DECODE_ERROR_INVALID_BITSTREAM | FF_DECODE_ERROR_CONCEALMENT_ACTIVE | FF_DECODE_ERROR_DECODE_SLICES;

/// Where a picture that no other refers to can be left out alone. With two fields in packets of their own,
/// one of them could remain.
bool CanSkip(const AVCodecParameters& stream) {
  if (stream.codec_id == AV_CODEC_ID_H264) {
    return stream.field_order == AV_FIELD_UNKNOWN || stream.field_order == AV_FIELD_PROGRESSIVE;
  }
  return stream.codec_id == AV_CODEC_ID_MPEG2VIDEO || stream.codec_id == AV_CODEC_ID_MPEG1VIDEO ||
         stream.codec_id == AV_CODEC_ID_MPEG4;
}

/// What the coded pictures do not say of their colours, the container may.
void TakeMissingColour(const AVCodecParameters& stream, AVFrame& frame) {
  if (frame.color_trc == AVCOL_TRC_UNSPECIFIED) frame.color_trc = stream.color_trc;
  if (frame.color_primaries == AVCOL_PRI_UNSPECIFIED) frame.color_primaries = stream.color_primaries;
  if (frame.colorspace == AVCOL_SPC_UNSPECIFIED) frame.colorspace = stream.color_space;
  if (frame.color_range == AVCOL_RANGE_UNSPECIFIED) frame.color_range = stream.color_range;
}

std::int64_t TicksOfSeconds(std::int64_t seconds, AVRational base) {
  return av_rescale_q(seconds, AVRational{1, 1}, base);
}

}  // namespace

Refusal FileVideoSource::Open(const std::string& path, const StopSignal& stop,
                              std::unique_ptr<FileVideoSource>& source) {
  std::unique_ptr<FileVideoSource> opened(new FileVideoSource(path, stop));
  opened->m_packet.reset(av_packet_alloc());
  opened->m_current.reset(av_frame_alloc());
  opened->m_next.reset(av_frame_alloc());
  if (!opened->m_packet || !opened->m_current || !opened->m_next) return RefuseForMemory();
  VRX_TRY(opened->OpenFile());
  source = std::move(opened);
  return {};
}

Refusal FileVideoSource::OpenFile() {
  m_codec.reset();
  m_file.reset();
  VRX_TRY(SourceFile::Open(m_path, SourceFile::Purpose::Decode, m_stop, m_file));
  m_origin = m_file->OriginTicks();
  m_frameTicks = m_file->FrameTicks();
  m_orientation = m_file->GetOrientation();
  ForgetPictures();
  m_maySkip = CanSkip(*m_file->GetStream().codecpar);
  m_fresh = true;
  return OpenDecoder();
}

Refusal FileVideoSource::OpenDecoder() {
  const AVStream& stream = m_file->GetStream();
  const char* name = avcodec_get_name(stream.codecpar->codec_id);
  const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
  if (decoder == nullptr)
    return {kSourceNotMovie, std::string("has a picture that no decoder here reads (") + name + ")"};
  m_codec.reset(avcodec_alloc_context3(decoder));
  if (!m_codec || avcodec_parameters_to_context(m_codec.get(), stream.codecpar) < 0) return RefuseForMemory();
  m_codec->thread_count = std::min(av_cpu_count(), kMaxThreads);
  m_codec->pkt_timebase = stream.time_base;
  m_codec->max_pixels = kMaxPixels;
  const int error = avcodec_open2(m_codec.get(), decoder, nullptr);
  if (error >= 0) return {};
  if (error == AVERROR(ENOMEM)) return RefuseForMemory();
  return {kSourceNotMovie,
          std::string("has a picture that cannot be decoded (") + name + ", " + AvErrorText(error) + ")"};
}

Result FileVideoSource::FrameAt(const ExactTime& time, const AVFrame*& frame) {
  if (!m_codec) {
    VRX_TRY(Report(m_path, OpenDecoder()));
  }
  const std::int64_t target = TicksAt(time, m_file->GetStream().time_base, m_origin);
  m_target = target;
  if (NeedsSeek(target)) {
    VRX_TRY(SeekTo(target));
  } else if (!m_hasCurrent) {
    VRX_TRY(DecodeFirstPicture());
  }
  for (;;) {
    if (!m_hasNext && !m_ended) {
      const Step step = DecodeNext(*m_next, m_nextTicks);
      if (step == Step::Stopped) return kFailed;
      if (m_wasDamaged && m_hasSkipped) {
        // A picture that was left out might have been the last good one.
        m_maySkip = false;
        VRX_TRY(SeekTo(target));
        continue;
      }
      m_hasNext = step == Step::Frame;
    }
    if (!m_hasNext || m_nextTicks > target) break;
    std::swap(m_current, m_next);
    m_currentTicks = m_nextTicks;
    m_hasNext = false;
    m_atBeginning = false;
    ++m_serial;
  }
  if (m_ended && IsMissing(target)) Warn("it ends before the time that it states");
  frame = m_current.get();
  return kOk;
}

/// Whether the file promises a picture there which is not in it, as one whose copy was not finished does.
bool FileVideoSource::IsMissing(std::int64_t target) const {
  const AVStream& stream = m_file->GetStream();
  const bool isGuess = m_file->GetDemuxer().duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
  if (isGuess || stream.duration <= 0 || stream.start_time == AV_NOPTS_VALUE) return false;
  const std::int64_t shown = m_currentTicks + std::max<std::int64_t>(m_current->pkt_duration, 0);
  // Statements of a length are often a few frames off.
  return std::min(target, stream.start_time + stream.duration) - shown > TicksOfSeconds(1, stream.time_base);
}

/// Reading on is cheaper than a jump as long as no key frame lies between. Without an index that knows, a gap
/// of some seconds is read through.
bool FileVideoSource::NeedsSeek(std::int64_t target) const {
  if (!m_hasCurrent && !m_fresh) return true;
  if (m_hasCurrent && target < m_currentTicks) return !m_atBeginning;
  if (m_ended) return false;
  const std::int64_t shown = !m_hasCurrent ? m_origin : m_hasNext ? m_nextTicks : m_currentTicks;
  const std::int64_t key = m_file->KeyFrameBefore(target);
  if (key != AV_NOPTS_VALUE) return key > std::max(shown, m_sentTicks);
  return target - shown > TicksOfSeconds(kReadOnSeconds, m_file->GetStream().time_base);
}

/// Goes back in growing steps until decoding begins no later than at `target`.
Result FileVideoSource::SeekTo(std::int64_t target) {
  const std::int64_t second = TicksOfSeconds(1, m_file->GetStream().time_base);
  std::int64_t step = 0;
  do {
    if (!SeekDemuxer(target - step)) break;
    const Step found = DecodeNext(*m_current, m_currentTicks);
    if (found == Step::Stopped) return kFailed;
    if (found == Step::Frame && m_currentTicks <= target) {
      m_hasCurrent = true;
      ++m_serial;
      return kOk;
    }
    step = step == 0 ? second : step * 2;
  } while (target - step > m_origin);
  return DecodeFirstPicture();
}

Result FileVideoSource::DecodeFirstPicture() {
  if (!m_fresh) {
    VRX_TRY(ReportUnlessStopped(OpenFile()));
  }
  Step step = DecodeNext(*m_current, m_currentTicks);
  if (step == Step::End && m_trustKeys) {
    // Some streams mark no key frames at all, and some have none that decodes.
    m_trustKeys = false;
    VRX_TRY(ReportUnlessStopped(OpenFile()));
    step = DecodeNext(*m_current, m_currentTicks);
  }
  if (step == Step::Stopped) return kFailed;
  if (step == Step::End) {
    return Report(m_path, {kSourceNotMovie, "has no picture that can be decoded"});
  }
  m_hasCurrent = true;
  m_atBeginning = true;
  ++m_serial;
  return kOk;
}

/// A search that was ended on purpose is no fault of the source.
Result FileVideoSource::ReportUnlessStopped(const Refusal& refusal) const {
  return m_stop.IsSet() ? kFailed : Report(m_path, refusal);
}

void FileVideoSource::ReleaseDecoder() {
  ForgetPictures();
  m_codec.reset();  // its pool of pictures would stay as long as the decoder does
  m_fresh = false;
}

void FileVideoSource::ForgetPictures() {
  av_frame_unref(m_current.get());
  av_frame_unref(m_next.get());
  m_hasCurrent = m_hasNext = m_atBeginning = m_draining = m_ended = false;
  m_waitForKey = m_trustKeys;
  m_wasDamaged = m_hasSkipped = false;
  m_keyTicks = m_lastTicks = AV_NOPTS_VALUE;
  m_sentTicks = m_newestWanted = INT64_MIN;
}

bool FileVideoSource::SeekDemuxer(std::int64_t ticks) {
  m_fresh = false;
  if (av_seek_frame(&m_file->GetDemuxer(), m_file->GetStream().index, ticks, AVSEEK_FLAG_BACKWARD) < 0)
    return false;
  avcodec_flush_buffers(m_codec.get());
  ForgetPictures();
  return true;
}

FileVideoSource::Step FileVideoSource::DecodeNext(AVFrame& frame, std::int64_t& ticks) {
  m_fresh = false;
  int errors = 0;
  while (!m_ended) {
    if (m_stop.IsSet()) return Step::Stopped;
    const int error = avcodec_receive_frame(m_codec.get(), &frame);
    if (error >= 0) {
      errors = 0;
      if (Accept(frame, ticks)) return Step::Frame;
    } else if (error == AVERROR_EOF) {
      m_ended = true;
    } else if (error != AVERROR(EAGAIN)) {
      Warn(AvErrorText(error));
      if (m_draining && ++errors > kMaxIdleErrors) m_ended = true;
    } else if (m_draining || !FeedDecoder()) {
      m_ended = true;
    }
  }
  return Step::End;
}

/// Hands one packet over, or the end of the stream. False when the decoder cannot take even that.
bool FileVideoSource::FeedDecoder() {
  av_packet_unref(m_packet.get());
  const int error = av_read_frame(&m_file->GetDemuxer(), m_packet.get());
  if (m_stop.IsSet()) return true;  // a packet may be cut short; the caller ends now
  if (error < 0) {
    if (error != AVERROR_EOF) Warn(AvErrorText(error));
    m_draining = true;
    return avcodec_send_packet(m_codec.get(), nullptr) >= 0;
  }
  if (m_packet->stream_index != m_file->GetStream().index) return true;
  if (m_waitForKey) {
    if ((m_packet->flags & AV_PKT_FLAG_KEY) == 0) return true;
    m_waitForKey = false;
    m_keyTicks = m_packet->pts;
  }
  ChooseSkipping(*m_packet);
  const int sent = avcodec_send_packet(m_codec.get(), m_packet.get());
  if (sent < 0 && sent != AVERROR(EAGAIN)) Warn(AvErrorText(sent));
  return true;
}

/// A picture that no other refers to need not be decoded when a later one, still no later than the moment
/// asked for, has already been sent.
void FileVideoSource::ChooseSkipping(const AVPacket& packet) {
  const bool isTimed = packet.pts != AV_NOPTS_VALUE;
  const bool skips = m_maySkip && isTimed && packet.pts < m_newestWanted;
  m_codec->skip_frame = skips ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
  m_hasSkipped = m_hasSkipped || skips;
  if (!isTimed) return;
  m_sentTicks = std::max(m_sentTicks, packet.pts);
  if (packet.pts <= m_target) m_newestWanted = std::max(m_newestWanted, packet.pts);
}

/// Gives the frame's time; false for a frame that must not be shown.
bool FileVideoSource::Accept(AVFrame& frame, std::int64_t& ticks) {
  TakeMissingColour(*m_file->GetStream().codecpar, frame);
  ticks = frame.best_effort_timestamp;
  if (ticks == AV_NOPTS_VALUE) ticks = m_lastTicks == AV_NOPTS_VALUE ? m_origin : m_lastTicks + m_frameTicks;
  // Pictures shown before the key frame refer to the group before it, which was not decoded.
  if (m_keyTicks != AV_NOPTS_VALUE && ticks < m_keyTicks) return false;
  m_lastTicks = ticks;
  const bool damaged =
      (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0 || (frame.decode_error_flags & kDamage) != 0;
  if (!damaged) return true;
  Warn("a picture is damaged");
  return !m_hasCurrent;
}

void FileVideoSource::Warn(const std::string& cause) {
  m_wasDamaged = true;
  if (m_warned) return;
  m_warned = true;
  Log(VRXLogWarning, m_path + " is damaged (" + cause + "): the last good picture holds");
}

}  // namespace vrx::engine
