// Folders that only this user may write to. Logs are in the temporary folder, which all users share; links
// and folders of others there must not redirect them.
#pragma once

#include <system_error>

#include "vrx/XpString.h"

namespace vrx::platform {

/// Makes a folder for this user alone, in a folder that exists; it may exist already. True when its last part
/// is private, as IsPrivateFolder defines it.
bool MakePrivateFolder(const XpString& path);

/// Makes a folder with a new name for this user alone in the temporary folder, and gives its path.
std::error_code MakeTemporaryFolder(XpString& path);
/// The same in a folder of the caller's, hidden.
std::error_code MakeTemporaryFolderIn(const XpString& folder, XpString& path);

/// True when the last `levels` parts of the path are folders, no links, and belong to this user or the
/// system. Other users may not write to the last one, and to those above it only if they are sticky.
bool IsPrivateFolder(const XpString& path, int levels);

/// The number of this user, as digits.
XpString UserNumber();

}  // namespace vrx::platform
