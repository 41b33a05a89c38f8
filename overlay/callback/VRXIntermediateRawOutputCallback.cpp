#include "overlay/callback/VRXIntermediateRawOutputCallback.h"

#include <algorithm>

#include "overlay/callback/BlendOverlay.h"

using vrx::overlay::DrawSpan;
using vrx::overlay::PainterClock;
using vrx::overlay::SegmentClock;

bool VRXIntermediateRawOutputCallback::IsWanted(PainterClock clock) const {
  return std::any_of(m_context.kinds.begin(), m_context.kinds.end(),
                     [&](const auto& kind) { return kind.clock == clock && kind.IsWanted(*m_context.info); });
}

void VRXIntermediateRawOutputCallback::ResetTimeGenerators(std::span<const SlowInfoRecord> records) {
  m_gpsTime.SetCountsTrimmed(m_context.info != nullptr && m_context.info->templateInfo.drawTrimmedOutArea);
  m_gpsTime.Reset(records);
  if (!records.empty()) m_gpsTime.SetPosition(m_gpsTime.StartOf(records.front()));
  m_tennisTime.Reset(records);
}

PainterTimes VRXIntermediateRawOutputCallback::Advance(std::uint64_t frame) {
  const PainterInfo& info = *m_context.info;
  const DrawSpan span{info.templateInfo.drawStartTime, info.templateInfo.drawEndTime};
  PainterTimes times{
      .gpsMs = SegmentClock::kNoTime, .tennisMs = SegmentClock::kNoTime, .captionMs = SegmentClock::kNoTime};
  const VRXTimeInfo& length = m_context.frameLength;
  if (IsWanted(PainterClock::Gps)) times.gpsMs = m_gpsTime.Generate(frame, times.videoId, length, span);
  if (IsWanted(PainterClock::Tennis)) times.tennisMs = m_tennisTime.Generate(frame, length, span);
  if (IsWanted(PainterClock::Caption)) times.captionMs = m_captionTime.Generate(frame, length);
  return times;
}

void VRXIntermediateRawOutputCallback::SkipFrames(std::uint64_t first, std::uint64_t end) {
  if (m_context.info == nullptr) return;
  for (std::uint64_t frame = first; frame < end; ++frame) Advance(frame);
}

bool VRXIntermediateRawOutputCallback::ProcessFrame(std::uint64_t frame, void* buffer, std::uint32_t size,
                                                    std::int32_t stage, std::int32_t format) {
  m_isBlended = false;
  if (stage != kStage || format != kFormat || m_context.info == nullptr) return false;
  PainterTimes times = Advance(frame);
  if (times.gpsMs < 0 && times.tennisMs < 0 && times.captionMs < 0) return true;
  for (std::int64_t* time : {&times.gpsMs, &times.tennisMs, &times.captionMs}) {
    *time = std::max<std::int64_t>(*time, 0);
  }
  if (!Paint(times)) return false;
  vrx::overlay::BlendOverlay(*m_overlay, m_drawn, buffer, size);
  m_isBlended = true;
  return true;
}

void VRXIntermediateRawOutputCallback::GetChangedRows(std::int32_t& first, std::int32_t& end) const {
  first = m_isBlended ? m_drawn.GetFirstRow() : 0;
  end = m_isBlended ? m_drawn.GetLastRow() : 0;
}

const std::uint32_t* VRXIntermediateRawOutputCallback::GetDrawing() const {
  return m_isBlended ? reinterpret_cast<const std::uint32_t*>(m_overlay->data) : nullptr;
}

bool VRXIntermediateRawOutputCallback::Paint(const PainterTimes& times) {
  if (m_context.painters == nullptr) return false;
  if (!m_overlay) {
    // The geometry of a callback never changes, so neither does its picture's size.
    XpSharedPtr<XpPixmap32> made(new XpPixmap32);
    if (made->Allocate(m_context.width, m_context.height) != XpOk) return false;
    m_overlay = made;
  }
  m_wanted.clear();
  const bool isKnown = m_context.painters->GetContentStamps(times, m_wanted);
  if (isKnown && m_isShown && m_wanted == m_shown) return true;
  m_isShown = false;
  m_drawn.Clear(*m_overlay);
  const bool drawn = m_context.painters->DrawAllForVideo(times.videoId, times.gpsMs, times.tennisMs,
                                                         times.captionMs, m_overlay);
  m_drawn.Find(*m_overlay, m_context.painters->GetDrawnRows());
  if (!drawn) return false;
  m_isShown = isKnown;
  m_shown.swap(m_wanted);
  return true;
}
