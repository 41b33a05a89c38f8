#include "overlay/document/RecordFields.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace vrx::overlay {

bool RecordFields::Read(std::int32_t& value) {
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

bool RecordFields::Read(float& value) {
  const std::string_view before = m_rest;
  double number = 0;
  // Numbers too small for a float are 0, not unreadable.
  if (!Read(number) || std::abs(number) > double{std::numeric_limits<float>::max()}) {
    m_rest = before;
    return false;
  }
  value = static_cast<float>(number);
  return true;
}

bool RecordFields::Read(double& value) {
  SkipToNumber();
  double number = 0;
  const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), number);
  if (error != std::errc() || !std::isfinite(number)) return false;
  value = number;
  return Advance(end);
}

bool RecordFields::ReadComma() {
  if (!m_rest.starts_with(',')) return false;
  m_rest.remove_prefix(1);
  return true;
}

void RecordFields::SkipToNumber() {
  m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\r\n\f\v"), m_rest.size()));
  // A plus sign is allowed, but not before another sign.
  if (m_rest.starts_with('+') && !m_rest.starts_with("+-")) m_rest.remove_prefix(1);
}

bool RecordFields::Advance(const char* end) {
  m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
  return true;
}

}  // namespace vrx::overlay
