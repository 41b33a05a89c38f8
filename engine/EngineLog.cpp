#include "engine/EngineLog.h"

extern "C" {
#include <libavutil/error.h>
}

#include <array>
#include <cstdio>
#include <mutex>
#include <system_error>

namespace vrx::engine {
namespace {

struct Target {
  // Recursive, since a host's callback may set another callback from within.
  std::recursive_mutex lock;
  VRXLogFunction log = nullptr;
  void* context = nullptr;
};

Target& TheTarget() {
  static Target target;
  return target;
}

const char* SeverityName(VRXLogSeverity severity) {
  switch (severity) {
    case VRXLogInfo:
      return "info";
    case VRXLogWarning:
      return "warning";
    case VRXLogError:
      return "error";
  }
  return "error";
}

const char* TrackName(VRXTrackKind track) { return track == VRXAudioTrack ? "audio" : "video"; }

thread_local VRXTrackKind t_track = VRXNoTrack;
thread_local std::uint32_t t_clip = 0;

}  // namespace

ClipLogScope::ClipLogScope(VRXTrackKind track, std::size_t index)
    : m_trackBefore(t_track), m_clipBefore(t_clip) {
  t_track = track;
  t_clip = static_cast<std::uint32_t>(index + 1);
}

ClipLogScope::~ClipLogScope() {
  t_track = m_trackBefore;
  t_clip = m_clipBefore;
}

void SetLogCallback(VRXLogFunction log, void* context) {
  Target& target = TheTarget();
  const std::scoped_lock lock(target.lock);
  target.log = log;
  target.context = log == nullptr ? nullptr : context;
}

void Log(VRXLogSeverity severity, std::string_view line) {
  const std::string text(line);
  Target& target = TheTarget();
  const std::scoped_lock lock(target.lock);
  if (target.log != nullptr) {
    target.log(target.context, {severity, t_track, t_clip, text.c_str()});
  } else if (t_track != VRXNoTrack) {
    std::fprintf(stderr, "VRXEngine %s: %s clip %u: %s\n", SeverityName(severity), TrackName(t_track), t_clip,
                 text.c_str());
  } else {
    std::fprintf(stderr, "VRXEngine %s: %s\n", SeverityName(severity), text.c_str());
  }
}

std::string SystemErrorText(int code) { return std::generic_category().message(code); }

std::string AvErrorText(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return text.data();
}

}  // namespace vrx::engine
