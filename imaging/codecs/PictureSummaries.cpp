// The formats other than JPEG.
#include "imaging/codecs/PictureSummary.h"
#include "imaging/codecs/XpImageIoGIF.h"
#include "imaging/codecs/XpImageIoRAW.h"
#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

XpString PathOf(const XpAbstractFile& file) {
  XpString path;
  file.GetPathText(path);
  return path;
}

std::int32_t OrientationOf(XpImageIo& codec, const XpString& path) {
  const XpSharedPtr<XpTiffTagManager> tags = codec.LoadTags(path);
  const XpTiffTagIFD* first = tags.Get() == nullptr ? nullptr : tags->GetIfd(0);
  return first == nullptr ? 0 : first->GetShort(kTagOrientation, false);
}

}  // namespace

XpResult SummarizeTiff(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary) {
  const XpString path = PathOf(file);
  if (const XpResult result = codec.GetImageSize(path, summary.size, false)) return result;
  if (const XpResult result = codec.GetStoredImageSize(path, summary.storedSize, false)) return result;
  summary.orientation = OrientationOf(codec, path);
  const auto profile = codec.LoadIccProfile(path);
  summary.hasProfile = codec.status != XpErrImageNoData && codec.status != XpErrImageNotProvided;
  if (profile != nullptr) summary.profile = profile->FindTag("desc").GetTextDescription().text.c_str();
  return XpOk;
}

XpResult SummarizeRaw(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary) {
  if (const XpResult result = SummarizeTiff(file, codec, summary)) return result;
  XpImageSize preview;
  XpImageIoRAW raw;
  if (raw.GetPreviewSize(PathOf(file), preview, false) == XpOk) summary.preview = preview;
  return XpOk;
}

XpResult SummarizeGif(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary) {
  if (const XpResult result = codec.ReadImageSize(file, 0, summary.size, false)) return result;
  summary.storedSize = summary.size;
  formats::FormatCode format = formats::kUnknown;
  XpImageIoGIF().ReadGif(file, 0, true, format);
  summary.isAnimation = format == formats::kGifAnimation;
  return XpOk;
}

XpResult SummarizeLoaded(XpAbstractFile& file, XpImageIo& codec, PictureSummary& summary) {
  const XpResult result = codec.GetImageSize(PathOf(file), summary.size, false);
  summary.storedSize = summary.size;
  return result;
}

}  // namespace vrx::imaging
