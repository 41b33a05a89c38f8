// Multi-picture files, built byte by byte: JPEG pictures one after another, of which the first one carries
// the index.
#pragma once

#include "tests/imaging/JpegFiles.h"

namespace jpegfiles {

inline constexpr std::uint32_t kMpChild = 0x40000000;
inline constexpr std::uint32_t kMpRepresentative = 0x20000000;

struct MpIndexForm {
  bool isBig = false;
  int ifds = 2;
  std::uint32_t countType = 4;  // as TIFF stores types
  std::uint32_t tableType = 7;
  std::uint32_t moreEntries = 0;  // that the count tells of and the table does not hold
};
struct MpStoredEntry {
  std::uint32_t attribute = 0, size = 0, offset = 0;
};
/// The table stands 38 bytes after the TIFF header.
Bytes MpIndexSegment(const MpIndexForm& form, const std::vector<MpStoredEntry>& entries);

struct MpoPicture {
  std::uint32_t attribute = 0;
  Bytes jpeg;
};
enum class MpField { Attribute = 0, Size = 4, Offset = 8 };

/// The index is the last of the segments that open the first picture.
struct MpoFile {
  explicit MpoFile(const std::vector<MpoPicture>& pictures, const MpIndexForm& form = {});
  /// Changes an entry of a little-endian index.
  MpoFile& Set(std::size_t entry, MpField field, std::size_t value);

  Bytes bytes;
  std::vector<std::size_t> starts;  // of the pictures, and the end of the file
  std::size_t header = 0;           // of the index
};

}  // namespace jpegfiles
