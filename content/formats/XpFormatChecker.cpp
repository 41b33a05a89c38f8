#include "content/formats/XpFormatChecker.h"

#include <algorithm>
#include <cstddef>

#include "foundation/file/XpFileOperations.h"
#include "foundation/text/XpPath.h"

namespace vrx::formats {
namespace {

// Still pictures and video come before all else, so that they are a part of the table.
constexpr ExtensionFormat kExtensions[] = {
    {u".jpg", kJpeg},  {u".jpeg", kJpeg}, {u".jpe", kJpeg},  {u".thm", kThumbnail}, {u".tiff", kTiff},
    {u".tif", kTiff},  {u".gif", kGif},   {u".png", kPng},   {u".mpo", kMpo},       {u".krf", kKrf},
    {u".kr2", kKr2},   {u".jps", kJps},   {u".krw", kKrw},   {u".krq", kKrq},       {u".mpg", kMpeg},
    {u".mpeg", kMpeg}, {u".avi", kAvi},   {u".wmv", kWmv},   {u".mov", kMov},       {u".3gp", kThreeGp},
    {u".m2p", kMpeg2}, {u".m2t", kMpeg2}, {u".mts", kMpeg2}, {u".m2ts", kMpeg2},    {u".mmv", kMmv},
    {u".mp4", kMp4},   {u".modd", kModd}, {u".rodd", kModd}, {u".moff", kMoff},     {u".vmlp", kVmlp},
    {u".xmp", kXmp},   {u".vmlt", kVmlt}, {u".vmlf", kVmlf},
};

constexpr bool IsMedia(const ExtensionFormat& row) { return FamilyOf(row.code) != Family::Other; }
constexpr auto kMediaCount = static_cast<std::size_t>(std::ranges::count_if(kExtensions, IsMedia));
static_assert(std::ranges::all_of(std::span(kExtensions).first(kMediaCount), IsMedia));

}  // namespace

std::span<const ExtensionFormat> GetExtensionTable() { return kExtensions; }

std::span<const ExtensionFormat> GetMediaExtensions() { return std::span(kExtensions).first(kMediaCount); }

}  // namespace vrx::formats

vrx::formats::FormatCode XpFormatChecker::GetFormatFromName(const XpString& path) {
  const XpString extension = XpPathExtension(path);
  for (const auto& row : vrx::formats::kExtensions) {
    if (XpCompareNoCase(extension, row.extension) == 0) return row.code;
  }
  return vrx::formats::kUnknown;
}

vrx::formats::FormatCode XpFormatChecker::GetFormat(const XpString& path) {
  return XpPathIsDirectory(path) ? vrx::formats::kDirectory : GetFormatFromName(path);
}
