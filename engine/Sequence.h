// One render job: pulls frames from the sources, sends them through the overlay callback and the encoders,
// and renames the finished movie into place. Implements IVRXSequence.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "engine/AudioEncoder.h"
#include "engine/AudioTrack.h"
#include "engine/BasebandVideoSource.h"
#include "engine/EngineResult.h"
#include "engine/FramePipeline.h"
#include "engine/MovieWriter.h"
#include "engine/OutputPlan.h"
#include "engine/OverlayStage.h"
#include "engine/TimelinePlan.h"
#include "engine/VideoEncoder.h"
#include "vrx/VRXEngine.h"

namespace vrx::engine {

class Sequence final : public IVRXSequence {
 public:
  /// Checks records, sources and encoders and makes the temporary file; a failure leaves none. The
  /// callbacks that the records name must live as long as the sequence.
  static Result Create(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                       std::unique_ptr<Sequence>& sequence);
  Sequence(const Sequence&) = delete;
  Sequence& operator=(const Sequence&) = delete;
  /// Stops at once; an unfinished movie is removed.
  ~Sequence() override = default;

  /// Calls the host's callbacks on the caller's thread. After a failure it gives the same failure again. Once
  /// it has found `endFlag` set, it does nothing more.
  std::int32_t Execute(VRXProgressInfo* progress, bool* endFlag) override;

 private:
  Sequence() = default;
  Result Prepare(const VRXTimeline& timeline, const VRXSystemOutputSetting& output);
  Result CutToRange();
  Result OpenTracks();
  Result OpenOutput();
  Result DoSlice();
  Result NextFrame(FramePtr& frame);
  Result EncodeFrame(FramePtr& frame);
  std::int64_t SamplesBefore(std::int64_t frame) const;
  Result Finish();
  Result Guarded();
  void GiveUp();

  OutputPlan m_output;
  TimelinePlan m_timeline;
  std::vector<OverlaySpan> m_spans;
  IVRXIntermediateRawOutputCallback* m_callback = nullptr;  // not owned
  std::int64_t m_first = 0;                                 // the movie's frame that is rendered first
  std::int64_t m_total = 0;                                 // frames to render
  std::int64_t m_done = 0;                                  // frames encoded
  std::size_t m_clip = 0;                                   // of the next frame
  std::int64_t m_frameInClip = 0;

  StopSignal m_stop;
  MovieWriter m_writer;
  VideoEncoder m_videoEncoder;
  AudioEncoder m_audioEncoder;
  std::unique_ptr<AudioTrack> m_audio;  // null for a silent movie
  int m_videoStream = 0;
  int m_audioStream = 0;
  std::unique_ptr<OverlayStage> m_overlay;
  std::unique_ptr<BasebandVideoSource> m_baseband;
  Result m_failure = kOk;
  bool m_finished = false;
  std::unique_ptr<FramePipeline> m_pipeline;  // last, so that its thread ends before what it uses
};

}  // namespace vrx::engine
