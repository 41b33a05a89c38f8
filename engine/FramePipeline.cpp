#include "engine/FramePipeline.h"

#include <algorithm>
#include <new>
#include <utility>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr std::size_t kMaxQueue =
    8;  // frames; they bridge the search for the next cut, more would only cost memory
constexpr std::size_t kMinQueue = 2;  // frames
constexpr std::size_t kQueueBytes = std::size_t{32} << 20;
constexpr std::size_t kOpenSources = 3;

std::size_t Capacity(const VideoPlan& video) {
  const std::size_t frameBytes =
      static_cast<std::size_t>(video.width) * static_cast<std::size_t>(video.height) * 3 / 2;
  return std::clamp(kQueueBytes / frameBytes, kMinQueue, kMaxQueue);
}

}  // namespace

FramePipeline::FramePipeline(const std::vector<VideoClip>& clips, const VideoPlan& video)
    : m_clips(clips),
      m_duration(video.frameDuration),
      m_capacity(Capacity(video)),
      m_fitter(video.width, video.height),
      m_thread([this] { Run(); }) {}

FramePipeline::~FramePipeline() {
  {
    const std::scoped_lock lock(m_lock);
    m_stop.Set();
  }
  m_changed.notify_all();
  m_thread.join();
}

Result FramePipeline::Take(std::chrono::milliseconds patience, FramePtr& frame) {
  frame.reset();
  std::unique_lock guard(m_lock);
  m_changed.wait_for(guard, patience, [this] { return !m_frames.empty() || m_finished; });
  if (m_frames.empty()) {
    if (!m_finished) return kOk;
    return m_result == kOk ? kFailed : m_result;
  }
  frame = std::move(m_frames.front());
  m_frames.pop_front();
  guard.unlock();
  m_changed.notify_all();
  return kOk;
}

void FramePipeline::Run() {
  Result result = kFailed;
  try {
    result = DecodeClips();
  } catch (const std::bad_alloc&) {
    Log(VRXLogError, "out of memory while decoding");
    result = kOutOfMemory;
  } catch (const std::exception& failure) {
    Log(VRXLogError, std::string("decoding failed: ") + failure.what());
  }
  m_sources.clear();
  {
    const std::scoped_lock lock(m_lock);
    m_result = result;
    m_finished = true;
  }
  m_changed.notify_all();
}

Result FramePipeline::DecodeClips() {
  for (const VideoClip& clip : m_clips) {
    if (m_stop.IsSet()) break;
    const ClipLogScope scope(VRXVideoTrack, clip.number);
    if (clip.rawInput != nullptr || clip.frameCount == 0) continue;
    VRX_TRY(DecodeClip(clip));
  }
  return kOk;
}

Result FramePipeline::DecodeClip(const VideoClip& clip) {
  FileVideoSource* source = nullptr;
  VRX_TRY(FindSource(clip.path, source));
  source->BeginClip();
  FramePtr fitted;
  std::uint64_t fittedSerial = 0;
  bool isNamed = false;
  for (std::int64_t index = 0; index < clip.frameCount && !m_stop.IsSet(); ++index) {
    const AVFrame* frame = nullptr;
    const ExactTime time = SourceTimeOfFrame(clip, index, m_duration);
    VRX_TRY(source->FrameAt(time, frame));
    if (!fitted || source->GetSerial() != fittedSerial) {
      if (const VRXDynamicRange range = DynamicRangeOf(*frame);
          range != VRXDynamicRangeStandard && !isNamed) {
        isNamed = true;
        Log(VRXLogInfo, clip.path + " is HDR (" + NameOf(range) +
                            "): its colours are brought to the movie's standard range");
      }
      VRX_TRY(m_fitter.Fit(*frame, source->GetOrientation(), fitted));
      fittedSerial = source->GetSerial();
    }
    if (!Push(ShareFrame(*fitted))) break;
  }
  return kOk;
}

Result FramePipeline::FindSource(const std::string& path, FileVideoSource*& source) {
  const auto found = std::find_if(m_sources.begin(), m_sources.end(),
                                  [&](const auto& open) { return open->GetPath() == path; });
  if (!m_sources.empty() && found != m_sources.begin()) m_sources.front()->ReleaseDecoder();
  if (found != m_sources.end()) {
    std::rotate(m_sources.begin(), found, found + 1);
  } else {
    std::unique_ptr<FileVideoSource> opened;
    const Refusal refusal = FileVideoSource::Open(path, m_stop, opened);
    if (m_stop.IsSet()) return kFailed;
    VRX_TRY(Report(path, refusal));
    m_sources.insert(m_sources.begin(), std::move(opened));
    if (m_sources.size() > kOpenSources) m_sources.pop_back();
  }
  source = m_sources.front().get();
  return kOk;
}

bool FramePipeline::Push(FramePtr frame) {
  {
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [this] { return m_frames.size() < m_capacity || m_stop.IsSet(); });
    if (m_stop.IsSet()) return false;
    m_frames.push_back(std::move(frame));
  }
  m_changed.notify_all();
  return true;
}

}  // namespace vrx::engine
