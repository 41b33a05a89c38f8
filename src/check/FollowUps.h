// One mistake, one problem: takes out of a report what is only wrong because something else is. The
// inspection of a project ends with it.
#pragma once

#include <vector>

#include "src/check/ProjectReport.h"

namespace vrx::check {

/// Of a key that is misspelt or of a wrong type, what is said of the key that it should have been; of a dict
/// that ends too early, what is said of the keys that are missing in it. The mistake itself becomes as severe
/// as what it causes.
void DropFollowUps(std::vector<Problem>& problems);

}  // namespace vrx::check
