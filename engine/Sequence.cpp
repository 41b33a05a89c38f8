#include "engine/Sequence.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <string>
#include <utility>

#include "engine/EngineLog.h"
#include "engine/OutputTarget.h"
#include "engine/RenderSummary.h"
#include "engine/TimelineSources.h"

namespace vrx::engine {
namespace {

constexpr int kFramesPerSlice = 8;
constexpr std::chrono::milliseconds kSliceLength{50};

}  // namespace

Result Sequence::Create(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                        std::unique_ptr<Sequence>& sequence) {
  std::unique_ptr<Sequence> made(new Sequence);
  VRX_TRY(made->Prepare(timeline, output));
  sequence = std::move(made);
  return kOk;
}

Result Sequence::Prepare(const VRXTimeline& timeline, const VRXSystemOutputSetting& output) {
  VRX_TRY(MakeOutputPlan(output, CurrentRenderOverrides(), m_output));
  const VideoPlan& video = m_output.video;
  VRX_TRY(MakeTimelinePlan(timeline, video.frameDuration, m_timeline));
  VRX_TRY(RefuseSourceAsOutput(m_timeline, m_output.path));
  VRX_TRY(MakeOverlaySpans(output, video.frameDuration, m_spans));
  VRX_TRY(MeasureSources(video.frameDuration, m_timeline, m_total));
  VRX_TRY(CutToRange());
  VRX_TRY(OpenTracks());
  m_callback = output.rawOutput;
  m_overlay = std::make_unique<OverlayStage>(m_callback, std::move(m_spans), video.width, video.height);
  m_baseband = std::make_unique<BasebandVideoSource>(video.width, video.height);
  return OpenOutput();
}

Result Sequence::CutToRange() {
  const std::int64_t movie = m_total;
  m_first = m_output.firstFrame;
  m_total = m_output.frameCount == 0 ? movie - m_first : m_output.frameCount;
  if (m_total <= 0 || m_total > movie - m_first) {
    Log(VRXLogError, "the frames from " + std::to_string(m_first) +
                         (m_output.frameCount == 0 ? " on" : " to " + std::to_string(m_first + m_total - 1)) +
                         " are not in the movie, which has " + std::to_string(movie) + " frames, 0 to " +
                         std::to_string(movie - 1));
    return kUnusableSettings;
  }
  CutToFrames(m_first, m_total, m_timeline.video);
  return kOk;
}

Result Sequence::OpenTracks() {
  const bool header = MovieWriter::WantsGlobalHeader(m_output.container);
  VRX_TRY(m_videoEncoder.Open(m_output.video, header));
  if (!m_output.audio) return kOk;
  const AudioPlan& audio = *m_output.audio;
  VRX_TRY(m_audioEncoder.Open(audio, header));
  return AudioTrack::Open(m_timeline.audio, {audio.sampleRate, audio.channels}, SamplesBefore(m_first),
                          SamplesBefore(m_first + m_total), m_stop, m_audio);
}

Result Sequence::OpenOutput() {
  VRX_TRY(m_writer.Create(m_output));
  VRX_TRY(m_writer.AddStream(m_videoEncoder.GetContext(), m_videoStream));
  if (m_audio) {
    VRX_TRY(m_writer.AddStream(m_audioEncoder.GetContext(), m_audioStream));
  }
  const std::int64_t sound =
      m_audio ? m_audioEncoder.PacketsOf(SamplesBefore(m_first + m_total) - SamplesBefore(m_first)) : 0;
  return m_writer.Begin(static_cast<std::uint64_t>(m_total + sound));
}

std::int32_t Sequence::Execute(VRXProgressInfo* progress, bool* endFlag) {
  if (progress == nullptr || endFlag == nullptr) return kInvalidArgument;
  m_stop.Watch(endFlag);
  if (m_failure == kOk) m_failure = Guarded();
  m_stop.Watch(nullptr);
  // The last frame counts only when the movie has been renamed into place: a cancel may come before that.
  progress->processed = static_cast<std::uint64_t>(m_finished ? m_total : std::min(m_done, m_total - 1));
  progress->total = static_cast<std::uint64_t>(m_total);
  if (m_failure != kOk) {
    GiveUp();
  } else if (m_finished) {
    std::atomic_ref<bool>(*endFlag).store(true, std::memory_order_release);
  }
  return m_failure;
}

/// A cancel ends reads early; the failures that this causes are not reported.
Result Sequence::Guarded() {
  try {
    const Result result = DoSlice();
    return m_stop.IsSet() ? kOk : result;
  } catch (const std::bad_alloc&) {
    Log(VRXLogError, "out of memory");
    return kOutOfMemory;
  } catch (const std::exception& failure) {
    Log(VRXLogError, std::string("the render failed: ") + failure.what());
  } catch (...) {
    Log(VRXLogError, "the render failed: a callback threw");
  }
  return kFailed;
}

/// Frees everything at once, since the host may keep a failed sequence for long.
void Sequence::GiveUp() {
  m_pipeline.reset();
  m_writer.Abandon();
}

Result Sequence::DoSlice() {
  if (m_finished) return kOk;
  if (m_done == 0) m_overlay->SkipTo(m_first);
  const auto end = std::chrono::steady_clock::now() + kSliceLength;
  for (int frames = 0; frames < kFramesPerSlice && m_done < m_total; ++frames) {
    if (m_stop.IsSet()) return kOk;
    if (std::chrono::steady_clock::now() >= end) return kOk;
    FramePtr frame;
    VRX_TRY(NextFrame(frame));
    if (!frame) return kOk;
    VRX_TRY(EncodeFrame(frame));
  }
  return m_done == m_total && !m_stop.IsSet() ? Finish() : kOk;
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
  if (!m_audio) return kOk;
  const std::int64_t samples = SamplesBefore(m_first + m_done) - SamplesBefore(m_first);
  return m_audioEncoder.EncodeUpTo(samples, *m_audio, m_writer, m_audioStream);
}

/// Of the whole movie's sound.
std::int64_t Sequence::SamplesBefore(std::int64_t frame) const {
  return SamplesOfFrames(frame, m_output.video.frameDuration, m_output.audio->sampleRate);
}

Result Sequence::Finish() {
  m_pipeline.reset();
  if (m_audio) {
    VRX_TRY(m_audioEncoder.Drain(*m_audio, m_writer, m_audioStream));
  }
  VRX_TRY(m_videoEncoder.Drain(m_writer, m_videoStream, m_stop));
  if (m_stop.IsSet()) return kOk;
  VRX_TRY(m_writer.Finish());
  m_finished = true;
  KeepRenderSummary({m_writer.GetPacketCount(m_videoStream),
                     static_cast<std::uint64_t>(m_audioEncoder.GetSamples()), m_writer.GetBytes()});
  return kOk;
}

}  // namespace vrx::engine
