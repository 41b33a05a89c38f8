#include "engine/EngineLog.h"

extern "C" {
#include <libavutil/error.h>
}

#include <array>
#include <cstdio>
#include <mutex>

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

}  // namespace

void SetLogCallback(VRXLogFunction log, void* context) {
  Target& target = TheTarget();
  const std::lock_guard guard(target.lock);
  target.log = log;
  target.context = log == nullptr ? nullptr : context;
}

void Log(VRXLogSeverity severity, std::string_view line) {
  const std::string text(line);
  Target& target = TheTarget();
  const std::lock_guard guard(target.lock);
  if (target.log != nullptr) {
    target.log(target.context, severity, text.c_str());
  } else {
    std::fprintf(stderr, "VRXEngine %s: %s\n", SeverityName(severity), text.c_str());
  }
}

std::string AvErrorText(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return text.data();
}

}  // namespace vrx::engine
