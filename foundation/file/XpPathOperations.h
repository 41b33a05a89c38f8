// Making and removing directories.
#pragma once

#include "foundation/file/XpFileOperations.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

/// Makes a directory with all its parents. The path has to be absolute: native, with a drive, or with a
/// server and a share; any other form is XpErrPathForm. A directory that is there already is no failure.
XpResult XpPathMake(const XpString& path);

/// Removes a directory: an empty one, or with all that it holds. A link is removed itself and what it points
/// to stays. XpErrInvalidArgument for the empty path and for a root. `progress`, which may be null, gets the
/// number of direct entries and a step for each.
XpResult XpPathRemove(const XpString& path, bool recursive, XpFileProgress* progress);
