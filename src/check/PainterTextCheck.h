// Checks the speed sections of a painter document. Their reader takes from the text what it can; this names
// what it cannot.
#pragma once

#include <vector>

#include "src/check/TextReport.h"

namespace vrx::check {

/// Damaged records and sections that cannot be meant. The first problems are named, the others counted.
void CheckSlowInfoText(const DocumentText& text, std::vector<Problem>& problems);

}  // namespace vrx::check
