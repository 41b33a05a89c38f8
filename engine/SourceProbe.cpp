#include "engine/SourceProbe.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>

#include "engine/AudioSource.h"
#include "engine/SourceFile.h"
#include "engine/SourcePath.h"

namespace vrx::engine {
namespace {

/// Fine enough for every frame rate.
constexpr FrameDuration kProbeClock{1, 90'000};

const char* CauseOf(Result result) {
  switch (result) {
    case kSourceMissing:
      return "does not exist";
    case kSourceUnreadable:
      return "cannot be read";
    case kSourceNotMovie:
      return "is no movie and no sound file";
    default:
      return "cannot be opened";
  }
}

Result ProbeVideo(const std::string& path, VRXSourceProbe& probe) {
  const std::atomic<bool> never = false;
  std::unique_ptr<SourceFile> file;
  if (const Result result = SourceFile::Open(path, SourceFile::Purpose::kCheck, never, file); result != kOk) {
    return result;
  }
  probe.hasVideo = true;
  std::int64_t units = 0;
  if (const Result result = file->CountFrames(kProbeClock, units); result != kOk) return result;
  probe.videoSeconds = static_cast<double>(units) / static_cast<double>(kProbeClock.scale);
  return kOk;
}

Result ProbeAudio(const std::string& path, VRXSourceProbe& probe) {
  constexpr int kStereo = 2;
  std::unique_ptr<AudioSource> source;
  if (const Result result = AudioSource::Open(path, kStereo, source); result != kOk) return result;
  probe.hasAudio = source->HasSound();
  if (probe.hasAudio && source->Rate() > 0) {
    probe.audioSeconds = static_cast<double>(source->MeasureEnd()) / source->Rate();
  }
  return kOk;
}

}  // namespace

Result ProbeSource(std::u16string_view path, VRXSourceProbe& probe) {
  probe = {};
  const std::string native = NativePath(path);
  Result result = native.empty() ? kSourceMissing : ProbeVideo(native, probe);
  if (result == kOk || result == kSourceNotMovie) {
    const Result sound = ProbeAudio(native, probe);
    if (result != kOk && probe.hasAudio) result = sound;
  }
  if (result != kOk) std::snprintf(probe.cause, sizeof(probe.cause), "%s", CauseOf(result));
  return result;
}

}  // namespace vrx::engine
