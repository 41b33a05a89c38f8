#include "src/log/RenderLog.h"

#include "foundation/log/SfLog.h"

namespace vrx::render {

void LogLine(const char16_t* function, const XpString& line, const std::source_location& place) {
  SfWriteLog(SfLogOutput, false, u"%s", u"src\\VRXWrapperManager.cpp", function,
             static_cast<std::int32_t>(place.line()), line);
}

}  // namespace vrx::render
