#include "overlay/tennis/ShotTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

namespace vrx::overlay {
namespace {

constexpr double kLastSecond = 86400;  // a day, longer than any match
constexpr std::int32_t kMiddleZone = 12;
constexpr std::int32_t kMostSpin = 99;  // what the counter has room for
constexpr double kMostSpeed = 999;
constexpr std::size_t kMostQuoted = 24;
constexpr std::string_view kBlanks = " \t";

/// Takes the values of a table from the front of its text, row by row.
class CsvReader {
 public:
  explicit CsvReader(std::string_view text) : m_rest(text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (m_rest.starts_with(kByteOrderMark)) m_rest.remove_prefix(kByteOrderMark.size());
  }

  /// False at the end. `line` is that on which the row begins; a row that is blank has no values.
  bool NextRow(std::vector<std::string>& values, std::size_t& line) {
    values.clear();
    if (m_rest.empty()) return false;
    line = m_line;
    do {
      values.push_back(TakeValue());
    } while (TakeIf(','));
    TakeIf('\r');
    if (TakeIf('\n')) ++m_line;
    if (values.size() == 1 && values[0].empty()) values.clear();
    return true;
  }

 private:
  bool TakeIf(char c) {
    if (!m_rest.starts_with(c)) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  std::string TakeValue() {
    SkipBlanks();
    std::string value;
    if (TakeIf('"')) {
      value = TakeQuoted();
    }
    const std::size_t end = std::min(m_rest.find_first_of(",\r\n"), m_rest.size());
    value += m_rest.substr(0, end);
    m_rest.remove_prefix(end);
    value.erase(std::min(value.find_last_not_of(kBlanks) + 1, value.size()));
    return value;
  }

  /// Up to the closing quote; two quotes are one that belongs to the value.
  std::string TakeQuoted() {
    std::string value;
    while (!m_rest.empty()) {
      const char c = m_rest.front();
      m_rest.remove_prefix(1);
      if (c == '"' && !TakeIf('"')) break;
      if (c == '\n') ++m_line;
      value += c;
    }
    return value;
  }

  void SkipBlanks() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(kBlanks), m_rest.size())); }

  std::string_view m_rest;
  std::size_t m_line = 1;
};

std::string Quoted(std::string_view text) {
  std::string quoted = '"' + std::string(text.substr(0, kMostQuoted));
  return quoted + (text.size() > kMostQuoted ? "...\"" : "\"");
}

std::string LowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

/// The whole text as a finite number.
std::optional<double> NumberIn(std::string_view text) {
  double number = 0;
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
  return isNumber ? std::optional(number) : std::nullopt;
}

/// False for anything else than a number from `least` to `most`.
bool ReadNumber(const std::string& text, double least, double most, double& value) {
  const auto number = NumberIn(text);
  if (!number || *number < least || *number > most) return false;
  value = *number;
  return true;
}

bool ReadWhole(const std::string& text, std::int32_t least, std::int32_t most, std::int32_t& value) {
  const auto number = NumberIn(text);
  if (!number || *number < least || *number > most || *number != std::trunc(*number)) return false;
  value = static_cast<std::int32_t>(*number);
  return true;
}

bool ReadStroke(const std::string& text, TennisShot& shot) {
  const auto strokes = TennisStrokes();
  const std::string key = LowerCase(text);
  const auto found = std::ranges::find_if(strokes, [&](const TennisStroke& s) { return s.key == key; });
  if (found == strokes.end()) return false;
  shot.swingType = found->swingType;
  shot.strokeClass = found->strokeClass;
  return true;
}

bool ReadSwap(const std::string& text, TennisShot& shot) {
  const std::string word = LowerCase(text);
  shot.swapSides = word == "yes" || word == "true" || word == "1";
  return shot.swapSides || word == "no" || word == "false" || word == "0";
}

struct Column {
  std::string_view name;
  bool isRequired;
  bool (*read)(const std::string& text, TennisShot& shot);
  std::string_view expected;
};

constexpr std::array kColumns{
    Column{"time_s", true,
           [](const std::string& text, TennisShot& s) { return ReadNumber(text, 0, kLastSecond, s.time); },
           "a number of seconds from 0 to 86400"},
    Column{"stroke", true, ReadStroke,
           "one of forehand, forehand-slice, forehand-volley, backhand, backhand-slice, backhand-volley, "
           "smash, serve"},
    Column{"zone", false,
           [](const std::string& text, TennisShot& s) {
             return ReadWhole(text, 0, kImpactZones - 1, s.impactZone);
           },
           "a whole number from 0 to 25"},
    Column{"spin", false,
           [](const std::string& text, TennisShot& s) {
             return ReadWhole(text, -kMostSpin, kMostSpin, s.firstPanelValue);
           },
           "a whole number from -99 to 99"},
    Column{"swing_speed", false,
           [](const std::string& text, TennisShot& s) {
             return ReadNumber(text, 0, kMostSpeed, s.secondPanelSpeed);
           },
           "a speed in km/h from 0 to 999"},
    Column{"ball_speed", false,
           [](const std::string& text, TennisShot& s) {
             return ReadNumber(text, 0, kMostSpeed, s.thirdPanelSpeed);
           },
           "a speed in km/h from 0 to 999"},
    Column{"swap_sides", false, ReadSwap, "yes or no"},
};

/// The known columns in the order of the table; empty, with a problem, when the header is wrong.
std::vector<const Column*> ReadHeader(const std::vector<std::string>& names, std::size_t line,
                                      ShotTable& table) {
  const auto fail = [&](const std::string& message) {
    table.problems.push_back({line, message});
    return std::vector<const Column*>();
  };
  std::vector<const Column*> columns;
  for (const std::string& name : names) {
    const auto* found = std::ranges::find(kColumns, std::string_view(LowerCase(name)), &Column::name);
    if (found == kColumns.end()) return fail("there is no column " + Quoted(name));
    if (std::ranges::count(columns, found) > 0) return fail("the column " + name + " is there twice");
    columns.push_back(found);
  }
  for (const Column& column : kColumns) {
    if (!column.isRequired || std::ranges::count(columns, &column) > 0) continue;
    return fail("the header has no column " + std::string(column.name));
  }
  return columns;
}

/// Empty when the row is a shot.
std::string ReadRow(const std::vector<std::string>& values, const std::vector<const Column*>& columns,
                    TennisShot& shot) {
  if (values.size() != columns.size()) {
    return std::to_string(values.size()) + " values under " + std::to_string(columns.size()) + " columns";
  }
  shot.impactZone = kMiddleZone;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const Column& column = *columns[i];
    if (values[i].empty() && !column.isRequired) continue;
    if (column.read(values[i], shot)) continue;
    return std::string(column.name) + " is " + Quoted(values[i]) + ", not " + std::string(column.expected);
  }
  // The clip's axis is that of the table.
  shot.clipAnchor = shot.time;
  shot.clipEnd = kLastSecond;
  return {};
}

}  // namespace

ShotTable ReadShotTable(std::string_view text) {
  ShotTable table;
  CsvReader reader(text);
  std::vector<std::string> values;
  std::size_t line = 1;
  std::vector<const Column*> columns;
  while (reader.NextRow(values, line)) {
    if (values.empty()) continue;
    if (columns.empty()) {
      columns = ReadHeader(values, line, table);
      if (columns.empty()) return table;
      table.hasHeader = true;
      continue;
    }
    if (table.shots.size() == kMaxTennisShots) {
      table.problems.push_back({line, "more than " + std::to_string(kMaxTennisShots) + " shots"});
      break;
    }
    TennisShot shot;
    const std::string problem = ReadRow(values, columns, shot);
    if (problem.empty()) {
      table.shots.push_back(shot);
    } else {
      table.problems.push_back({line, problem});
    }
  }
  if (!table.hasHeader) table.problems.push_back({line, "there is no header line"});
  std::ranges::stable_sort(table.shots, {}, &TennisShot::time);
  BuildSearchTree(table.shots);
  return table;
}

}  // namespace vrx::overlay
