// What the name of a movie says of its container.
#pragma once

#include "vrx/XpString.h"

namespace vrx::check {

/// Whether a file of this name is an MPEG transport stream, unless the document asks for an MP4 file.
bool IsTransportStreamName(const XpString& path);

}  // namespace vrx::check
