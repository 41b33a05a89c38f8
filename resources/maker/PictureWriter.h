// The files that pictures are written to.
#pragma once

#include <filesystem>

#include "resources/maker/Drawing.h"

namespace vrx::pictures {

/// 32 bits a pixel, bottom row first, a header of 40 bytes and the pixels directly after it. Throws
/// std::runtime_error, as the next one does.
void WriteBmp(const Pixels& pixels, const std::filesystem::path& file);
void WritePng(const Pixels& pixels, const std::filesystem::path& file);

}  // namespace vrx::pictures
