#include "src/log/RenderLog.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "foundation/log/SfLog.h"

namespace vrx::render {
namespace {

/// The path of the source from the top of the tree.
XpString SourceName(std::source_location place) {
  std::string name = place.file_name();
  if (const std::size_t top = name.rfind("/src/"); top != name.npos) name.erase(0, top + 1);
  std::replace(name.begin(), name.end(), '/', '\\');
  return XpNarrowString(name).ToWide();
}

}  // namespace

void LogLine(const char16_t* function, const XpString& line, std::source_location place) {
  SfWriteLog(SfLogOutput, false, u"%s", SourceName(place).c_str(), function,
             static_cast<std::int32_t>(place.line()), line);
}

}  // namespace vrx::render
