#include "host/make/ClipSource.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "host/Console.h"
#include "host/PictureFile.h"
#include "imaging/codecs/PictureSummary.h"
#include "imaging/loader/StillImage.h"

namespace vrx::host {
namespace {

/// False for what is no picture that a movie can show.
bool ReadPicture(const XpString& path, ClipSource& source) {
  if (imaging::ReadStillImageSize(path, {}, source.width, source.height) != XpOk) return false;
  source.kind = ClipSource::Kind::Picture;
  PictureFile picture(Utf8(path));
  imaging::PictureSummary summary;
  if (!picture.Cause().empty() ||
      picture.Format().summarize(picture.File(), picture.Codec(), summary) != XpOk)
    return true;  // a picture without tags
  source.orientation = summary.orientation;
  constexpr std::int32_t kFirstSideways = 5;
  if (source.orientation >= kFirstSideways) std::swap(source.width, source.height);
  return true;
}

/// The name of a kind of picture that is recognised but not read; empty for all else.
std::string UnreadablePicture(const XpString& path) {
  constexpr std::size_t kHead = 12, kBrand = 8;
  XpFile file(path);
  std::array<char, kHead> bytes{};
  std::uint64_t read = 0;
  if (file.Open(XpOpenRead, XpShareRead) != XpOk || file.Read(bytes.data(), kHead, &read) != XpOk ||
      read != kHead)
    return {};
  const std::string_view head(bytes.data(), kHead), brand = head.substr(kBrand);
  if (head.starts_with("RIFF") && brand == "WEBP") return "WebP";
  if (head.substr(4, 4) != "ftyp") return {};
  if (brand == "avif" || brand == "avis") return "AVIF";
  constexpr std::array<std::string_view, 5> kHeifBrands{"heic", "heix", "heim", "mif1", "msf1"};
  return std::ranges::find(kHeifBrands, brand) != kHeifBrands.end() ? "HEIC" : std::string();
}

}  // namespace

const ClipSource* ClipSources::Find(const XpString& path, std::string& cause) {
  const auto known = m_sources.find(path);
  if (known != m_sources.end()) return &known->second;
  cause.clear();
  if (XpPathIsDirectory(path)) cause = "is a folder";
  if (cause.empty() && !XpPathIsFile(path)) cause = "does not exist";
  if (!cause.empty()) return nullptr;
  ClipSource source;
  if (!ReadPicture(path, source)) {
    if (const std::string kind = UnreadablePicture(path); !kind.empty()) {
      cause = "is a " + kind + " picture, which cannot be read; a JPEG or PNG of it can";
      return nullptr;
    }
    source.facts = m_engine.Probe(path);
    if (!source.facts.usable) {
      cause = source.facts.cause;
      return nullptr;
    }
    source.kind = source.facts.hasVideo ? ClipSource::Kind::Movie : ClipSource::Kind::Sound;
    source.width = source.facts.width;
    source.height = source.facts.height;
  }
  return &m_sources.emplace(path, source).first->second;
}

}  // namespace vrx::host
