#include "overlay/painter/TextResolution.h"

#include "foundation/registry/SfRegistry.h"

namespace vrx::overlay {

TextResolution ChooseTextResolution() {
  const auto settings = SfRegistryOpenRead(u"Common", u"Settings");
  const bool isStretched = settings && settings->GetDword(u"StretchedText", 0) != 0;
  return isStretched ? TextResolution::Canvas : TextResolution::Frame;
}

}  // namespace vrx::overlay
