#include "engine/Sequence.h"

#include <utility>

#include "engine/EngineLog.h"
#include "engine/OutputTarget.h"
#include "engine/RenderSummary.h"
#include "engine/TimelineSources.h"

namespace vrx::engine {

Result Sequence::Create(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                        const RenderOverrides& overrides, std::unique_ptr<RenderSequence>& sequence) {
  std::unique_ptr<Sequence> made(new Sequence);
  VRX_TRY(made->Prepare(timeline, output, overrides));
  sequence = std::move(made);
  return kOk;
}

Result Sequence::Prepare(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                         const RenderOverrides& overrides) {
  VRX_TRY(MakeOutputPlan(output, overrides, m_output));
  const VideoPlan& video = m_output.video;
  VRX_TRY(MakeTimelinePlan(timeline, video.frameDuration, m_timeline));
  VRX_TRY(RefuseSourceAsOutput(m_timeline, m_output.path));
  VRX_TRY(MakeOverlaySpans(output, video.frameDuration, m_spans));
  VRX_TRY(MeasureSources(video.frameDuration, m_timeline, m_total));
  VRX_TRY(CutToRange(m_output));
  CutToFrames(m_first, m_total, m_timeline.video);
  VRX_TRY(OpenTracks());
  m_callback = output.rawOutput;
  m_overlay = std::make_unique<OverlayStage>(m_callback, std::move(m_spans), video.width, video.height);
  m_baseband = std::make_unique<BasebandVideoSource>(video.width, video.height);
  return OpenOutput();
}

Result Sequence::OpenTracks() {
  VRX_TRY(m_videoEncoder.Open(m_output.video, MovieWriter::WantsGlobalHeader(m_output.container)));
  if (!m_output.audio) return kOk;
  m_sound = std::make_unique<SoundTrack>();
  VRX_TRY(m_sound->Open(m_timeline.audio, m_output, m_first, m_total, m_stop));
  m_sound->Report();
  return kOk;
}

Result Sequence::OpenOutput() {
  VRX_TRY(m_writer.Create(m_output));
  VRX_TRY(m_writer.AddStream(m_videoEncoder.GetContext(), m_videoStream));
  if (m_sound) VRX_TRY(m_sound->AddTo(m_writer));
  return m_writer.Begin(static_cast<std::uint64_t>(m_total + (m_sound ? m_sound->GetPackets() : 0)));
}

void Sequence::GiveUp() {
  m_pipeline.reset();
  m_writer.Abandon();
}

Result Sequence::RenderNext() {
  if (m_done == 0) m_overlay->SkipTo(m_first);
  FramePtr frame;
  VRX_TRY(NextFrame(frame));
  return frame ? EncodeFrame(frame) : kOk;
}

/// Leaves `frame` null when the decoder has none ready yet.
Result Sequence::NextFrame(FramePtr& frame) {
  while (m_frameInClip >= m_timeline.video[m_clip].frameCount) {
    ++m_clip;
    m_frameInClip = 0;
  }
  const ClipLogScope scope(VRXVideoTrack, m_clip);
  const VideoClip& clip = m_timeline.video[m_clip];
  if (!m_pipeline) m_pipeline = std::make_unique<FramePipeline>(m_timeline.video, m_output.video);
  const Result result =
      clip.rawInput == nullptr
          ? m_pipeline->Take(kSliceLength, frame)
          : m_baseband->FrameOf(*clip.rawInput,
                                clip.firstRawFrame + static_cast<std::uint64_t>(m_frameInClip), frame);
  if (result == kOk && frame) ++m_frameInClip;
  return result;
}

Result Sequence::EncodeFrame(FramePtr& frame) {
  m_overlay->Apply(m_first + m_done, frame);
  VRX_TRY(m_videoEncoder.Encode(*frame, m_done, m_writer, m_videoStream));
  ++m_done;
  return m_sound ? m_sound->WriteUpTo(m_done, m_writer) : kOk;
}

Result Sequence::Finish() {
  m_pipeline.reset();
  if (m_sound) VRX_TRY(m_sound->Finish(m_writer));
  VRX_TRY(m_videoEncoder.Drain(m_writer, m_videoStream, m_stop));
  if (m_stop.IsSet()) return kOk;
  VRX_TRY(m_writer.Finish());
  m_finished = true;
  KeepRenderSummary({m_writer.GetPacketCount(m_videoStream),
                     static_cast<std::uint64_t>(m_sound ? m_sound->GetSamples() : 0), m_writer.GetBytes()});
  return kOk;
}

}  // namespace vrx::engine
