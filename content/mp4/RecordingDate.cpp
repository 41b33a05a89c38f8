#include "content/mp4/RecordingDate.h"

#include <array>
#include <string_view>

#include "foundation/time/SerialDate.h"

namespace vrx::mp4 {
namespace {

// The offsets that are in use anywhere.
constexpr std::int32_t kLeastOffset = -12 * 60;
constexpr std::int32_t kGreatestOffset = 14 * 60;
constexpr double kStartOfMovieTime = 1462;  // 1 January 1904 as a serial date

bool IsOffset(std::int32_t minutes) { return minutes >= kLeastOffset && minutes <= kGreatestOffset; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

struct StatedDate {
  XpDateTime date;
  bool hasTime = false;
  bool isUtc = false;
  std::optional<std::int32_t> offsetMinutes;
};

/// A date in the forms of ISO 8601: with or without dividers, seconds, their fraction, and zone. A blank may
/// stand for the T.
class DateText {
 public:
  explicit DateText(std::string_view text) : m_text(text) {
    // Some writers count the terminator to the text.
    constexpr std::string_view kIgnored("\0 ", 2);
    m_text.remove_suffix(m_text.size() - (m_text.find_last_not_of(kIgnored) + 1));
  }

  bool Read(StatedDate& stated) {
    std::int32_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (!ReadNumber(4, year)) return false;
    Accept("-");
    if (!ReadNumber(2, month)) return false;
    Accept("-");
    if (!ReadNumber(2, day)) return false;
    if (!m_text.empty()) {
      stated.hasTime = Accept("T ") && ReadTime(hour, minute, second) && ReadZone(stated);
      if (!stated.hasTime || !m_text.empty()) return false;
    }
    return stated.date.SetDateTime(year, month, day, hour, minute, second);
  }

 private:
  bool Accept(std::string_view characters) {
    if (m_text.empty() || characters.find(m_text.front()) == characters.npos) return false;
    m_text.remove_prefix(1);
    return true;
  }

  bool ReadNumber(std::size_t digits, std::int32_t& value) {
    if (m_text.size() < digits) return false;
    value = 0;
    for (const char c : m_text.substr(0, digits)) {
      if (!IsDigit(c)) return false;
      value = value * 10 + (c - '0');
    }
    m_text.remove_prefix(digits);
    return true;
  }

  bool ReadTime(std::int32_t& hour, std::int32_t& minute, std::int32_t& second) {
    if (!ReadNumber(2, hour)) return false;
    Accept(":");
    if (!ReadNumber(2, minute)) return false;
    const bool hasSeconds = Accept(":") || (!m_text.empty() && IsDigit(m_text.front()));
    if (!hasSeconds) return true;
    if (!ReadNumber(2, second)) return false;
    if (Accept(".,")) {
      while (Accept("0123456789")) continue;
    }
    return true;
  }

  bool ReadZone(StatedDate& stated) {
    if (m_text.empty()) return true;
    stated.isUtc = Accept("Z");
    if (stated.isUtc) return true;
    const bool isWest = Accept("-");
    if (!isWest && !Accept("+")) return false;
    std::int32_t hours = 0, minutes = 0;
    if (!ReadNumber(2, hours)) return false;
    Accept(":");
    if (!m_text.empty() && !ReadNumber(2, minutes)) return false;
    const std::int32_t offset = (hours * 60 + minutes) * (isWest ? -1 : 1);
    stated.offsetMinutes = offset;
    return minutes < 60 && IsOffset(offset);
  }

  std::string_view m_text;
};

std::optional<StatedDate> ReadDate(std::string_view text) {
  StatedDate stated;
  return DateText(text).Read(stated) ? std::optional(stated) : std::nullopt;
}

/// The item holds a signed 16-bit number of minutes, high byte first. Movies that this library renders carry
/// the high byte alone: the low one is 0 whatever the offset was. An item of that kind states none, and
/// nothing is lost by it, for of its values only 0 is an offset of any place.
std::optional<std::int32_t> ReadTimeZone(std::string_view hexadecimal) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  if (hexadecimal.size() != 4) return std::nullopt;
  std::int32_t value = 0;
  for (const char c : hexadecimal) {
    const std::size_t digit = kDigits.find(c);
    if (digit == kDigits.npos) return std::nullopt;
    value = value << 4 | static_cast<std::int32_t>(digit);
  }
  const std::int32_t minutes = static_cast<std::int16_t>(value);
  if ((value & 0xFF) == 0 || !IsOffset(minutes)) return std::nullopt;
  return minutes;
}

StatedDate FromMovieTime(std::uint64_t seconds) {
  const double days = static_cast<double>(seconds) / serialdate::kSecondsPerDay;
  return {.date = XpDateTime(kStartOfMovieTime + days), .hasTime = true, .isUtc = true};
}

RecordingDate InLocalTime(const StatedDate& stated, std::optional<std::int32_t> zone) {
  if (stated.offsetMinutes) return {stated.date, stated.offsetMinutes};
  RecordingDate recording{stated.date, zone};
  if (stated.isUtc && zone) recording.date.SubtractMinutes(-*zone);
  return recording;
}

}  // namespace

RecordingDate DecideRecordingDate(const MetadataItems& items, std::uint64_t creationTime) {
  const std::optional<std::int32_t> zone = ReadTimeZone(items.timeZone);
  const std::array texts{ReadDate(items.creationDate), ReadDate(items.day)};
  for (const auto& stated : texts) {
    if (stated && stated->hasTime) return InLocalTime(*stated, zone);
  }
  const StatedDate header = FromMovieTime(creationTime);
  if (creationTime != 0 && header.date.IsValid()) return InLocalTime(header, zone);
  for (const auto& stated : texts) {
    if (stated) return InLocalTime(*stated, zone);
  }
  return {{}, zone};
}

}  // namespace vrx::mp4
