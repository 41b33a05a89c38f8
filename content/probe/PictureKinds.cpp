#include <algorithm>
#include <string>

#include "content/formats/FormatCodes.h"
#include "content/probe/KindEvidence.h"
#include "imaging/codecs/XpImageIoGIF.h"
#include "imaging/codecs/XpImageIoMPO.h"
#include "imaging/source/PictureSignatures.h"

namespace vrx::formats {
namespace {

constexpr std::size_t kTiffMarkBytes = 4;
constexpr std::size_t kGifMarkBytes = 6;

// Two letters are little: the header after them has to have one of the sizes in use, too.
constexpr std::size_t kBmpHeadSizeAt = 14;
constexpr std::uint8_t kBmpHeadSizes[] = {12, 40, 52, 56, 64, 108, 124};

FormatCode GifFormat(const KindEvidence& evidence) {
  FormatCode format = kUnknown;
  if (imaging::IsGifStart(evidence.Start())) XpImageIoGIF().ReadGif(evidence.File(), 0, true, format);
  return format;
}

std::string ByteOrder(const KindEvidence& evidence) {
  return BeginsWithBytes(evidence, kTiffMarkBytes) +
         (evidence.Begins("M") ? " (big-endian)" : " (little-endian)");
}

}  // namespace

std::string WhyJpeg(const KindEvidence& evidence) {
  return imaging::IsJpegStart(evidence.Start()) ? BeginsWithBytes(evidence, 3) : "";
}

std::string WhyMultiPicture(const KindEvidence& evidence) {
  if (!imaging::IsJpegStart(evidence.Start())) return {};
  const std::int64_t pictures = XpImageIoMPO().GetFrameCount(evidence.File(), 0);
  if (pictures < 2) return {};
  return WhyJpeg(evidence) + "; its index (MPF) names " + std::to_string(pictures) + " pictures";
}

std::string WhyPng(const KindEvidence& evidence) {
  return imaging::IsPngStart(evidence.Start()) ? BeginsWithBytes(evidence, 8) : "";
}

std::string WhyGif(const KindEvidence& evidence) {
  return imaging::IsGifStart(evidence.Start()) ? BeginsWithText(evidence.Start().substr(0, kGifMarkBytes))
                                               : "";
}

std::string WhyGifAnimation(const KindEvidence& evidence) {
  return GifFormat(evidence) == kGifAnimation ? WhyGif(evidence) + "; several images, with a delay" : "";
}

std::string WhyTiff(const KindEvidence& evidence) {
  return imaging::IsTiffStart(evidence.Start()) ? ByteOrder(evidence) : "";
}

std::string WhyBigTiff(const KindEvidence& evidence) {
  return imaging::IsBigTiffStart(evidence.Start()) ? ByteOrder(evidence) : "";
}

std::string WhyBmp(const KindEvidence& evidence) {
  if (!imaging::IsBmpStart(evidence.Start()) || evidence.Start().size() < kBmpHeadSizeAt + 4) return {};
  const std::uint8_t size = evidence.Byte(kBmpHeadSizeAt);
  const bool isKnown = std::ranges::count(kBmpHeadSizes, size) != 0;
  if (!isKnown || !evidence.Has(kBmpHeadSizeAt + 1, std::string_view("\0\0\0", 3))) return {};
  return BeginsWithText("BM") + "; its header has " + std::to_string(size) + " bytes";
}

}  // namespace vrx::formats
