// The one place through which render control writes its lines to the log of the output channel.
#pragma once

#include <cstdint>

#include "vrx/XpString.h"

namespace vrx::renderlog {

/// `line` is text, never a format. `function` names the step of render control that the line is about, the
/// last two the place in the sources that calls.
void LogLine(const char16_t* function, const XpString& line, const char* sourceFile = __builtin_FILE(),
             std::int32_t sourceLine = __builtin_LINE());

}  // namespace vrx::renderlog
