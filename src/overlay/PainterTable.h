// Which painters this program has: the one place where kinds and classes meet.
#pragma once

#include "drawing/TextRenderer.h"
#include "overlay/painter/IKVSDynamicInfoPainter.h"

namespace vrx::overlay {

/// The renderer must outlive every painter that the makers give.
PainterMakers MakePainterTable(drawing::TextRenderer& textRenderer);

}  // namespace vrx::overlay
