#include "engine/SourceFile.h"

extern "C" {
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "engine/EngineLog.h"
#include "engine/TimelinePlan.h"

namespace vrx::engine {
namespace {

constexpr std::int64_t kSimultaneous = 50'000;          // microseconds
constexpr std::int64_t kTailLength = 5 * AV_TIME_BASE;  // microseconds
constexpr AVRational kMicroseconds{1, AV_TIME_BASE};

int Interrupted(void* stop) {
  return static_cast<const std::atomic<bool>*>(stop)->load(std::memory_order_relaxed) ? 1 : 0;
}

Result ResultOfOpenError(int error) {
  if (error == AVERROR(ENOENT) || error == AVERROR(ENOTDIR)) return kSourceMissing;
  if (error == AVERROR(ENOMEM)) return kOutOfMemory;
  if (error == AVERROR_INVALIDDATA || error == AVERROR_EOF || error == AVERROR_DEMUXER_NOT_FOUND) {
    return kSourceNotMovie;
  }
  return kSourceUnreadable;
}

bool IsMovie(const AVInputFormat& format) {
  // Takes any text for a drawing of characters.
  return std::string_view(format.name) != "tty";
}

bool HasExactDuration(const AVInputFormat& format) {
  return std::string_view(format.name).starts_with("mov,");
}

bool KnowsPicture(const AVStream& stream) {
  return stream.codecpar->width > 0 && stream.codecpar->height > 0 &&
         stream.codecpar->codec_id != AV_CODEC_ID_NONE;
}

}  // namespace

Result SourceFile::Open(const std::string& path, Purpose purpose, const std::atomic<bool>& stop,
                        std::unique_ptr<SourceFile>& file) {
  std::unique_ptr<SourceFile> opened(new SourceFile(path, stop));
  if (const Result result = opened->OpenContainer(); result != kOk) return result;
  if (const Result result = opened->FindVideo(purpose); result != kOk) return result;
  file = std::move(opened);
  return kOk;
}

SourceFile::~SourceFile() { avformat_close_input(&m_container); }

Result SourceFile::OpenContainer() {
  m_container = avformat_alloc_context();
  if (m_container == nullptr) return kOutOfMemory;
  m_container->interrupt_callback = {&Interrupted, const_cast<std::atomic<bool>*>(&m_stop)};
  AVDictionary* options = nullptr;
  // A play list inside a source must not lead to the network.
  av_dict_set(&options, "protocol_whitelist", "file", 0);
  const int error = avformat_open_input(&m_container, ("file:" + m_path).c_str(), nullptr, &options);
  av_dict_free(&options);
  if (error >= 0) return kOk;
  const Result result = ResultOfOpenError(error);
  if (result == kSourceMissing) return Fail(result, "source not found");
  return Fail(result, (result == kSourceNotMovie ? "source is no movie (" : "source not readable (") +
                          AvErrorText(error) + ")");
}

Result SourceFile::FindVideo(Purpose purpose) {
  int index = av_find_best_stream(m_container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  // Decoders learn the depth of reordering from the analysis, so that only a check may leave it out.
  const bool known = index >= 0 && KnowsPicture(*m_container->streams[index]);
  if (purpose == Purpose::kDecode || !known) {
    const int error = avformat_find_stream_info(m_container, nullptr);
    if (error < 0) return Fail(kSourceNotMovie, "source is no movie (" + AvErrorText(error) + ")");
    index = av_find_best_stream(m_container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  }
  if (index < 0 || !IsMovie(*m_container->iformat) ||
      (m_container->streams[index]->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
    return Fail(kSourceNotMovie, "source has no video stream");
  }
  m_stream = m_container->streams[index];
  if (m_stream->time_base.num <= 0 || m_stream->time_base.den <= 0) {
    return Fail(kSourceNotMovie, "source has no usable clock");
  }
  for (unsigned i = 0; i < m_container->nb_streams; ++i) {
    if (m_container->streams[i] != m_stream) m_container->streams[i]->discard = AVDISCARD_ALL;
  }
  return kOk;
}

Result SourceFile::Fail(Result result, const std::string& cause) const {
  Log(VRXLogError, cause + ": " + m_path);
  return result;
}

std::int64_t SourceFile::OriginTicks() const {
  const std::int64_t picture = m_stream->start_time == AV_NOPTS_VALUE ? 0 : m_stream->start_time;
  std::int64_t origin = picture;
  for (unsigned i = 0; i < m_container->nb_streams; ++i) {
    const AVStream& other = *m_container->streams[i];
    const bool sound = other.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
    if (!sound || other.start_time == AV_NOPTS_VALUE) continue;
    origin = std::min(origin, av_rescale_q(other.start_time, other.time_base, m_stream->time_base));
  }
  const std::int64_t tolerance =
      std::min(FrameTicks(), av_rescale_q(kSimultaneous, kMicroseconds, m_stream->time_base));
  return picture - origin <= tolerance ? picture : origin;
}

std::int64_t SourceFile::FrameTicks() const {
  const AVRational average = m_stream->avg_frame_rate;
  const AVRational rate = average.num > 0 && average.den > 0 ? average : m_stream->r_frame_rate;
  if (rate.num <= 0 || rate.den <= 0) return 1;
  return std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(rate), m_stream->time_base));
}

Result SourceFile::CountFrames(FrameDuration duration, std::int64_t& frames) {
  const AVRational base = m_stream->time_base;
  std::int64_t length = HasExactDuration(*m_container->iformat) ? m_stream->duration : AV_NOPTS_VALUE;
  if (length <= 0) length = LengthFromTail();
  if (length > 0) {
    frames = FramesOfSource(length, base.num, base.den, duration);
    return kOk;
  }
  // A fresh start: after a failed search of the tail nothing is known about the position.
  std::unique_ptr<SourceFile> whole;
  if (const Result result = Open(m_path, Purpose::kDecode, m_stop, whole); result != kOk) return result;
  const Extent extent = whole->ReadExtent();
  if (extent.packets == 0) return Fail(kSourceNotMovie, "source has no pictures");
  const std::int64_t counted = extent.packets * whole->FrameTicks();
  const bool timed = extent.end != AV_NOPTS_VALUE && extent.end > extent.first;
  const AVRational wholeBase = whole->stream().time_base;
  frames =
      FramesOfSource(timed ? extent.end - extent.first : counted, wholeBase.num, wholeBase.den, duration);
  return kOk;
}

SourceFile::Extent SourceFile::ReadExtent() {
  Extent extent;
  const PacketPtr packet(av_packet_alloc());
  while (packet && av_read_frame(m_container, packet.get()) >= 0) {
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
  const bool guessed = m_container->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
  if (m_container->duration <= 0 || guessed || m_stream->start_time == AV_NOPTS_VALUE) return 0;
  const std::int64_t start = m_container->start_time == AV_NOPTS_VALUE ? 0 : m_container->start_time;
  const std::int64_t tail = start + std::max<std::int64_t>(0, m_container->duration - kTailLength);
  if (av_seek_frame(m_container, m_stream->index, av_rescale_q(tail, kMicroseconds, m_stream->time_base),
                    AVSEEK_FLAG_BACKWARD) < 0) {
    return 0;
  }
  const Extent extent = ReadExtent();
  return extent.end == AV_NOPTS_VALUE ? 0 : extent.end - m_stream->start_time;
}

}  // namespace vrx::engine
