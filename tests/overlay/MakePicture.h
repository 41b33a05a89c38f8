// A picture for tests of painters, whose pixels tell any mistake in its place or size.
#pragma once

#include <gtest/gtest.h>

#include "overlay/resources/PainterResources.h"

namespace vrx::test_support {

/// Colours and straight alpha that change across the picture, different for each seed.
inline PainterPicture MakePicture(std::int32_t width, std::int32_t height, std::uint32_t seed) {
  auto* made = new XpPixmap32;
  PainterPicture picture(made);
  EXPECT_EQ(made->Allocate(width, height), XpOk);
  for (std::uint32_t i = 0; i < made->size; ++i)
    made->data[i] = static_cast<unsigned char>(i * 37 + seed * 71 + 5);
  return picture;
}

}  // namespace vrx::test_support
