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
  std::vector<OverlaySpan> overlays;
  VRX_TRY(MakeOverlaySpans(output, video.frameDuration, overlays));
  VRX_TRY(MeasureSources(video.frameDuration, m_timeline, m_total));
  VRX_TRY(CutToRange(m_output));
  const std::vector<VideoClip> whole = m_timeline.video;
  CutToFrames(m_first, m_total, m_timeline.video);
  VRX_TRY(MakeSmartPlan(m_output, m_timeline, overlays, m_first, m_stop, m_plan));
  if (m_output.piece) AddMovieSets(m_output, whole, m_stop, m_plan);
  m_clips = EncodedClips(m_plan, m_timeline.video);
  VRX_TRY(OpenTracks());
  ReportSpans(m_plan, m_first);
  if (m_sound) m_sound->Report();
  m_overlay =
      std::make_unique<OverlayStage>(output.rawOutput, std::move(overlays), video.width, video.height);
  m_baseband = std::make_unique<BasebandVideoSource>(video.width, video.height);
  return OpenOutput();
}

Result Sequence::OpenTracks() {
  VRX_TRY(m_pictures.Open(m_output, m_plan, m_stop));
  if (!m_output.audio) return kOk;
  m_sound = std::make_unique<SoundTrack>();
  return m_sound->Open(m_timeline.audio, m_output, m_first, m_total, m_stop);
}

Result Sequence::OpenOutput() {
  VRX_TRY(m_writer.Create(m_output));
  VRX_TRY(m_pictures.AddTo(m_writer));
  if (m_sound) VRX_TRY(m_sound->AddTo(m_writer));
  return m_writer.Begin(static_cast<std::uint64_t>(m_total + (m_sound ? m_sound->GetPackets() : 0)));
}

void Sequence::GiveUp() {
  m_pipeline.reset();
  m_writer.Abandon();
}

Result Sequence::RenderNext() {
  if (m_done == 0) m_overlay->SkipTo(m_first);
  if (const PictureSpan& span = SpanOf(m_done); span.IsCopied()) {
    VRX_TRY(m_pictures.Copy(span));
    return CountFrame();
  }
  FramePtr frame;
  VRX_TRY(NextFrame(frame));
  return frame ? EncodeFrame(frame) : kOk;
}

const PictureSpan& Sequence::SpanOf(std::int64_t frame) {
  while (frame >= m_plan.spans[m_span].EndFrame()) ++m_span;
  return m_plan.spans[m_span];
}

/// Leaves `frame` null when the decoder has none ready yet.
Result Sequence::NextFrame(FramePtr& frame) {
  while (m_frameInClip >= m_clips[m_clip].frameCount) {
    ++m_clip;
    m_frameInClip = 0;
  }
  const VideoClip& clip = m_clips[m_clip];
  const ClipLogScope scope(VRXVideoTrack, clip.number);
  if (!m_pipeline) m_pipeline = std::make_unique<FramePipeline>(m_clips, m_output.video);
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
  VRX_TRY(m_pictures.Encode(*frame, m_done));
  return CountFrame();
}

/// Writes the sound that belongs to a frame, too.
Result Sequence::CountFrame() {
  ++m_done;
  return m_sound ? m_sound->WriteUpTo(m_done, m_writer) : kOk;
}

Result Sequence::Finish() {
  m_pipeline.reset();
  if (m_sound) VRX_TRY(m_sound->Finish(m_writer));
  VRX_TRY(m_pictures.Drain());
  if (m_stop.IsSet()) return kOk;
  VRX_TRY(m_writer.Finish());
  m_finished = true;
  KeepRenderSummary({m_pictures.GetPacketCount(),
                     static_cast<std::uint64_t>(m_sound ? m_sound->GetSamples() : 0), m_writer.GetBytes(),
                     static_cast<std::uint64_t>(m_plan.CountCopied())});
  return kOk;
}

}  // namespace vrx::engine
