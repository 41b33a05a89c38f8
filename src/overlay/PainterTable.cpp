#include "src/overlay/PainterTable.h"

#include "overlay/caption/KVSCaptionPainterPlugIn.h"

namespace vrx::overlay {

PainterMakers MakePainterTable(drawing::TextRenderer& textRenderer) {
  PainterMakers makers;
  makers[KVSPainterCaption] = [&textRenderer] {
    return std::make_unique<KVSCaptionPainterPlugIn>(textRenderer);
  };
  return makers;
}

}  // namespace vrx::overlay
