// Checks the GPS part of a painter document: its clips, their logs, and when in the movie they are current.
#pragma once

#include <vector>

#include "overlay/document/PainterInfo.h"
#include "overlay/document/SlowInfoRecord.h"
#include "src/check/ProjectReport.h"

namespace vrx::check {

/// Reads the logs. Adds a row for each clip, and names logs without a position, positions that begin late or
/// end early, clips that are never current, and keys without which nothing is drawn. `info` is adopted, its
/// template record valid and its paths native; the report knows the painter document.
void CheckGps(const PainterInfo& info, const std::vector<SlowInfoRecord>& sections, ProjectReport& report);

}  // namespace vrx::check
