// Folders that only this user may write to. Logs lie in the temporary folder, which all users share, and must
// not be led elsewhere by what another one has put there.
#pragma once

#include "vrx/XpString.h"

namespace vrx::platform {

/// Makes a folder for this user alone, in a folder that exists. One that is there already will do. True when
/// it is now private as below, in its last part.
bool MakePrivateFolder(const XpString& path);

/// True when the last `levels` parts of the path are folders and no links, belong to this user or to the
/// system, and take no entries from others: the last one none at all, those above it at most entries that
/// replace nothing of this user's.
bool IsPrivateFolder(const XpString& path, int levels);

/// A number of this user's own, as digits.
XpString UserNumber();

}  // namespace vrx::platform
