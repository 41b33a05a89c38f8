// What lies at a path, and its attributes.
#pragma once

#include "vrx/XpResult.h"
#include "vrx/XpString.h"

bool XpPathIsDirectory(const XpString& path);
/// `isDirectory` may be null, and is false when nothing is there. A link to nothing does not exist.
bool XpPathExists(const XpString& path, bool* isDirectory);
bool XpPathIsFile(const XpString& path);

/// Gives the owner the permission to write.
XpResult XpPathClearReadOnly(const XpString& path);
/// True when the owner may not write, also for a user whom permissions do not bind.
bool XpPathIsReadOnly(const XpString& path);
/// Marks a file as hidden without changing its name. XpErrAccessDenied where the file system cannot keep the
/// mark.
XpResult XpPathSetHidden(const XpString& path);
