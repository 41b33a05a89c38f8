// Sheets that show pictures beside each other on light and dark grounds, for judging them and for the guide.
#pragma once

#include <filesystem>
#include <vector>

#include "resources/maker/Drawing.h"
#include "resources/maker/PictureList.h"

namespace vrx::pictures {

/// Writes one PNG file a sheet into `folder`; the drawings are in `drawings`.
void WriteContactSheets(const std::vector<Picture>& pictures, const std::filesystem::path& drawings,
                        const std::filesystem::path& folder);

}  // namespace vrx::pictures
