#include "engine/SourceFile.h"

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <string_view>

#include "engine/EngineLog.h"
#include "engine/TimelinePlan.h"

namespace vrx::engine {
namespace {

constexpr std::int64_t kSimultaneous = 50'000;          // microseconds
constexpr std::int64_t kTailLength = 5 * AV_TIME_BASE;  // microseconds
constexpr AVRational kMicroseconds{1, AV_TIME_BASE};

bool HasExactDuration(const AVInputFormat& format) {
  return std::string_view(format.name).starts_with("mov,");
}

/// Other formats have no index, or build one of guesses while they are read.
bool HasKeyFrameIndex(const AVInputFormat& format) {
  return av_match_name("mov", format.name) != 0 || av_match_name("matroska", format.name) != 0 ||
         av_match_name("avi", format.name) != 0;
}

bool KnowsPicture(const AVStream& stream) {
  return stream.codecpar->width > 0 && stream.codecpar->height > 0 &&
         stream.codecpar->codec_id != AV_CODEC_ID_NONE;
}

}  // namespace

std::int64_t TicksAt(const ExactTime& time, AVRational base, std::int64_t origin) {
  const Int128 ticks = RoundDivide(time.numerator * base.den, time.denominator * base.num) + origin;
  constexpr Int128 kLimit = Int128{1} << 61;
  return static_cast<std::int64_t>(std::clamp<Int128>(ticks, -kLimit, kLimit));
}

Refusal SourceFile::Open(const std::string& path, Purpose purpose, const StopSignal& stop,
                         std::unique_ptr<SourceFile>& file) {
  std::unique_ptr<SourceFile> opened(new SourceFile(path, stop));
  VRX_TRY(MediaInput::Open(path, stop, opened->m_input));
  VRX_TRY(opened->FindVideo(purpose));
  file = std::move(opened);
  return {};
}

Refusal SourceFile::FindVideo(Purpose purpose) {
  AVFormatContext& demuxer = GetDemuxer();
  int index = av_find_best_stream(&demuxer, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  // The analysis finds how far frames are reordered, which a decoder needs and a check does not. It also
  // finds where the streams begin in files whose header does not say it, as in fragmented MP4: the length
  // depends on it.
  const bool known = index >= 0 && KnowsPicture(*demuxer.streams[index]) &&
                     demuxer.streams[index]->start_time != AV_NOPTS_VALUE;
  if (purpose == Purpose::Decode || !known) {
    const int error = avformat_find_stream_info(&demuxer, nullptr);
    if (error < 0) return {kSourceNotMovie, "is no movie (" + AvErrorText(error) + ")"};
    index = av_find_best_stream(&demuxer, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  }
  if (index < 0 || (demuxer.streams[index]->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
    return {kSourceNotMovie, "has no picture"};
  }
  m_stream = demuxer.streams[index];
  if (m_stream->time_base.num <= 0 || m_stream->time_base.den <= 0) {
    return {kSourceNotMovie, "has no usable clock"};
  }
  for (unsigned i = 0; i < demuxer.nb_streams; ++i) {
    if (demuxer.streams[i] != m_stream) demuxer.streams[i]->discard = AVDISCARD_ALL;
  }
  return {};
}

std::int64_t SourceFile::OriginTicks() const {
  const std::int64_t picture = m_stream->start_time == AV_NOPTS_VALUE ? 0 : m_stream->start_time;
  std::int64_t origin = picture;
  for (unsigned i = 0; i < GetDemuxer().nb_streams; ++i) {
    const AVStream& other = *GetDemuxer().streams[i];
    const bool sound = other.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
    if (!sound || other.start_time == AV_NOPTS_VALUE) continue;
    origin = std::min(origin, av_rescale_q(other.start_time, other.time_base, m_stream->time_base));
  }
  const std::int64_t tolerance =
      std::min(FrameTicks(), av_rescale_q(kSimultaneous, kMicroseconds, m_stream->time_base));
  return picture - origin <= tolerance ? picture : origin;
}

Orientation SourceFile::GetOrientation() const {
  const auto* matrix = reinterpret_cast<const std::int32_t*>(
      av_stream_get_side_data(m_stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr));
  return matrix == nullptr ? Orientation{} : Orientation::OfDisplayMatrix(matrix);
}

std::int64_t SourceFile::FrameTicks() const {
  const AVRational average = m_stream->avg_frame_rate;
  const AVRational rate = average.num > 0 && average.den > 0 ? average : m_stream->r_frame_rate;
  if (rate.num <= 0 || rate.den <= 0) return 1;
  return std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(rate), m_stream->time_base));
}

std::int64_t SourceFile::KeyFrameBefore(std::int64_t ticks) const {
  if (!HasKeyFrameIndex(*GetDemuxer().iformat)) return AV_NOPTS_VALUE;
  // Some indexes hold decoding times, which are earlier than those on display.
  const std::int64_t reordering = (m_stream->codecpar->video_delay + 1) * FrameTicks();
  const int count = avformat_index_get_entries_count(m_stream);
  const AVIndexEntry* last = avformat_index_get_entry(m_stream, count - 1);
  if (last == nullptr || last->timestamp < ticks - reordering) return AV_NOPTS_VALUE;
  const AVIndexEntry* key =
      avformat_index_get_entry_from_timestamp(m_stream, ticks - reordering, AVSEEK_FLAG_BACKWARD);
  return key == nullptr ? AV_NOPTS_VALUE : key->timestamp;
}

Refusal SourceFile::CountFrames(FrameDuration duration, std::int64_t& frames) {
  const AVRational base = m_stream->time_base;
  std::int64_t length = HasExactDuration(*GetDemuxer().iformat) ? m_stream->duration : AV_NOPTS_VALUE;
  if (length <= 0) length = LengthFromTail();
  // What comes before a picture that begins after the sound is a part of the source.
  const std::int64_t delay =
      m_stream->start_time == AV_NOPTS_VALUE ? 0 : m_stream->start_time - OriginTicks();
  if (length > 0) {
    frames = FramesOfSource(length + delay, base.num, base.den, duration);
    return {};
  }
  // Opened again, since the reading position is unknown after a failed search of the tail.
  std::unique_ptr<SourceFile> whole;
  VRX_TRY(Open(m_path, Purpose::Decode, m_stop, whole));
  const Extent extent = whole->ReadExtent();
  if (extent.packets == 0) return {kSourceNotMovie, "has no picture"};
  const std::int64_t counted = extent.packets * whole->FrameTicks();
  const bool timed = extent.end != AV_NOPTS_VALUE && extent.end > extent.first;
  const AVRational wholeBase = whole->GetStream().time_base;
  frames = FramesOfSource((timed ? extent.end - extent.first : counted) + delay, wholeBase.num, wholeBase.den,
                          duration);
  return {};
}

SourceFile::Extent SourceFile::ReadExtent() {
  Extent extent;
  const PacketPtr packet(av_packet_alloc());
  while (packet && av_read_frame(&GetDemuxer(), packet.get()) >= 0) {
    if (packet->stream_index == m_stream->index) {
      ++extent.packets;
      const std::int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
      if (time != AV_NOPTS_VALUE) {
        const std::int64_t end = time + (packet->duration > 0 ? packet->duration : FrameTicks());
        extent.first = extent.first == AV_NOPTS_VALUE ? time : std::min(extent.first, time);
        extent.end = extent.end == AV_NOPTS_VALUE ? end : std::max(extent.end, end);
      }
    }
    av_packet_unref(packet.get());
  }
  return extent;
}

std::int64_t SourceFile::LengthFromTail() {
  const bool guessed = GetDemuxer().duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
  if (GetDemuxer().duration <= 0 || guessed || m_stream->start_time == AV_NOPTS_VALUE) return 0;
  const std::int64_t start = GetDemuxer().start_time == AV_NOPTS_VALUE ? 0 : GetDemuxer().start_time;
  const std::int64_t tail = start + std::max<std::int64_t>(0, GetDemuxer().duration - kTailLength);
  if (av_seek_frame(&GetDemuxer(), m_stream->index, av_rescale_q(tail, kMicroseconds, m_stream->time_base),
                    AVSEEK_FLAG_BACKWARD) < 0) {
    return 0;
  }
  const Extent extent = ReadExtent();
  return extent.end == AV_NOPTS_VALUE ? 0 : extent.end - m_stream->start_time;
}

}  // namespace vrx::engine
