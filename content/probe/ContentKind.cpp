#include "content/probe/ContentKind.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "content/probe/KindEvidence.h"
#include "foundation/file/XpFile.h"
#include "foundation/platform/FileSystem.h"

namespace vrx::formats {
namespace {

constexpr std::size_t kStartBytes = 4096;
constexpr std::size_t kShownBytes = 8;  // of a file of no known kind
/// What files with these names hold is not known.
constexpr FormatCode kOpaqueNames[] = {kUnknown, kVmlp, kVmlt, kVmlf, kMmv};
constexpr FormatCode kFolderNames[] = {kDirectory};

std::string WhyEmpty(const KindEvidence& evidence) { return evidence.Start().empty() ? "has no bytes" : ""; }

std::string WhyContainer(const KindEvidence& evidence) {
  return evidence.Begins("MOFF") ? BeginsWithText("MOFF") : "";
}

std::string WhyPropertyList(const KindEvidence& evidence) {
  return evidence.Text().rootElement == "plist" ? "its root element is plist" : "";
}

std::string WhyXml(const KindEvidence& evidence) {
  const TextStart& text = evidence.Text();
  if (!text.hasDeclaration) return {};
  return BeginsWithText("<?xml") +
         (text.rootElement.empty() ? "" : "; its root element is " + text.rootElement);
}

std::string WhyText(const KindEvidence& evidence, TextEncoding encoding) {
  const TextStart& text = evidence.Text();
  if (text.encoding != encoding) return {};
  if (!text.mark.empty()) return "begins with the byte order mark " + text.mark;
  const bool isWhole = evidence.Size() <= static_cast<std::int64_t>(evidence.Start().size());
  return std::string(isWhole ? "all its bytes" : "its first 4096 bytes") + " are characters of UTF-8";
}

std::string WhyUnknown(const KindEvidence& evidence) {
  return BeginsWithBytes(evidence, kShownBytes) + ", as no known kind does";
}

using Evidence = const KindEvidence&;

constexpr std::size_t kMostNames = 5;

struct KindRow {
  std::string_view name;
  std::array<FormatCode, kMostNames> named;  // 0 for no further one
  /// Empty when the file is not of this kind.
  std::string (*why)(Evidence evidence);
};

/// The first that fits is taken; the last one always does.
constexpr KindRow kKinds[] = {
    {"empty file", {}, WhyEmpty},
    {"multi-picture file", {kMpo, kJpeg, kJps}, WhyMultiPicture},
    {"JPEG picture", {kJpeg, kThumbnail, kJps}, WhyJpeg},
    {"PNG picture", {kPng}, WhyPng},
    {"GIF animation", {kGif}, WhyGifAnimation},
    {"GIF picture", {kGif}, WhyGif},
    {"TIFF picture", {kTiff, kKrf, kKr2, kKrw, kKrq}, WhyTiff},
    {"BigTIFF picture", {kTiff}, WhyBigTiff},
    {"BMP picture", {}, WhyBmp},
    {"QuickTime movie", {kMov}, WhyQuickTime},
    {"3GP movie", {kThreeGp, kMp4}, [](Evidence e) { return WhyBrand(e, {"3g"}); }},
    {"MPEG-4 sound",
     {},
     [](Evidence e) {
       return WhyBrand(e, {"M4A", "M4B"});
     }},
    {"HEIF picture",
     {},
     [](Evidence e) {
       return WhyBrand(e, {"hei", "hev", "mif1", "msf1"});
     }},
    {"AVIF picture",
     {},
     [](Evidence e) {
       return WhyBrand(e, {"avif", "avis"});
     }},
    {"MP4 movie", {kMp4}, [](Evidence e) { return WhyBrand(e, {""}); }},
    {"AVI movie", {kAvi}, [](Evidence e) { return WhyRiff(e, "AVI "); }},
    {"WAVE sound", {}, [](Evidence e) { return WhyRiff(e, "WAVE"); }},
    {"Windows Media file (ASF)", {kWmv}, WhyAsf},
    {"Matroska movie", {}, [](Evidence e) { return WhyEbml(e, "matroska"); }},
    {"WebM movie", {}, [](Evidence e) { return WhyEbml(e, "webm"); }},
    {"MPEG-1 program stream", {kMpeg}, [](Evidence e) { return WhyProgramStream(e, kMpeg1Program); }},
    {"MPEG-2 program stream", {kMpeg, kMpeg2}, [](Evidence e) { return WhyProgramStream(e, kMpeg2Program); }},
    {"tagged container (MOFF)", {kMoff}, WhyContainer},
    {"property list", {kModd}, WhyPropertyList},
    {"XML document", {kXmp}, WhyXml},
    {"text (UTF-8)", {kXmp}, [](Evidence e) { return WhyText(e, TextEncoding::Utf8); }},
    {"text (UTF-16)", {kXmp}, [](Evidence e) { return WhyText(e, TextEncoding::Utf16); }},
    {"MPEG transport stream", {kMpeg2}, [](Evidence e) { return WhyTransportStream(e, 188); }},
    {"MPEG transport stream with arrival times",
     {kMpeg2},
     [](Evidence e) { return WhyTransportStream(e, 192); }},
    {"unknown", {}, WhyUnknown},
};

ContentKind Judge(Evidence evidence) {
  for (const KindRow& row : kKinds) {
    std::string why = row.why(evidence);
    if (!why.empty()) return {row.name, std::move(why), row.named};
  }
  return {};
}

}  // namespace

bool ContentKind::Fits(FormatCode byName) const {
  return std::ranges::count(kOpaqueNames, byName) != 0 || std::ranges::count(named, byName) != 0;
}

XpResult FindContentKind(const XpString& path, ContentKind& kind) {
  platform::FileStatus status;
  if (const auto error = platform::StatPath(path, platform::Links::Follow, status)) {
    return platform::PathErrorResult(error, path);
  }
  if (status.isDirectory) {
    kind = {"folder", "is a folder", kFolderNames};
    return XpOk;
  }
  if (status.isSpecial) return XpErrNotAFile;
  XpFile file(path);
  if (const XpResult result = file.Open(XpOpenRead, XpShareRead)) return result;
  std::array<char, kStartBytes> start;
  std::uint64_t read = 0;
  const XpResult result = file.Read(start.data(), start.size(), &read);
  if (result != XpOk && result != XpErrEndOfFile) return result;
  kind = Judge({file, std::string_view(start.data(), static_cast<std::size_t>(read)), status.size});
  return XpOk;
}

}  // namespace vrx::formats
