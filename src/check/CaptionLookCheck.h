// Checks how captions will look: whether their fonts are there, which characters no font has, and whether all
// of their lines fit into the picture.
#pragma once

#include "drawing/FontCheck.h"
#include "drawing/TextRenderer.h"
#include "src/check/CaptionShowCheck.h"

namespace vrx::check {

/// Adds problems of the captions that show. `report` holds their rows and the output settings.
void CheckCaptionsLook(const CaptionShow& show, drawing::FontCheck& fonts, drawing::TextRenderer& renderer,
                       ProjectReport& report);

}  // namespace vrx::check
