// A path whose file name has a place for a number, such as overlay-%05d.png. Used for the pictures of
// overlays that are written alone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vrx::engine {

class NumberedPath {
 public:
  /// None unless the file name has exactly one per cent sign and with it %d, or %0Nd where N is 1 to 9.
  static std::optional<NumberedPath> Parse(const std::string& path);

  /// With its slash; "" when the path is a bare name.
  const std::string& GetFolder() const { return m_folder; }
  /// The file name as it was given, with the place for the number.
  const std::string& GetPattern() const { return m_pattern; }

  std::string PathOf(std::int64_t number) const { return m_folder + NameOf(number); }
  /// The number in a file name of this form; none for any other name.
  std::optional<std::int64_t> NumberIn(std::string_view name) const;

 private:
  NumberedPath() = default;
  std::string NameOf(std::int64_t number) const;

  std::string m_folder;
  std::string m_pattern;
  std::string m_before;      // of the name, before the number
  std::string m_after;       // of the name, after the number
  std::size_t m_digits = 1;  // at least, with zeros in front
};

}  // namespace vrx::engine
