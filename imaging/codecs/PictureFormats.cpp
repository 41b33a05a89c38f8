#include "imaging/codecs/PictureFormats.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "content/formats/XpFormatChecker.h"
#include "foundation/file/XpFile.h"
#include "imaging/codecs/TiffStart.h"
#include "imaging/codecs/XpImageIoGIF.h"
#include "imaging/codecs/XpImageIoJpeg.h"
#include "imaging/codecs/XpImageIoMPO.h"
#include "imaging/codecs/XpImageIoPNG.h"
#include "imaging/codecs/XpImageIoRAW.h"
#include "imaging/codecs/XpImageIoTIFF.h"
#include "imaging/source/PictureSignatures.h"

namespace vrx::imaging {

namespace {

/// A JPEG file with an index of pictures. Cameras and phones give many plain pictures such an index too, for
/// previews and depths; in files that are called JPEG those are parts of the one picture.
bool IsMpo(const PictureEvidence& evidence) {
  if (!IsJpegStart(evidence.start)) return false;
  if (evidence.named != formats::kMpo && evidence.named != formats::kUnknown) return false;
  const std::int64_t least = evidence.named == formats::kMpo ? 1 : 2;
  return XpImageIoMPO().GetFrameCount(evidence.file, 0) >= least;
}

bool IsJpeg(const PictureEvidence& evidence) { return IsJpegStart(evidence.start); }

/// The cameras' RAW files begin as TIFF files do: only the name tells.
bool IsRaw(const PictureEvidence& evidence) {
  switch (evidence.named) {
    case formats::kKrf:
    case formats::kKr2:
    case formats::kKrw:
    case formats::kKrq:
      return SeekToTiffStart(evidence.file, 0) == XpOk;
    default:
      return false;
  }
}

bool IsTiff(const PictureEvidence& evidence) { return IsTiffStart(evidence.start); }
bool IsBigTiff(const PictureEvidence& evidence) { return IsBigTiffStart(evidence.start); }
bool IsGif(const PictureEvidence& evidence) { return IsGifStart(evidence.start); }
bool IsPng(const PictureEvidence& evidence) { return IsPngStart(evidence.start); }
bool IsBmp(const PictureEvidence& evidence) { return IsBmpStart(evidence.start); }

template <class Codec>
std::unique_ptr<XpImageIo> Make() {
  return std::make_unique<Codec>();
}

constexpr PictureFormat kFormats[] = {
    {"MPO", IsMpo, Make<XpImageIoMPO>, SummarizeJpeg, true},
    {"JPEG", IsJpeg, Make<XpImageIoJpeg>, SummarizeJpeg, true},
    {"RAW", IsRaw, Make<XpImageIoRAW>, SummarizeRaw, true},
    {"TIFF", IsTiff, Make<XpImageIoTIFF>, SummarizeTiff, true},
    {"BigTIFF", IsBigTiff, Make<XpImageIoPNG>, SummarizeLoaded, false},
    {"GIF", IsGif, Make<XpImageIoGIF>, SummarizeGif, false},
    {"PNG", IsPng, Make<XpImageIoPNG>, SummarizeLoaded, false},
    {"BMP", IsBmp, Make<XpImageIoPNG>, SummarizeLoaded, false},
};

}  // namespace

const PictureFormat* FindPictureFormat(XpFile& file, XpResult& result) {
  std::array<char, kSignatureBytes> head{};
  std::uint64_t read = 0;
  result = file.Seek(0, XpSeekStart);
  if (result == XpOk) result = file.Read(head.data(), head.size(), &read);
  if (result == XpErrEndOfFile) result = XpOk;  // a short file
  if (result != XpOk) return nullptr;
  XpString path;
  file.GetPath(path);
  const PictureEvidence evidence{file, std::string_view(head.data(), static_cast<std::size_t>(read)),
                                 XpFormatChecker::GetFormatFromName(path)};
  const auto* found = std::ranges::find_if(
      kFormats, [&](const PictureFormat& format) { return format.isFormatOf(evidence); });
  return found == std::end(kFormats) ? nullptr : found;
}

}  // namespace vrx::imaging
