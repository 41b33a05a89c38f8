#include "gps/log/GpsLogLine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "foundation/time/DateTimeScanner.h"

namespace vrx::gps {
namespace {

constexpr std::string_view kOptionName = "@Kelogpsoption/";

struct NamedLine {
  std::string_view name;
  LineKind kind;
};
/// In the order in which they are looked for.
constexpr NamedLine kNames[] = {
    {"@Kelogps/", LineKind::Header}, {kOptionName, LineKind::Option}, {"$GPGGA", LineKind::FixTime},
    {"$GPRMC", LineKind::Position},  {"#SGA", LineKind::FixTime},     {"#SMC", LineKind::Position},
};

// Columns of an option line.
constexpr std::size_t kTimeBefore = 17;
constexpr std::size_t kTimeAfter = 36;
constexpr std::size_t kTimeLength = 18;  // "20180102030405.678"

// Fields of a sentence with a position.
enum : std::size_t {
  kClock,
  kStatus,
  kLatitude,
  kNorthOrSouth,
  kLongitude,
  kEastOrWest,
  kSpeed,
  kDate,
  kFieldCount
};

constexpr std::size_t kMostDecimalLength = 19;

std::string_view NextField(std::string_view& text) {
  const std::size_t start = text.find_first_not_of(',');
  if (start == text.npos) return {};
  text.remove_prefix(start);
  const std::string_view field = text.substr(0, text.find(','));
  text.remove_prefix(field.size());
  return field;
}

/// True when all `numbers` could be read.
bool Scan(std::string_view text, std::u16string_view format, std::span<std::int32_t> numbers) {
  const std::u16string wide(text.begin(), text.end());
  return ScanIntegers(wide, format, numbers) >= numbers.size();
}

XpDateTime ReadOptionTime(std::string_view body, std::size_t column) {
  XpDateTime time;
  std::array<std::int32_t, 6> n{};
  const std::string_view text = body.size() > column ? body.substr(column, kTimeLength) : std::string_view();
  if (Scan(text, u"%4d%2d%2d%2d%2d%2d", n)) time.SetDateTime(n[0], n[1], n[2], n[3], n[4], n[5]);
  return time;
}

double Signed(double value, std::string_view direction, std::string_view positive,
              std::string_view negative) {
  if (direction == positive) return value;
  return direction == negative ? -value : 0.0;
}

double ReadDigits(std::string_view text, std::size_t& count) {
  double value = 0.0;
  count = 0;
  while (count < text.size() && text[count] >= '0' && text[count] <= '9') {
    value = value * 10.0 + (text[count] - '0');
    ++count;
  }
  return value;
}

}  // namespace

LogLine ClassifyLine(std::string_view line) {
  for (const auto& [name, kind] : kNames) {
    const std::size_t at = line.find(name);
    if (at == line.npos) continue;
    if (kind == LineKind::Option) return {kind, line.substr(at)};
    const std::size_t fields = line.find(',', at + name.size());
    return {kind, fields == line.npos ? std::string_view() : line.substr(fields)};
  }
  return {};
}

bool HasHeaderMark(std::string_view line) { return line.find("d/") != line.npos; }

OptionTimes ReadOptionTimes(std::string_view body) {
  return {ReadOptionTime(body, kTimeBefore), ReadOptionTime(body, kTimeAfter)};
}

std::string_view FirstField(std::string_view body) { return NextField(body); }

PositionFields ReadPosition(std::string_view body) {
  std::array<std::string_view, kFieldCount> fields;
  for (std::string_view& field : fields) field = NextField(body);
  PositionFields position;
  std::array<std::int32_t, 4> clock{};  // without decimals the last one stays 0
  Scan(fields[kClock], u"%2d%2d%2d.%3d", clock);
  const std::int64_t seconds = (std::int64_t{clock[0]} * 60 + clock[1]) * 60 + clock[2];
  position.millisecondsOfDay = seconds * 1000 + clock[3];
  position.status = fields[kStatus] == "A" || fields[kStatus] == "a" ? 1 : 0;
  position.latitude = Signed(ReadArcSeconds(fields[kLatitude]), fields[kNorthOrSouth], "N", "S");
  position.longitude = Signed(ReadArcSeconds(fields[kLongitude]), fields[kEastOrWest], "E", "W");
  position.hasSpeed = !fields[kSpeed].empty();
  if (position.hasSpeed) position.speed = ReadDecimal(fields[kSpeed]);
  position.date = fields[kDate];
  return position;
}

double ReadDecimal(std::string_view text) {
  text = text.substr(0, kMostDecimalLength);
  const std::size_t point = text.find('.');
  if (point == text.npos) return 0.0;
  std::size_t digits = 0;
  const double whole = ReadDigits(text.substr(0, point), digits);
  double fraction = ReadDigits(text.substr(point + 1), digits);
  for (; digits > 0; --digits) fraction /= 10.0;
  return whole + fraction;
}

double ReadArcSeconds(std::string_view text) {
  const double value = ReadDecimal(text);
  const auto degrees = static_cast<double>(static_cast<std::int64_t>(value) / 100);
  const double minutes = value - degrees * 100.0;
  const double wholeMinutes = std::trunc(minutes);
  return (minutes - wholeMinutes) * 60.0 + (wholeMinutes + degrees * 60.0) * 60.0;
}

XpDateTime ReadFixTime(std::string_view date, std::string_view clock) {
  constexpr std::int32_t kCentury = 2000;
  XpDateTime time;
  std::array<std::int32_t, 3> d{};
  std::array<std::int32_t, 3> c{};
  if (Scan(date, u"%2d%2d%2d", d) && Scan(clock, u"%2d%2d%2d", c))
    time.SetDateTime(d[2] + kCentury, d[1], d[0], c[0], c[1], c[2]);
  return time;
}

}  // namespace vrx::gps
