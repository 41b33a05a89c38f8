// What the import and the display of GPS logs need to know of a movie: when it was recorded and how long it
// is.
#pragma once

#include "gps/receiver/LogAlignment.h"
#include "vrx/XpString.h"

namespace vrx::host {

/// The zone is that of the movie's sidecar, else that of the movie itself, as the reader of logs takes it;
/// the length comes from the conversion engine. What is not stated stays empty, and a date that is not stated
/// is not valid.
receiver::MovieTime InspectMovie(const XpString& path);

}  // namespace vrx::host
