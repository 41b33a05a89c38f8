// Resolves the paths inside a project document.
#pragma once

#include "vrx/XpString.h"

namespace vrx::project {

/// The native path of `path` as the document at `projectPath` names it: relative ones count from the
/// document's folder, drive letters go through the drive table. The empty path stays empty, and a path on an
/// unknown drive stays as it is, to be reported as missing.
XpString ResolvePath(const XpString& projectPath, const XpString& path);

}  // namespace vrx::project
