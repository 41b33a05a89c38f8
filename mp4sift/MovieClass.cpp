#include "mp4sift/MovieClass.h"

#include <algorithm>

namespace vrx::mp4sift {
namespace {

using mp4::FourCc;

/// Four characters; '?' stands for any.
using Pattern = char[5];

struct BrandRow {
  Pattern brand;
  MovieClass movieClass;
};

/// In order of precedence: a brand that promises more comes before those that many files carry besides.
constexpr BrandRow kRows[] = {
    {"MSNV", kPortable},    {"QHDV", kHighDefinition},
    {"3g??", kMobile},  // 3gp4 to 3gp9, 3gr6, 3gs6, 3ge6, 3gg6, 3gh9, 3g2a to 3g2c and their like
    {"avc1", kAvc},         {"mp42", kMp4Version2},
    {"mp41", kMp4Version1},
};

constexpr Pattern kBaseFormat = "iso?";  // isom, iso2 to iso9 and on
constexpr MovieClass kBaseFormatClass = kMp4Version2;

/// QuickTime, still pictures and raw pictures: of the same structure, but no MP4 whatever they are compatible
/// with.
constexpr Pattern kForeignMajorBrands[] = {"qt  ", "mif1", "heic", "heix", "avif", "crx "};

bool Matches(const Pattern& pattern, FourCc brand) {
  for (int i = 0; i < 4; ++i) {
    const FourCc character = brand >> (24 - 8 * i) & 0xFF;
    if (pattern[i] != '?' && character != static_cast<std::uint8_t>(pattern[i])) return false;
  }
  return true;
}

bool IsCompatible(const mp4::FileType& type, const Pattern& pattern) {
  return std::ranges::any_of(type.compatibleBrands, [&](FourCc brand) { return Matches(pattern, brand); });
}

}  // namespace

MovieClass ClassOf(const mp4::FileType& type) {
  for (const Pattern& foreign : kForeignMajorBrands) {
    if (Matches(foreign, type.majorBrand)) return kNoMp4;
  }
  for (const BrandRow& row : kRows) {
    if (Matches(row.brand, type.majorBrand)) return row.movieClass;
  }
  for (const BrandRow& row : kRows) {
    if (IsCompatible(type, row.brand)) return row.movieClass;
  }
  const bool isBase = Matches(kBaseFormat, type.majorBrand) || IsCompatible(type, kBaseFormat);
  return isBase ? kBaseFormatClass : kNoMp4;
}

}  // namespace vrx::mp4sift
