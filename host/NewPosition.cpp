#include "host/NewPosition.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

#include "foundation/text/XpFormat.h"

namespace vrx::host {
namespace {

constexpr double kMostLatitude = 90, kMostLongitude = 180;  // degrees
constexpr std::int64_t kParts = 60;                         // of a degree in minutes, and of those in seconds
constexpr double kPartSeconds[] = {3600, 60, 1};
constexpr double kArcStep = 0.01;  // seconds
constexpr double kMostMetresOff = 0.005;
constexpr std::uint32_t kFineSecond = 1'000'000;
constexpr std::uint32_t kFineMetre = 1'000;
constexpr std::uint32_t kMostDenominator = 20'000'000;  // 180 wholes of it fit a numerator

/// In range, of the whole text.
std::optional<double> ReadNumber(std::string_view text, double most) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole && number >= -most && number <= most ? std::optional(number) : std::nullopt;
}

bool IsUsable(std::uint32_t denominator) { return denominator > 0 && denominator <= kMostDenominator; }

/// Seconds of arc or of time as degrees or hours, minutes and seconds. The finest part whose denominator
/// holds a `step` takes what the coarser ones leave.
void PutSeconds(double seconds, double step, XpGPSTriple& field) {
  std::size_t last = field.values.size();
  const auto holdsStep = [&](std::size_t part) {
    const std::uint32_t denominator = field.values[part].denominator;
    return IsUsable(denominator) && kPartSeconds[part] <= step * denominator;
  };
  do --last;
  while (last > 0 && !holdsStep(last));
  if (!holdsStep(last)) {
    last = field.values.size() - 1;
    field.values[last].denominator = kFineSecond;
  }
  std::int64_t left = std::llround(seconds / kPartSeconds[last] * field.values[last].denominator);
  for (std::size_t part = field.values.size(); part-- > 0;) {
    XpTiffFraction& value = field.values[part];
    if (!IsUsable(value.denominator)) value.denominator = 1;
    if (part > last) {
      value.numerator = 0;
      continue;
    }
    const std::int64_t unit = part == last ? 1 : value.denominator;  // `left` counts these, or wholes
    const std::int64_t whole = part == last ? kParts * value.denominator : kParts;
    value.numerator = static_cast<std::uint32_t>((part == 0 ? left : left % whole) * unit);
    left /= whole;
  }
}

/// Keeps the length of a text that zeros fill up.
void PutText(const std::string& text, XpGPSText& field) {
  const std::size_t length = std::max(field.text.size(), text.size());
  field.text = text;
  field.text.resize(length);
}

void PutAltitude(double metres, XpGPSRecord& record) {
  record.altitudeRef.value = metres < 0 ? 1 : 0;
  XpTiffFraction& value = record.altitude.value;
  const double height = std::abs(metres);
  const auto scaled = [&] { return std::round(height * value.denominator); };
  const bool isExact = IsUsable(value.denominator) &&
                       std::abs(scaled() / value.denominator - height) <= kMostMetresOff &&
                       scaled() <= std::numeric_limits<std::uint32_t>::max();
  if (!isExact) value.denominator = kFineMetre;
  value.numerator = static_cast<std::uint32_t>(scaled());
}

void PutMoment(const XpDateTime& moment, XpGPSRecord& record) {
  const int seconds = (moment.GetHour() * 60 + moment.GetMinute()) * 60 + moment.GetSecond();
  PutSeconds(seconds, 1, record.timeStamp);
  XpNarrowString date;
  XpFormat(date, "%04d:%02d:%02d", moment.GetYear(), moment.GetMonth(), moment.GetDay());
  PutText(date.c_str(), record.dateStamp);
}

std::string MissingIn(const NewPosition& position, const XpGPSRecord& record) {
  if (!record.latitude.present || !record.latitudeRef.present) return "latitude";
  if (!record.longitude.present || !record.longitudeRef.present) return "longitude";
  if (position.altitude && !record.altitude.present) return "altitude";
  if (position.altitude.value_or(0) < 0 && !record.altitudeRef.present) return "altitude below the sea";
  if (position.moment && !record.timeStamp.present && !record.dateStamp.present) return "time or date";
  return {};
}

}  // namespace

std::optional<NewPosition> ReadPosition(const std::string& text) {
  const std::string_view both = text;
  const std::size_t comma = both.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto latitude = ReadNumber(both.substr(0, comma), kMostLatitude);
  const auto longitude = ReadNumber(both.substr(comma + 1), kMostLongitude);
  if (!latitude || !longitude) return std::nullopt;
  return NewPosition{.latitude = *latitude, .longitude = *longitude};
}

std::optional<XpDateTime> ReadMoment(const std::string& text) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
  const auto fits = [](char form, char c) { return form == '0' ? c >= '0' && c <= '9' : c == form; };
  if (!std::ranges::equal(kForm, text, fits)) return std::nullopt;
  const auto number = [&](std::size_t at, std::size_t digits) { return std::stoi(text.substr(at, digits)); };
  XpDateTime moment;
  const bool isDate = moment.SetDateTime(number(0, 4), number(5, 2), number(8, 2), number(11, 2),
                                         number(14, 2), number(17, 2));
  return isDate ? std::optional(moment) : std::nullopt;
}

std::string PutPosition(const NewPosition& position, XpGPSRecord& record) {
  const std::string missing = MissingIn(position, record);
  if (!missing.empty()) return missing;
  PutText(position.latitude < 0 ? "S" : "N", record.latitudeRef);
  PutSeconds(std::abs(position.latitude) * kPartSeconds[0], kArcStep, record.latitude);
  PutText(position.longitude < 0 ? "W" : "E", record.longitudeRef);
  PutSeconds(std::abs(position.longitude) * kPartSeconds[0], kArcStep, record.longitude);
  if (position.altitude) PutAltitude(*position.altitude, record);
  if (position.moment) PutMoment(*position.moment, record);
  return {};
}

}  // namespace vrx::host
