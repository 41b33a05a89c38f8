#include "host/make/ClipSource.h"

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
