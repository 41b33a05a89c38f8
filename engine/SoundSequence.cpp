#include "engine/SoundSequence.h"

#include "engine/EngineLog.h"
#include "engine/OutputTarget.h"
#include "engine/RenderSummary.h"
#include "engine/TimelineSources.h"

namespace vrx::engine {

Result SoundSequence::Create(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                             const RenderOverrides& overrides, std::unique_ptr<RenderSequence>& sequence) {
  std::unique_ptr<SoundSequence> made(new SoundSequence);
  VRX_TRY(made->Prepare(timeline, output, overrides));
  sequence = std::move(made);
  return kOk;
}

Result SoundSequence::Prepare(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                              const RenderOverrides& overrides) {
  VRX_TRY(MakeOutputPlan(output, overrides, m_output));
  if (!m_output.audio) {
    Log(VRXLogError, "the sound alone is asked for, and the movie has none");
    return kUnusableSettings;
  }
  TimelinePlan clips;
  VRX_TRY(MakeTimelinePlan(timeline, m_output.video.frameDuration, clips));
  VRX_TRY(RefuseSourceAsOutput(clips, m_output.path));
  VRX_TRY(MeasureSources(m_output.video.frameDuration, clips, m_total));
  VRX_TRY(CutToRange(m_output));
  VRX_TRY(m_sound.Open(std::move(clips.audio), m_output, m_first, m_total, m_stop));
  m_sound.Report();
  VRX_TRY(m_writer.Create(m_output));
  VRX_TRY(m_sound.AddTo(m_writer));
  return m_writer.Begin(static_cast<std::uint64_t>(m_sound.GetPackets()));
}

Result SoundSequence::RenderNext() { return m_sound.WriteUpTo(++m_done, m_writer); }

Result SoundSequence::Finish() {
  VRX_TRY(m_sound.Finish(m_writer));
  if (m_stop.IsSet()) return kOk;
  VRX_TRY(m_writer.Finish());
  m_finished = true;
  KeepRenderSummary({.frames = 0,
                     .soundSamples = static_cast<std::uint64_t>(m_sound.GetSamples()),
                     .bytes = m_writer.GetBytes()});
  return kOk;
}

}  // namespace vrx::engine
