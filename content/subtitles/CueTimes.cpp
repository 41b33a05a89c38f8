#include "content/subtitles/CueTimes.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "content/subtitles/SubtitleLines.h"

namespace vrx::subtitles {
namespace {

constexpr std::size_t kMostDigits = 6;  // of hours, minutes or seconds
constexpr std::size_t kMillisecondDigits = 3;
constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kMsPerSecond = 1000;
constexpr double kRows = 18;  // of text in a frame, since a row of WebVTT takes 5.33 % of the height

void SkipBlanks(std::string_view& text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
}

/// The digits at the front of `text`, after blanks.
std::string_view TakeDigits(std::string_view& text) {
  SkipBlanks(text);
  std::size_t count = 0;
  while (count < text.size() && IsDigit(text[count])) ++count;
  const std::string_view digits = text.substr(0, count);
  text.remove_prefix(count);
  return digits;
}

std::optional<std::int64_t> TakeNumber(std::string_view& text) {
  const std::string_view digits = TakeDigits(text);
  if (digits.empty() || digits.size() > kMostDigits) return {};
  std::int64_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

bool TakeOneOf(std::string_view& text, std::string_view marks) {
  std::string_view rest = text;
  SkipBlanks(rest);
  if (rest.empty() || marks.find(rest.front()) == std::string_view::npos) return false;
  rest.remove_prefix(1);
  text = rest;
  return true;
}

/// Two or three numbers with colons between them, and milliseconds.
std::optional<std::int64_t> TakeTime(std::string_view& text) {
  constexpr int kFields = 3;
  std::int64_t seconds = 0;
  for (int field = 0; field < kFields; ++field) {
    if (field != 0 && !TakeOneOf(text, ":")) {
      if (field == 1) return {};
      break;
    }
    const auto number = TakeNumber(text);
    if (!number) return {};
    seconds = seconds * kMinute + *number;
  }
  std::int64_t milliseconds = 0;
  if (TakeOneOf(text, ",.")) {
    const std::string_view digits = TakeDigits(text).substr(0, kMillisecondDigits);
    if (digits.empty()) return {};
    std::from_chars(digits.data(), digits.data() + digits.size(), milliseconds);
  }
  return seconds * kMsPerSecond + milliseconds;
}

bool TakeArrow(std::string_view& text) {
  SkipBlanks(text);
  const std::size_t head = text.find_first_not_of('-');
  if (head == 0 || head == std::string_view::npos || text[head] != '>') return false;
  text.remove_prefix(head + 1);
  return true;
}

std::optional<double> Number(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return {};
  return number;
}

/// "85%", "-1" or either with an alignment after a comma.
std::optional<Place> LinePlace(std::string_view value) {
  value = value.substr(0, value.find(','));
  constexpr double kTopPart = 1.0 / 3;
  constexpr double kBottomPart = 2.0 / 3;
  constexpr double kPercent = 100;
  double part = 0;
  if (value.ends_with('%')) {
    const auto percent = Number(value.substr(0, value.size() - 1));
    if (!percent) return {};
    part = *percent / kPercent;
  } else {
    const auto row = Number(value);
    if (!row) return {};
    part = (*row < 0 ? kRows + *row : *row) / kRows;
  }
  if (part < kTopPart) return Place::Top;
  return part < kBottomPart ? Place::Middle : Place::Bottom;
}

}  // namespace

bool LooksLikeTimes(std::string_view line) {
  if (line.empty() || !(IsDigit(line.front()) || line.front() == '-')) return false;
  const std::size_t arrow = line.find("->");
  if (arrow == std::string_view::npos) return false;
  // With an arrow that lost a dash, a caption may still be meant, as in "12:30 -> 14:00".
  const bool isWholeArrow = arrow != 0 && line[arrow - 1] == '-';
  return std::ranges::count(line.substr(0, arrow), ':') >= (isWholeArrow ? 1 : 2);
}

std::optional<CueTimes> ReadCueTimes(std::string_view line) {
  const auto start = TakeTime(line);
  if (!start || !TakeArrow(line)) return {};
  const auto end = TakeTime(line);
  if (!end) return {};
  return CueTimes{*start, *end, WithoutBlanks(line)};
}

CueSettings ReadCueSettings(std::string_view settings) {
  CueSettings read;
  while (!settings.empty()) {
    const std::size_t blank = settings.find_first_of(" \t");
    const std::string_view setting = settings.substr(0, blank);
    settings.remove_prefix(setting.size());
    SkipBlanks(settings);
    const std::size_t colon = setting.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string_view name = setting.substr(0, colon);
    const std::string_view value = setting.substr(colon + 1);
    if (name == "line") {
      read.place = LinePlace(value);
    } else if (name == "align") {
      read.hasSidePlace = read.hasSidePlace || (value != "center" && value != "middle");
    } else if (name == "position") {
      read.hasSidePlace = read.hasSidePlace || (value != "50%" && value != "50%,center");
    } else if (name == "vertical") {
      read.isVertical = true;
    } else if (name == "region") {
      read.hasRegion = true;
    }
  }
  return read;
}

}  // namespace vrx::subtitles
