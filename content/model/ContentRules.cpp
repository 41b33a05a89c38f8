#include "content/model/ContentRules.h"

#include <algorithm>

namespace vrx::model {

using namespace formats;

namespace {

constexpr MainSelector Exactly(FormatCode format) { return {.format = format}; }
constexpr MainSelector InContainer(Container container) {
  return {.by = MainSelector::By::Container, .container = container};
}
constexpr MainSelector AnyVideo() { return {.by = MainSelector::By::Video}; }

/// The companions of a rule, filled up with the end mark.
template <class... Formats>
constexpr std::array<FormatCode, 6> With(Formats... companions) {
  std::array<FormatCode, 6> list{};
  list.fill(kNoCompanion);
  std::size_t count = 0;
  ((list[count++] = companions), ...);
  return list;
}

// A RAW file comes first, since a JPEG of its stem would else take its sidecar.
constexpr ContentRule kRules[] = {
    {InContainer(Container::Raw), With(kModd, kMoff)},
    {Exactly(kMpoFrames), With(kJpegPlain, kModd, kMoff)},
    {Exactly(kMpoPanorama), With(kJpegPlain, kModd, kMoff)},
    {Exactly(kMpoStereo), With(kJpegPlain, kModd, kMoff)},
    {Exactly(kMpoOther), With(kJpegPlain, kModd)},
    {Exactly(kJps), With(kJpegPlain, kModd)},
    // Nothing goes with the kinds of SPF pictures: what does is not settled, and a file left alone loses
    // nothing.
    {Exactly(kSpf257), With()},
    {Exactly(kSpf258), With()},
    {Exactly(kJpegMarked), With(kModd)},
    {Exactly(kJpegPanorama), With(kModd, kMoff)},
    {Exactly(kTiff), With(kThumbnail, kModd)},
    {Exactly(kJpegPlain), With(kModd, kMoff)},
    {Exactly(kGifAnimation), With(kThumbnail, kModd)},
    {Exactly(kGif), With(kThumbnail, kModd)},
    {Exactly(kPng), With(kModd)},
    {AnyVideo(), With(kThumbnail, kModd, kMoff, kVmlp, kVmlt, kVmlf)},
};

struct ExtensionRow {
  FormatCode format;
  std::u16string_view extension;
};
// A .vmlp file has none here, so that it goes with no video.
constexpr ExtensionRow kExtensions[] = {
    {kModd, u".modd"}, {kMoff, u".moff"},        {kVmlt, u".vmlt"},     {kVmlf, u".vmlf"},
    {kJpeg, u".jpg"},  {kJpegPlain, u".jpg"},    {kThumbnail, u".thm"}, {kJps, u".jps"},
    {kMpeg, u".mpg"},  {kMpeg1Program, u".mpg"}, {kMp4, u".mp4"},
};

}  // namespace

std::span<const ContentRule> ContentRules() { return kRules; }

std::size_t FindContentRule(FormatCode format) {
  const auto* found =
      std::ranges::find_if(kRules, [format](const ContentRule& rule) { return rule.main.Fits(format); });
  return found == std::end(kRules) ? kNoRule : static_cast<std::size_t>(found - std::begin(kRules));
}

std::u16string_view CompanionExtension(FormatCode format) {
  const auto* found = std::ranges::find(kExtensions, format, &ExtensionRow::format);
  return found == std::end(kExtensions) ? std::u16string_view() : found->extension;
}

}  // namespace vrx::model
