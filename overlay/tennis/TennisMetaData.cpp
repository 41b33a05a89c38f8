#include "overlay/tennis/TennisMetaData.h"

#include <charconv>

#include "overlay/document/RecordFields.h"

namespace vrx::overlay {
namespace {

/// Calls `visit` on the twelve fields in their order, until it gives false.
template <class Shot, class Visit>
bool VisitFields(Shot& shot, Visit visit) {
  return visit(shot.time) && visit(shot.swingType) && visit(shot.impactZone) && visit(shot.thirdPanelSpeed) &&
         visit(shot.secondPanelSpeed) && visit(shot.firstPanelValue) && visit(shot.clipStart) &&
         visit(shot.clipAnchor) && visit(shot.clipEnd) && visit(shot.leftIndex) && visit(shot.rightIndex) &&
         visit(shot.swapSides);
}

bool ReadField(RecordFields& fields, bool& value) {
  std::int32_t number = 0;
  if (!fields.Read(number)) return false;
  value = number != 0;
  return true;
}
template <class Number>
bool ReadField(RecordFields& fields, Number& value) {
  return fields.Read(value);
}

template <class... Format>
void AppendNumber(std::string& text, Format... value) {
  char digits[400];  // the longest double in its plain form has 309 digits before the point
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value...).ptr);
}

}  // namespace

std::size_t ReadTennisRecord(std::string_view& text, TennisShot& shot) {
  RecordFields fields(text);
  std::size_t count = 0;
  VisitFields(shot, [&](auto& value) {
    if ((count > 0 && !fields.ReadComma()) || !ReadField(fields, value)) return false;
    ++count;
    return true;
  });
  text = fields.GetRest();
  return count;
}

void ParseTennisMetaData(const XpString& text, const TextTable& texts, std::vector<TennisShot>& shots) {
  // Only ASCII means something here; every other character ends a number.
  const XpNarrowString narrow = text.ToNarrow();
  std::string_view rest = narrow.AsView();
  std::int32_t strokeClass = 0;
  for (std::size_t bar; shots.size() < kMaxTennisShots && (bar = rest.find('|')) != rest.npos;
       rest.remove_prefix(bar + 1)) {
    TennisShot shot;
    std::string_view record = rest.substr(0, bar);
    if (ReadTennisRecord(record, shot) < kTennisFields) continue;
    if (const TennisStroke* stroke = FindStroke(shot.swingType)) {
      shot.name = TextAt(texts, stroke->nameText);
      strokeClass = stroke->strokeClass;
    }
    shot.strokeClass = strokeClass;
    shots.push_back(shot);
  }
}

std::string WriteTennisMetaData(std::span<const TennisShot> shots) {
  constexpr int kDecimals = 3;
  std::string text;
  for (const TennisShot& shot : shots) {
    VisitFields(shot, [&](auto value) {
      if constexpr (std::is_same_v<decltype(value), double>) {
        AppendNumber(text, value, std::chars_format::fixed, kDecimals);
      } else {
        AppendNumber(text, static_cast<std::int32_t>(value));
      }
      text += ',';
      return true;
    });
    text.back() = '|';
  }
  return text;
}

}  // namespace vrx::overlay
