#include "src/renderlog/RenderLog.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "foundation/log/SfLog.h"

namespace vrx::renderlog {
namespace {

/// The path of the source from the top of the tree.
XpString SourceName(std::string name) {
  if (const std::size_t top = name.rfind("/src/"); top != name.npos) name.erase(0, top + 1);
  std::replace(name.begin(), name.end(), '/', '\\');
  return XpNarrowString(name).ToWide();
}

}  // namespace

void LogLine(const char16_t* function, const XpString& line, const char* sourceFile,
             std::int32_t sourceLine) {
  SfWriteLog(SfLogOutput, false, u"%s", SourceName(sourceFile).c_str(), function, sourceLine, line);
}

}  // namespace vrx::renderlog
