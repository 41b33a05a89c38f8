#include "engine/CopyReader.h"

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr int kMostLeftOut = 64;  // pictures that follow an open start and are shown before it

}  // namespace

Result CopyReader::Next(const PictureSpan& span, const CopiedSource& source, AVPacket*& packet,
                        std::int64_t& number) {
  const ClipLogScope scope(VRXVideoTrack, span.clip);
  if (m_span != &span) VRX_TRY(GoTo(span, source));
  const bool isFirst = m_done == 0;
  const CopyRun::Picture& wanted = span.run.pictures[m_done];
  int passed = 0;
  for (;;) {
    packet = m_packets->Next();
    if (packet == nullptr) return m_stop.IsSet() ? kFailed : Fail(source);
    const bool isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
    if (packet->pts == wanted.ticks && (isKey || !isFirst)) break;
    if (!isFirst && ++passed > kMostLeftOut) return Fail(source);
  }
  ++m_done;
  number = span.firstFrame + wanted.frame - span.run.firstFrame;
  av_packet_free_side_data(packet);
  packet->flags &= AV_PKT_FLAG_KEY;
  packet->pos = -1;
  return kOk;
}

Result CopyReader::GoTo(const PictureSpan& span, const CopiedSource& source) {
  m_span = nullptr;
  if (!m_packets || m_packets->GetPath() != source.path)
    VRX_TRY(Report(source.path, SourcePackets::Open(source.path, m_stop, m_packets)));
  VRX_TRY(Report(source.path, m_packets->GoTo(span.run.pictures.front().ticks)));
  m_span = &span;
  m_done = 0;
  return kOk;
}

Result CopyReader::Fail(const CopiedSource& source) const {
  return Report(source.path, {kSourceUnreadable, "was changed while it was copied from"});
}

}  // namespace vrx::engine
