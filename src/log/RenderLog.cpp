#include "src/log/RenderLog.h"

#include "foundation/log/SfLog.h"

namespace vrx::render {

void LogLine(const char16_t* function, const XpString& line, std::int32_t sourceLine) {
  SfWriteLog(SfLogOutput, false, u"%s", u"src\\VRXWrapperManager.cpp", function, sourceLine, line);
}

}  // namespace vrx::render
