#include "overlay/document/SlowInfoRecord.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace {

/// Reads numbers and separators from the front of one record.
class FieldReader {
 public:
  explicit FieldReader(std::string_view record) : m_rest(record) {}

  bool Read(std::int32_t& value) {
    SkipToNumber();
    const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), value);
    if (error == std::errc::result_out_of_range) {
      value = m_rest.front() == '-' ? std::numeric_limits<std::int32_t>::min()
                                    : std::numeric_limits<std::int32_t>::max();
    } else if (error != std::errc()) {
      return false;
    }
    return Advance(end);
  }

  bool Read(float& value) {
    SkipToNumber();
    // Numbers too small for a float are 0, not unreadable.
    double number = 0;
    const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), number);
    if (error != std::errc() || !(std::abs(number) <= double{std::numeric_limits<float>::max()}))
      return false;
    value = static_cast<float>(number);
    return Advance(end);
  }

  bool ReadComma() {
    if (!m_rest.starts_with(',')) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  std::string_view GetRest() const { return m_rest; }

 private:
  void SkipToNumber() {
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\r\n\f\v"), m_rest.size()));
    // A plus sign is allowed, but not before another sign.
    if (m_rest.starts_with('+') && !m_rest.starts_with("+-")) m_rest.remove_prefix(1);
  }
  bool Advance(const char* end) {
    m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
    return true;
  }

  std::string_view m_rest;
};

}  // namespace

std::size_t vrx::overlay::ReadSlowInfoRecord(std::string_view& text, SlowInfoRecord& record) {
  FieldReader reader(text);
  std::size_t fields = 0;
  if (reader.Read(record.videoId)) {
    ++fields;
    for (float* field : {&record.speed, &record.startTime, &record.endTime, &record.sourceTime,
                         &record.sourceTimeWithTrim}) {
      if (!reader.ReadComma() || !reader.Read(*field)) break;
      ++fields;
    }
  }
  text = reader.GetRest();
  return fields;
}

void ParseSlowInfoData(const XpString& text, std::vector<SlowInfoRecord>& list) {
  // Only ASCII means something here; every other character ends a number.
  const XpNarrowString narrow = text.ToNarrow();
  std::string_view rest = narrow.AsView();
  SlowInfoRecord record;
  while (list.size() < vrx::overlay::kMaxSpeedSections) {
    const std::size_t bar = rest.find('|');
    if (bar == rest.npos) return;
    std::string_view fields = rest.substr(0, bar);
    vrx::overlay::ReadSlowInfoRecord(fields, record);
    list.push_back(record);
    rest.remove_prefix(bar + 1);
  }
}
