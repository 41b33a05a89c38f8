#include "imaging/codecs/TiffRows.h"

#include <algorithm>

namespace vrx::imaging {

namespace {

/// Which of a sample's bytes is the higher one, and how many it has.
struct OneByte {
  static constexpr int kBytes = 1, kHigh = 0, kLow = 0;
};
struct LowFirst {
  static constexpr int kBytes = 2, kHigh = 1, kLow = 0;
};
struct HighFirst {
  static constexpr int kBytes = 2, kHigh = 0, kLow = 1;
};

template <class Sample, bool IsInverted>
void ConvertGrey(const std::uint8_t* samples, std::int32_t width, unsigned char* bgr) {
  for (std::int32_t x = 0; x < width; ++x, samples += Sample::kBytes, bgr += 3) {
    const std::uint8_t high = samples[Sample::kHigh];
    const std::uint8_t grey = IsInverted ? static_cast<std::uint8_t>(~high) : high;
    bgr[0] = bgr[1] = bgr[2] = grey;
  }
}

template <class Sample>
void ConvertRgb(const std::uint8_t* samples, std::int32_t width, unsigned char* bgr) {
  for (std::int32_t x = 0; x < width; ++x, samples += 3 * Sample::kBytes, bgr += 3) {
    bgr[0] = samples[2 * Sample::kBytes + Sample::kHigh];
    bgr[1] = samples[Sample::kBytes + Sample::kHigh];
    bgr[2] = samples[Sample::kHigh];
  }
}

template <class Sample>
int ValueAt(const std::uint8_t* sample) {
  return Sample::kBytes == 1 ? sample[0] : sample[Sample::kHigh] << 8 | sample[Sample::kLow];
}

template <class Sample>
void ConvertInks(const std::uint8_t* samples, std::int32_t width, unsigned char* bgr) {
  constexpr int kFull = (1 << 8 * Sample::kBytes) - 1;
  constexpr int kShift = 8 * (Sample::kBytes - 1);
  for (std::int32_t x = 0; x < width; ++x, samples += 4 * Sample::kBytes, bgr += 3) {
    const int black = ValueAt<Sample>(samples + 3 * Sample::kBytes);
    for (int ink = 0; ink < 3; ++ink) {
      const int light = kFull - ValueAt<Sample>(samples + ink * Sample::kBytes) - black;
      bgr[2 - ink] = static_cast<unsigned char>(std::max(light, 0) >> kShift);
    }
  }
}

template <class Sample>
TiffRowConversion ConversionOf(const TiffPixelForm& form) {
  switch (form.samples) {
    case 3:
      return ConvertRgb<Sample>;
    case 4:
      return ConvertInks<Sample>;
    default:
      return form.isInverted ? ConvertGrey<Sample, true> : ConvertGrey<Sample, false>;
  }
}

}  // namespace

TiffRowConversion FindTiffRowConversion(const TiffPixelForm& form) {
  if (form.bits == 8) return ConversionOf<OneByte>(form);
  return form.isBigEndian ? ConversionOf<HighFirst>(form) : ConversionOf<LowFirst>(form);
}

}  // namespace vrx::imaging
