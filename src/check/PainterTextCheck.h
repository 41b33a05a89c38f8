// Checks the two texts of a painter document that have a form of their own: captions and speed sections.
// Readers take from them what they can; this names what they cannot.
#pragma once

#include <vector>

#include "src/check/ProjectReport.h"

namespace vrx::check {

/// Damaged captions, numbers that are none, sizes and colours that cannot be meant. `file` names the
/// document. The first problems are named, the others counted.
void CheckCaptionText(const XpString& text, const XpString& file, std::vector<Problem>& problems);

/// Damaged records and sections that cannot be meant, likewise.
void CheckSlowInfoText(const XpString& text, const XpString& file, std::vector<Problem>& problems);

}  // namespace vrx::check
