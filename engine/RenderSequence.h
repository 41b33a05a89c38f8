// What all render jobs do alike: slices of frames, progress, the range of the movie's frames, and the end by
// a cancel or a failure. The base of the jobs that write a movie, or its overlays alone.
#pragma once

#include <chrono>
#include <cstdint>

#include "engine/EngineResult.h"
#include "engine/OutputPlan.h"
#include "engine/StopSignal.h"
#include "vrx/VRXEngine.h"

namespace vrx::engine {

class RenderSequence : public IVRXSequence {
 public:
  RenderSequence(const RenderSequence&) = delete;
  RenderSequence& operator=(const RenderSequence&) = delete;
  ~RenderSequence() override = default;

  /// Calls the host's callbacks on the caller's thread. After a failure it gives the same failure again. Once
  /// it has found `endFlag` set, it does nothing more.
  std::int32_t Execute(VRXProgressInfo* progress, bool* endFlag) final;

 protected:
  // How long one call may take, and how long a job waits for a picture.
  static constexpr std::chrono::milliseconds kSliceLength{50};

  RenderSequence() = default;

  /// Goes on with the frames that `plan` asks for, m_total being those of the movie. kUnusableSettings, with
  /// a logged line, for frames that the movie does not have. A piece of a movie gets to know its frames.
  Result CutToRange(OutputPlan& plan);

  /// Renders one frame and counts it in m_done; leaves m_done when none is ready yet.
  virtual Result RenderNext() = 0;
  /// Completes the output, and sets m_finished unless a cancel came first.
  virtual Result Finish() = 0;
  /// Frees everything at once after a failure, since the host may keep a failed job for long.
  virtual void GiveUp() = 0;

  StopSignal m_stop;
  std::int64_t m_first = 0;  // the movie's frame that is rendered first
  std::int64_t m_total = 0;  // frames to render
  std::int64_t m_done = 0;   // frames rendered
  bool m_finished = false;

 private:
  Result DoSlice();
  Result Guarded();

  Result m_failure = kOk;
};

}  // namespace vrx::engine
