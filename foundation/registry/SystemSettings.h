// Settings that the foundation itself uses. A program applies them once at its start, before it opens files.
#pragma once

#include "vrx/XpString.h"

namespace vrx::registry {

/// Takes drive letters from the key "Software\Kelo Corporation\LBR\Drives": values "A" to "Z" name native
/// folders, the machine's first and then the user's. Lets XpLibraryPath know InstalledLocation. May be called
/// again after settings changed.
void ApplySystemSettings();

/// Folder of this installation by "InstalledLocation" of the machine's product key; empty when it is not set.
XpString InstalledLocation();

/// The language that the user chose for texts, as a locale name like "ja-JP"; the system's when none is set.
XpString InterfaceLanguage();

}  // namespace vrx::registry
