// Decodes the file clips of a timeline ahead of the encoder, on a thread of its own, into a bounded queue of
// frames that have the movie's size and format. Used by the sequence.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/FileVideoSource.h"
#include "engine/FrameFitter.h"
#include "engine/OutputPlan.h"
#include "engine/TimelinePlan.h"

namespace vrx::engine {

class FramePipeline {
 public:
  /// Starts the thread. `clips` must outlive the pipeline; baseband clips among them are passed over.
  FramePipeline(const std::vector<VideoClip>& clips, const VideoPlan& video);
  FramePipeline(const FramePipeline&) = delete;
  FramePipeline& operator=(const FramePipeline&) = delete;
  /// Stops and joins the thread.
  ~FramePipeline();

  /// The next frame of the file clips, or null when none is ready within `patience`. A failure of the decode
  /// thread comes after the frames that it made before.
  Result Take(std::chrono::milliseconds patience, FramePtr& frame);

 private:
  void Run();
  Result DecodeClips();
  Result DecodeClip(const VideoClip& clip);
  Result FindSource(const std::string& path, FileVideoSource*& source);
  bool Push(FramePtr frame);

  const std::vector<VideoClip>& m_clips;
  const FrameDuration m_duration;
  const std::size_t m_capacity;  // frames

  FrameFitter m_fitter;                                     // decode thread
  std::vector<std::unique_ptr<FileVideoSource>> m_sources;  // decode thread; the one in use is in front

  StopSignal m_stop;
  std::mutex m_lock;
  std::condition_variable m_changed;
  std::deque<FramePtr> m_frames;  // guarded
  Result m_result = kOk;          // guarded
  bool m_finished = false;        // guarded; the decode thread adds no more
  std::thread m_thread;           // last, since it uses all of the above
};

}  // namespace vrx::engine
