// A small picture for the painters that are fuzzed.
#pragma once

#include "overlay/resources/PainterResources.h"

namespace vrx::fuzz {

/// Square, with colours and straight alpha that change from byte to byte.
inline PainterPicture MakePicture(std::int32_t side) {
  auto* made = new XpPixmap32;
  PainterPicture picture(made);
  made->Allocate(side, side);
  for (std::uint32_t i = 0; i < made->size; ++i) made->data[i] = static_cast<unsigned char>(i * 37);
  return picture;
}

}  // namespace vrx::fuzz
