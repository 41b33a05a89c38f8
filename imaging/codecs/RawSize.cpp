#include "imaging/codecs/RawSize.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

constexpr std::uint32_t kMostPixels = std::numeric_limits<std::int32_t>::max();

struct Sides {
  std::uint32_t width = 0;  // pixels; 0 when unknown
  std::uint32_t height = 0;

  bool AreKnown() const { return width != 0 && height != 0; }
};

/// Cameras whose IFD 0 does not state the size of the sensor data.
struct ModelSize {
  std::string_view model;
  Sides sides;
};
constexpr ModelSize kModelSizes[] = {{"KLX-Q201", {3264, 2448}}, {"KLX-Q2", {3072, 2304}}};

/// By the maker note's own number of the size, where there is one.
struct NotedSize {
  std::uint16_t number;
  Sides sides;
};
constexpr NotedSize kNotedSizes[] = {{0x0002, {3888, 2592}}, {0x0100, {3872, 2592}}};

std::optional<std::uint32_t> SideIn(const XpTiffTagIFD& ifd, std::uint16_t tag) {
  const XpTiffTagDataBase* value = ifd.FindTag(tag, false);
  if (value == nullptr || value->count == 0) return std::nullopt;
  if (value->GetType() == XpTiffShort) return ifd.GetShort(tag, false);
  if (value->GetType() == XpTiffLong) return ifd.GetLong(tag, 0, false);
  return std::nullopt;
}

Sides SidesIn(const XpTiffTagIFD& ifd) {
  return {SideIn(ifd, kTagImageWidth).value_or(0), SideIn(ifd, kTagImageLength).value_or(0)};
}

Sides SidesInFirst(const XpTiffTagIFD& first) {
  if (!SideIn(first, kTagImageWidth) || !SideIn(first, kTagImageLength)) return {};
  const XpNarrowString model = first.GetAscii(kTagModel);
  const auto* row = std::ranges::find(kModelSizes, model.AsView(), &ModelSize::model);
  return row == std::end(kModelSizes) ? SidesIn(first) : row->sides;
}

/// For an IFD 0 that only leads to the IFDs of its pictures.
Sides SidesBelow(const XpTiffTagIFD& first, const XpTiffTagIFD* maker) {
  const XpTiffTagDataBase* value = first.FindTag(kTagSubIfds, false);
  if (value == nullptr) return {};
  Sides sides;
  if (value->GetType() == XpTiffIfd) {
    const auto& ifds = static_cast<const XpTiffTagDataIFD*>(value)->ifds;
    if (ifds.size() == 1) {
      sides = SidesIn(*ifds.front());
      const std::uint16_t number = maker == nullptr ? 0 : maker->GetShort(kTagMakerSizeNumber, false);
      const auto* row = std::ranges::find(kNotedSizes, number, &NotedSize::number);
      if (row != std::end(kNotedSizes)) sides = row->sides;
    }
  }
  if (maker == nullptr) return sides;
  const Sides sensor{maker->GetLong(kTagMakerSensorSize, 1, false),
                     maker->GetLong(kTagMakerSensorSize, 0, false)};
  return sensor.AreKnown() ? sensor : sides;
}

}  // namespace

bool FindRawSize(const XpTiffTagManager& tags, XpImageSize& size) {
  const XpTiffTagIFD* first = tags.GetIfd(0);
  if (first == nullptr) return false;
  Sides sides = SidesInFirst(*first);
  if (!sides.AreKnown()) sides = SidesBelow(*first, tags.GetMakerIfd());
  if (!sides.AreKnown() || std::max(sides.width, sides.height) > kMostPixels) return false;
  size = {static_cast<std::int32_t>(sides.width), static_cast<std::int32_t>(sides.height)};
  return true;
}

}  // namespace vrx::imaging
