#include "imaging/codecs/UprightPicture.h"

#include "imaging/pixmap/XpPixmapRotate.h"
#include "imaging/tags/TagEdits.h"

namespace vrx::imaging {

std::unique_ptr<XpPixmap24NoHandle> TurnUpright(std::unique_ptr<XpPixmap24NoHandle> picture,
                                                std::uint16_t orientation) {
  switch (QuarterTurnsOf(orientation)) {  // counter-clockwise
    case 1:
      return RotatePixmap90CCW(*picture);
    case 2:
      return RotatePixmap180(*picture);
    case 3:
      return RotatePixmap90CW(*picture);
    default:
      return picture;
  }
}

}  // namespace vrx::imaging
