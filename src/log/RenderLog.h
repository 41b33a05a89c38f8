// The one place through which render control writes its lines to the log of the output channel.
#pragma once

#include <source_location>

#include "vrx/XpString.h"

namespace vrx::render {

/// `line` is text, never a format. `function` names the step of render control that the line is about.
void LogLine(const char16_t* function, const XpString& line,
             std::source_location place = std::source_location::current());

}  // namespace vrx::render
