// Where the pictures of the overlays lie.
#pragma once

#include "vrx/XpString.h"

namespace vrx::overlay {

/// The folder "KRVOResources" beside the application that the machine's settings name, which is the value
/// "ExeName" in the folder "InstalledLocation" of the key "Browser"; without such a location, beside the
/// running program. With its last separator; relative when neither is known.
XpString FindResourceFolder();

/// `folder` from FindResourceFolder with the name of a picture, which has backslashes.
XpString ResourcePath(const XpString& folder, const XpString& name);

}  // namespace vrx::overlay
