// The folders that the system provides for all programs: the user's pictures, settings, the temporary
// folder. All are native paths without a trailing slash; empty when the system names none.
#pragma once

#include <string>

#include "vrx/XpString.h"

namespace vrx::platform {

/// The user's folders are those of the XDG user directories.
enum class UserFolder { Home, Pictures, Videos, Music, Documents, Desktop, Public };
XpString UserFolderPath(UserFolder folder);

XpString TemporaryFolder();
/// $XDG_CONFIG_HOME, and $XDG_DATA_HOME in the second.
XpString ConfigurationFolder();
XpString DataFolder();
/// Settings of all users.
XpString SystemConfigurationFolder();
/// $VRX_REGISTRY_DIR, which tests and portable installations set; empty when it is not an absolute path.
XpString RegistryFolderOverride();
/// Data, program entries and add-on programs of all users.
XpString SharedDataFolder();
XpString ProgramEntriesFolder();
XpString ProgramsFolder();
/// The folder of the system's own libraries.
XpString SystemLibraryFolder();

/// DataFolder as the system's bytes.
std::string UserDataFolder();

}  // namespace vrx::platform
