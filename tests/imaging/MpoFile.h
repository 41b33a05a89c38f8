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
  std::uint32_t attribute, size, offset;
};
/// The table stands 38 bytes after the TIFF header.
Bytes MpIndexSegment(const MpIndexForm& form, const std::vector<MpStoredEntry>& entries);

struct MpoPicture {
  std::uint32_t attribute = 0;
  Bytes jpeg;
};
/// The index is the last of the segments that open the first picture.
Bytes MpoFile(const std::vector<MpoPicture>& pictures, const MpIndexForm& form = {});

/// Where the pictures that MpoFile was given begin in the file. The first is longer there by its index.
std::vector<std::size_t> MpoStarts(const Bytes& file, const std::vector<MpoPicture>& pictures);

/// Changes an entry of the file's index.
enum class MpField { Attribute = 0, Size = 4, Offset = 8 };
Bytes WithMpField(Bytes file, std::size_t entry, MpField field, std::uint32_t value, bool isBig = false);
std::size_t MpHeaderOf(const Bytes& file);

}  // namespace jpegfiles
