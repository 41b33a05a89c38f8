#include "engine/NumberedPath.h"

#include <charconv>

namespace vrx::engine {

std::optional<NumberedPath> NumberedPath::Parse(const std::string& path) {
  NumberedPath parsed;
  const std::size_t start = path.rfind('/') + 1;  // 0 without a slash
  parsed.m_folder = path.substr(0, start);
  parsed.m_pattern = path.substr(start);
  const std::string& name = parsed.m_pattern;
  const std::size_t sign = name.find('%');
  if (sign == name.npos || name.find('%', sign + 1) != name.npos) return std::nullopt;
  parsed.m_before = name.substr(0, sign);
  std::string_view rest = std::string_view(name).substr(sign + 1);
  if (rest.size() > 2 && rest[0] == '0' && rest[1] >= '1' && rest[1] <= '9') {
    parsed.m_digits = static_cast<std::size_t>(rest[1] - '0');
    rest.remove_prefix(2);
  }
  if (!rest.starts_with('d')) return std::nullopt;
  parsed.m_after = rest.substr(1);
  return parsed;
}

std::optional<std::int64_t> NumberedPath::NumberIn(std::string_view name) const {
  if (name.size() <= m_before.size() + m_after.size() || !name.starts_with(m_before)) return std::nullopt;
  const char* first = name.data() + m_before.size();
  const char* last = name.data() + name.size() - m_after.size();
  std::int64_t number = 0;
  if (std::from_chars(first, last, number).ec != std::errc() || NameOf(number) != name) return std::nullopt;
  return number;
}

std::string NumberedPath::NameOf(std::int64_t number) const {
  const std::string digits = std::to_string(number);
  const std::string zeros(digits.size() < m_digits ? m_digits - digits.size() : 0, '0');
  return m_before + zeros + digits + m_after;
}

}  // namespace vrx::engine
