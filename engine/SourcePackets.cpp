#include "engine/SourcePackets.h"

extern "C" {
#include <libavutil/mathematics.h>
}

#include <utility>

namespace vrx::engine {
namespace {

// What a file without an index of its times may miss a moment by. Files with one are read this much longer.
constexpr std::int64_t kSearchSeconds = 1;

}  // namespace

Refusal SourcePackets::Open(const std::string& path, const StopSignal& stop,
                            std::unique_ptr<SourcePackets>& packets) {
  std::unique_ptr<SourcePackets> opened(new SourcePackets(path, stop));
  opened->m_packet.reset(av_packet_alloc());
  if (!opened->m_packet) return RefuseForMemory();
  VRX_TRY(opened->OpenFile());
  packets = std::move(opened);
  return {};
}

Refusal SourcePackets::OpenFile() {
  m_file.reset();
  VRX_TRY(SourceFile::Open(m_path, SourceFile::Purpose::Decode, m_stop, m_file));
  m_isFresh = true;
  return {};
}

Refusal SourcePackets::GoTo(std::int64_t ticks) {
  const AVStream& stream = m_file->GetStream();
  const std::int64_t target = ticks - av_rescale_q(kSearchSeconds, AVRational{1, 1}, stream.time_base);
  const std::int64_t first = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
  const bool isLater = target > first;
  if (!isLater && m_isFresh) return {};
  if (isLater && av_seek_frame(&m_file->GetDemuxer(), stream.index, target, AVSEEK_FLAG_BACKWARD) >= 0) {
    m_isFresh = false;
    return {};
  }
  return OpenFile();
}

AVPacket* SourcePackets::Next() {
  m_isFresh = false;
  do {
    av_packet_unref(m_packet.get());
    if (m_stop.IsSet() || av_read_frame(&m_file->GetDemuxer(), m_packet.get()) < 0) return nullptr;
  } while (m_packet->stream_index != m_file->GetStream().index);
  return m_packet.get();
}

}  // namespace vrx::engine
