// A RAW file as the cameras write it: tags with a maker note and a place for a position, sensor data that are
// not looked at, and a JPEG preview.
#pragma once

#include <functional>

#include "imaging/tags/XpTiffTagManager.h"
#include "tests/imaging/ImageFiles.h"

namespace rawfiles {

using imagefiles::Bytes;

inline constexpr char kDate[] = "2020:01:02 03:04:05";

Bytes Preview();  // 40 by 24 pixels

struct RawForm {
  bool bigEndian = false;
  std::uint32_t version = 0x302;  // in the maker note; 0 for a file without a note
  bool hasSignature = false;      // before the maker note
  std::size_t previewIfd = 0;     // the one that names the preview; there are two
  Bytes preview = Preview();
  std::function<void(XpTiffTagManager& tags)> change = {};  // before they are stored
};
Bytes RawFile(const RawForm& form = {});

/// Adds IFDs under a tag that leads to them.
void AddIfds(XpTiffTagIFD& ifd, std::uint16_t tag, std::vector<std::unique_ptr<XpTiffTagIFD>> below);

}  // namespace rawfiles
