#include "engine/TimelineSources.h"

#include <map>
#include <memory>
#include <string>

#include "engine/BasebandVideoSource.h"
#include "engine/EngineLog.h"
#include "engine/SourceFile.h"

namespace vrx::engine {
namespace {

Result CheckSources(FrameDuration duration, TimelinePlan& plan) {
  const StopSignal never;
  std::map<std::string, std::int64_t> lengths;  // frames by path; 0 if not measured
  for (std::size_t i = 0; i < plan.video.size(); ++i) {
    const ClipLogScope scope(VRXVideoTrack, i);
    VideoClip& clip = plan.video[i];
    if (clip.rawInput != nullptr) {
      VRX_TRY(BasebandVideoSource::Check(*clip.rawInput));
      continue;
    }
    const auto [entry, isNew] = lengths.try_emplace(clip.path, 0);
    const bool measure = clip.wholeSource && entry->second == 0;
    if (isNew || measure) {
      std::unique_ptr<SourceFile> file;
      Refusal refusal = SourceFile::Open(clip.path, SourceFile::Purpose::Check, never, file);
      if (IsOk(refusal) && measure) refusal = file->CountFrames(duration, entry->second);
      VRX_TRY(Report(clip.path, refusal));
    }
    if (clip.wholeSource) clip.frameCount = entry->second;
  }
  return kOk;
}

Result CountFrames(const TimelinePlan& plan, std::int64_t& totalFrames) {
  totalFrames = 0;
  for (const VideoClip& clip : plan.video) {
    if (clip.frameCount > kMaxMovieFrames - totalFrames) {
      Log(VRXLogError, "the movie would be longer than 2147483647 frames");
      return kUnusableSettings;
    }
    totalFrames += clip.frameCount;
  }
  if (totalFrames > 0) return kOk;
  Log(VRXLogError, "the timeline has no frame");
  return kUnusableSettings;
}

}  // namespace

Result MeasureSources(FrameDuration duration, TimelinePlan& plan, std::int64_t& totalFrames) {
  VRX_TRY(CheckSources(duration, plan));
  return CountFrames(plan, totalFrames);
}

}  // namespace vrx::engine
