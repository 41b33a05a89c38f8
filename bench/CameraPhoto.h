// A JPEG file like those of a camera of 16 megapixels: what the benchmarks of pictures measure with, and the
// script that compares commands.
#pragma once

#include <cstdint>
#include <vector>

namespace vrx::bench {

inline constexpr int kPhotoWidth = 4928, kPhotoHeight = 3264;

/// About 6 MB: a picture with smooth and with rough parts, about 90 Exif tags with a maker note that holds a
/// rating, a thumbnail of 160 by 120, XMP and a profile.
std::vector<std::uint8_t> CameraPhoto();

}  // namespace vrx::bench
