// The one place through which render control writes its log lines. A sink can be set; without one the lines
// are dropped.
#pragma once

#include "vrx/XpString.h"

namespace vrx::render {

/// Gets each line; called from the host's and the render thread, one call at a time.
using LogSink = void (*)(const XpString& line);

/// Null drops the lines.
void SetLogSink(LogSink sink);
void LogLine(const XpString& line);

}  // namespace vrx::render
