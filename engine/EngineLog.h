// Where the engine says in one readable line why something failed. Used by every part of the engine.
#pragma once

#include <string>
#include <string_view>

#include "vrx/VRXEngine.h"

namespace vrx::engine {

/// Null goes back to stderr. May be called at any time, from any thread.
void SetLogCallback(VRXLogFunction log, void* context);

/// Writes one line, without a line end. Thread-safe; lines never mix.
void Log(VRXLogSeverity severity, std::string_view line);

/// The text that libav gives for an error code of its own.
std::string AvErrorText(int code);

}  // namespace vrx::engine
