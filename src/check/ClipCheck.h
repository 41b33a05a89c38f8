// Lays the clips of a project on the movie's time axis and checks each one's range and source.
#pragma once

#include "src/check/ProjectReport.h"

namespace vrx::check {

/// Adds the rows and problems of both tracks to `report`, whose settings are there already. `file` is the
/// document.
void CheckClips(const XpString& file, const TKLXOutputXml& project, const SourceProbe& probe,
                ProjectReport& report);

}  // namespace vrx::check
