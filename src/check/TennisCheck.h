// Checks the tennis part of a painter document: its shots and what they need to be shown.
#pragma once

#include <vector>

#include "overlay/document/PainterInfo.h"
#include "src/check/TextReport.h"

namespace vrx::check {

/// Damaged records, shots out of order or out of range, a search tree that is not used, and keys without
/// which the overlay or its clock does not work. `info` is adopted and its tennis record valid.
void CheckTennis(const PainterInfo& info, const DocumentText& shots, std::vector<Problem>& problems);

}  // namespace vrx::check
