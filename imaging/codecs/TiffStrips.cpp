#include "imaging/codecs/TiffStrips.h"

#include <algorithm>
#include <cstddef>

#include "imaging/loader/StillImage.h"
#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

constexpr std::uint32_t kNotPacked = 1;
constexpr std::uint32_t kSamplesTogether = 1;  // of a pixel, not in planes
constexpr std::int64_t kMostMissing = 8;       // times the file, of a picture that is not wholly there

// Values of the photometric interpretation.
constexpr std::uint32_t kWhiteIsZero = 0;
constexpr std::uint32_t kBlackIsZero = 1;
constexpr std::uint32_t kRgb = 2;
constexpr std::uint32_t kInks = 5;

/// False when there is no such tag or it is of another type.
bool ReadShort(const XpTiffTagIFD& ifd, std::uint16_t tag, std::uint32_t& value) {
  const XpTiffTagDataBase* data = ifd.FindTag(tag, false);
  if (data == nullptr || data->GetType() != XpTiffShort) return false;
  value = ifd.GetShort(tag, false);
  return true;
}

bool ReadNumbers(const XpTiffTagIFD& ifd, std::uint16_t tag, std::vector<std::uint32_t>& numbers) {
  const XpTiffTagDataBase* data = ifd.FindTag(tag, false);
  if (data == nullptr) return false;
  if (data->GetType() == XpTiffShort) {
    const auto* values = static_cast<const std::uint16_t*>(data->GetData());
    numbers.assign(values, values + data->count);
    return true;
  }
  if (data->GetType() != XpTiffLong) return false;
  const auto* values = static_cast<const std::uint32_t*>(data->GetData());
  numbers.assign(values, values + data->count);
  return true;
}

bool IsKnownColour(std::uint32_t samples, std::uint32_t photometric) {
  switch (samples) {
    case 1:
      return photometric == kWhiteIsZero || photometric == kBlackIsZero;
    case 3:
      return photometric == kRgb;
    case 4:
      return photometric == kInks;
    default:
      return false;
  }
}

XpResult ReadForm(const XpTiffTagIFD& ifd, TiffPixelForm& form) {
  std::uint32_t bits = 0, planar = kSamplesTogether, compression = 0, samples = 0, photometric = 0;
  if (!ReadShort(ifd, kTagBitsPerSample, bits) || (bits != 8 && bits != 16)) return XpErrImageKind;
  if (ifd.HasTag(kTagPlanarConfiguration, false) && !ReadShort(ifd, kTagPlanarConfiguration, planar)) {
    return XpErrImageKind;
  }
  if (planar != kSamplesTogether) return XpErrImageKind;
  if (!ReadShort(ifd, kTagCompression, compression) || compression != kNotPacked) return XpErrImageKind;
  if (!ReadShort(ifd, kTagSamplesPerPixel, samples)) return XpErrImageKind;
  if (!ReadShort(ifd, kTagPhotometric, photometric)) return XpErrImageKind;
  if (!IsKnownColour(samples, photometric)) return XpErrImageKind;
  form.samples = static_cast<int>(samples);
  form.bits = static_cast<int>(bits);
  form.isInverted = samples == 1 && photometric == kWhiteIsZero;
  return XpOk;
}

XpResult CheckSize(std::int64_t width, std::int64_t height, const TiffPixelForm& form,
                   std::int64_t streamBytes) {
  if (width == 0 || height == 0) return XpErrImageInvalid;
  const StillImageLimits limits;
  if (width > limits.pixels || height > limits.pixels || width * height > limits.pixels) {
    return XpErrOutOfMemory;
  }
  // No memory for rows that no strip can hold.
  return width * height * form.BytesPerPixel() / kMostMissing > streamBytes ? XpErrImageInvalid : XpOk;
}

}  // namespace

XpResult ReadShortOrLong(const XpTiffTagIFD& ifd, std::uint16_t tag, std::uint32_t& value) {
  if (ReadShort(ifd, tag, value)) return XpOk;
  const XpTiffTagDataBase* data = ifd.FindTag(tag, false);
  if (data == nullptr || data->GetType() != XpTiffLong) return XpErrImageNoData;
  value = ifd.GetLong(tag, 0, false);
  return XpOk;
}

XpResult FindTiffStrips(const XpTiffTagManager& tags, std::int64_t base, std::int64_t streamBytes,
                        TiffStrips& strips, std::int64_t& missingBytes) {
  const XpTiffTagIFD* ifd = tags.GetIfd(0);
  if (ifd == nullptr) return XpErrImageNoData;
  std::uint32_t width = 0, height = 0;
  if (const XpResult result = ReadShortOrLong(*ifd, kTagImageWidth, width)) return result;
  if (const XpResult result = ReadShortOrLong(*ifd, kTagImageLength, height)) return result;
  strips.form.isBigEndian = tags.bigEndian;
  if (const XpResult result = ReadForm(*ifd, strips.form)) return result;
  std::uint32_t rowsPerStrip = 0;
  if (ReadShortOrLong(*ifd, kTagRowsPerStrip, rowsPerStrip) != XpOk) rowsPerStrip = std::max(height, 1u);
  if (rowsPerStrip == 0) return XpErrImageInvalid;
  std::vector<std::uint32_t> offsets, counts;
  if (!ReadNumbers(*ifd, kTagStripOffsets, offsets) || !ReadNumbers(*ifd, kTagStripByteCounts, counts)) {
    return XpErrImageKind;
  }
  const std::uint32_t needed = height / rowsPerStrip + (height % rowsPerStrip != 0 ? 1 : 0);
  if (offsets.size() != needed || counts.size() != needed) return XpErrImageInvalid;
  strips.strips.clear();
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    const TiffStrip strip{base + offsets[i], counts[i]};
    missingBytes = strip.position + strip.bytes - streamBytes;
    if (missingBytes > 0) return XpErrMalformedRecord;
    strips.strips.push_back(strip);
  }
  missingBytes = 0;
  if (const XpResult result = CheckSize(width, height, strips.form, streamBytes)) return result;
  strips.size = {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
  return XpOk;
}

}  // namespace vrx::imaging
