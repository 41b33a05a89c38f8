// One render job: pulls frames from the sources, sends them through the overlay callback and the encoders,
// and renames the finished movie into place.
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
#include "engine/PictureTrack.h"
#include "engine/RenderSequence.h"
#include "engine/SmartPlan.h"
#include "engine/TimelinePlan.h"
#include "vrx/VRXEngine.h"

namespace vrx::engine {

class Sequence final : public RenderSequence {
 public:
  /// Checks records, sources and encoders and makes the temporary file; a failure leaves none. The
  /// callbacks that the records name must live as long as the sequence.
  static Result Create(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                       const RenderOverrides& overrides, std::unique_ptr<RenderSequence>& sequence);
  /// Stops at once; an unfinished movie is removed.
  ~Sequence() override = default;

 private:
  Sequence() = default;
  Result Prepare(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                 const RenderOverrides& overrides);
  Result OpenTracks();
  Result OpenOutput();
  Result RenderNext() override;
  const PictureSpan& SpanOf(std::int64_t frame);
  Result NextFrame(FramePtr& frame);
  Result EncodeFrame(FramePtr& frame);
  Result CountFrame();
  std::int64_t SamplesBefore(std::int64_t frame) const;
  Result Finish() override;
  void GiveUp() override;

  OutputPlan m_output;
  TimelinePlan m_timeline;
  SmartPlan m_plan;
  std::size_t m_span = 0;          // of the next frame
  std::vector<VideoClip> m_clips;  // what of the timeline is encoded
  std::size_t m_clip = 0;          // of the next of their frames
  std::int64_t m_frameInClip = 0;

  MovieWriter m_writer;
  PictureTrack m_pictures;
  AudioEncoder m_audioEncoder;
  std::unique_ptr<AudioTrack> m_audio;  // null for a silent movie
  int m_audioStream = 0;
  std::unique_ptr<OverlayStage> m_overlay;
  std::unique_ptr<BasebandVideoSource> m_baseband;
  std::unique_ptr<FramePipeline> m_pipeline;  // last, so that its thread ends before what it uses
};

}  // namespace vrx::engine
