// Plain TIFF files built byte by byte, for the tests of the codec and of the commands.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "tests/imaging/ImageFiles.h"
#include "tests/imaging/TagBytes.h"

namespace tifffiles {

using imagefiles::Bytes;
using vrx::test_support::TagBytes;

/// The entries of IFD 0 by tag.
using Entries = std::map<std::uint32_t, std::string>;

struct PlainTiff {
  std::uint32_t width = 4, height = 3;
  std::uint32_t samples = 3, bits = 8, photometric = 2;
  bool bigEndian = false;
  std::uint32_t rowsPerStrip = 2;
  std::uint32_t orientation = 0;  // 0 for none
  std::uint32_t colourSpace = 0;  // of the Exif IFD; 0 for none
  Bytes profile = {};
  bool hasNote = false;  // a maker note with one tag
  bool hasRating = false;
  std::uint32_t previewBytes = 0;  // that the note leads to, from the start of the file; 0 for none
  std::uint32_t nextIfd = 0;
  std::function<void(const TagBytes&, Entries&)> change = {};  // the last word
};

/// The tags first, then the strips: each a copy of its rows in `pixels`, which are those of the whole
/// picture.
Bytes Tiff(const PlainTiff& form, const Bytes& pixels);
/// So many different bytes.
Bytes Ramp(std::size_t count);

}  // namespace tifffiles
