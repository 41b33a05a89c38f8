// The logs of a painter document as the machine finds them.
#pragma once

#include "overlay/document/PainterInfo.h"

namespace vrx::overlayplan {

/// Paths of logs that are relative count from the folder of the painter document, like the sources of a
/// project from its own; all of them become native.
void ResolveLogPaths(const XpString& painterPath, PainterInfo& info);

}  // namespace vrx::overlayplan
