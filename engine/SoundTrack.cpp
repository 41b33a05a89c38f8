#include "engine/SoundTrack.h"

#include <optional>
#include <utility>

#include "engine/EngineLog.h"
#include "engine/SpanReport.h"

namespace vrx::engine {

Result SoundTrack::Open(std::vector<AudioClip> clips, const OutputPlan& plan, std::int64_t firstFrame,
                        std::int64_t frameCount, const StopSignal& stop) {
  SetFrames(plan, firstFrame, frameCount);
  const std::int64_t end = SamplesBefore(firstFrame + frameCount);
  return OpenClips(std::move(clips), plan, SamplesBefore(firstFrame), end, stop);
}

Result SoundTrack::OpenPiece(const std::string& path, const OutputPlan& plan, std::int64_t firstFrame,
                             std::int64_t frameCount, const StopSignal& stop) {
  SetFrames(plan, firstFrame, frameCount);
  const std::int64_t samples = SamplesBefore(firstFrame + frameCount) - SamplesBefore(firstFrame);
  VRX_TRY(OpenClips({{.path = path, .start = 0, .end = 0, .scale = 1}}, plan, 0, samples, stop));
  bool isThere = m_copier != nullptr;
  if (!isThere) VRX_TRY(FindInFile(samples, stop, isThere));
  if (isThere) return kOk;
  Log(VRXLogError, path + " has not all of the movie's sound: " + m_reason);
  return kUnusableSettings;
}

/// Whether a file that can begin within a packet could have all of the sound.
Result SoundTrack::FindInFile(std::int64_t samples, const StopSignal& stop, bool& isThere) const {
  std::string reason;
  const std::optional<SoundRun> run = m_track->FindSingleRun(reason);
  isThere = run && IsPcm(m_plan.codec);
  if (!run || isThere) return kOk;
  std::unique_ptr<AudioCopier> copier;
  VRX_TRY(AudioCopier::Open(*run, samples, m_plan, Container::Mp4, stop, copier, reason));
  isThere = copier != nullptr;
  return kOk;
}

void SoundTrack::SetFrames(const OutputPlan& plan, std::int64_t firstFrame, std::int64_t frameCount) {
  m_plan = *plan.audio;
  m_frameDuration = plan.video.frameDuration;
  m_firstFrame = firstFrame;
  m_frameCount = frameCount;
}

/// From sample `first` of the clips to before `end`.
Result SoundTrack::OpenClips(std::vector<AudioClip> clips, const OutputPlan& plan, std::int64_t first,
                             std::int64_t end, const StopSignal& stop) {
  VRX_TRY(
      AudioTrack::Open(std::move(clips), {m_plan.sampleRate, m_plan.channels}, first, end, stop, m_track));
  if (plan.smart == SmartRendering::Off) {
    m_reason = "smart rendering is off";
  } else if (const std::optional<SoundRun> run = m_track->FindSingleRun(m_reason)) {
    m_clip = static_cast<std::uint32_t>(run->clip + 1);
    VRX_TRY(AudioCopier::Open(*run, end - first, m_plan, plan.container, stop, m_copier, m_reason));
  }
  return m_copier ? kOk : m_encoder.Open(m_plan, MovieWriter::WantsGlobalHeader(plan.container));
}

/// The source is never the cause that pictures are encoded again, and so VRXSmartRequire does not refuse it:
/// sound is encoded in a moment, and by its place to the sample.
void SoundTrack::Report() const {
  ReportSpan({.track = VRXAudioTrack,
              .copied = m_copier != nullptr,
              .sourceIsCause = false,
              .firstFrame = static_cast<std::uint64_t>(m_firstFrame),
              .frameCount = static_cast<std::uint64_t>(m_frameCount),
              .clip = m_clip,
              .reason = m_reason.c_str(),
              .starts = nullptr,
              .startCount = 0});
}

Result SoundTrack::AddTo(MovieWriter& writer) {
  if (m_copier) return writer.AddStream(m_copier->GetParameters(), m_copier->GetTimeBase(), {0, 1}, m_stream);
  return writer.AddStream(m_encoder.GetContext(), m_stream);
}

std::int64_t SoundTrack::GetPackets() const {
  if (m_copier) return m_copier->GetPackets();
  return m_encoder.PacketsOf(SamplesBefore(m_firstFrame + m_frameCount) - SamplesBefore(m_firstFrame));
}

std::int64_t SoundTrack::GetSamples() const {
  return m_copier ? m_copier->GetSamples() : m_encoder.GetSamples();
}

Result SoundTrack::WriteUpTo(std::int64_t frames, MovieWriter& writer) {
  const std::int64_t samples = SamplesBefore(m_firstFrame + frames) - SamplesBefore(m_firstFrame);
  return m_copier ? m_copier->CopyUpTo(samples, writer, m_stream)
                  : m_encoder.EncodeUpTo(samples, *m_track, writer, m_stream);
}

Result SoundTrack::Finish(MovieWriter& writer) {
  return m_copier ? WriteUpTo(m_frameCount, writer) : m_encoder.Drain(*m_track, writer, m_stream);
}

/// Of the whole movie's sound.
std::int64_t SoundTrack::SamplesBefore(std::int64_t frame) const {
  return SamplesOfFrames(frame, m_frameDuration, m_plan.sampleRate);
}

}  // namespace vrx::engine
