// Reads numbers and commas from the front of one record of a document's text formats: speed sections and
// tennis shots.
#pragma once

#include <cstdint>
#include <string_view>

namespace vrx::overlay {

/// Blanks and a plus sign may stand before a number. Each Read gives false, with the value as it was, when
/// there is no number.
class RecordFields {
 public:
  explicit RecordFields(std::string_view record) : m_rest(record) {}

  /// An integer beyond 32 bits stays at the limit.
  bool Read(std::int32_t& value);
  /// A number that is not finite in the type cannot be read; one too small for it is 0.
  bool Read(float& value);
  bool Read(double& value);
  bool ReadComma();

  /// What was not read.
  std::string_view GetRest() const { return m_rest; }

 private:
  void SkipToNumber();
  bool Advance(const char* end);

  std::string_view m_rest;
};

}  // namespace vrx::overlay
