#include "src/overlayplan/LogPaths.h"

#include "src/project/ProjectPath.h"

namespace vrx::overlayplan {

void ResolveLogPaths(const XpString& painterPath, PainterInfo& info) {
  for (LogDataEntry& clip : info.templateInfo.logData) {
    clip.gpsLogFilePath = project::ResolvePath(painterPath, clip.gpsLogFilePath);
  }
}

}  // namespace vrx::overlayplan
