// Where the engine says in one readable line why something failed. Used by every part of the engine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "vrx/VRXEngineExtras.h"

namespace vrx::engine {

/// Null goes back to stderr. May be called at any time, from any thread.
void SetLogCallback(VRXLogFunction log, void* context);

/// Writes one line, without a line end. Thread-safe; lines never mix.
void Log(VRXLogSeverity severity, std::string_view line);

/// As long as it lives, what its thread logs is about one clip of the timeline.
class ClipLogScope {
 public:
  /// `index` is the clip's place on its track, counted from 0.
  ClipLogScope(VRXTrackKind track, std::size_t index);
  ClipLogScope(const ClipLogScope&) = delete;
  ClipLogScope& operator=(const ClipLogScope&) = delete;
  ~ClipLogScope();

 private:
  VRXTrackKind m_trackBefore;
  std::uint32_t m_clipBefore;
};

/// The text that libav gives for an error code of its own.
std::string AvErrorText(int code);
/// The text of an errno.
std::string SystemErrorText(int code);

}  // namespace vrx::engine
