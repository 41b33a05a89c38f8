// Steps through the lines of a subtitle file in any of the usual encodings. Its readers use it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vrx::subtitles {

/// Lines end at LF, CR or CR LF; CR CR LF, which some programs write, ends one line as well. Blanks around a
/// line and byte order marks before it are cut off.
class SubtitleLines {
 public:
  /// `bytes` must outlive the object.
  explicit SubtitleLines(std::span<const char> bytes);

  bool IsAtEnd() const { return m_isAtEnd; }
  /// UTF-8, valid until the next step.
  std::string_view Current() const { return m_line; }
  std::uint64_t Number() const { return m_number; }  // from 1
  void Next();

  /// The first line that is no UTF-8 among those seen so far, and how many there are; 0 for none.
  std::uint64_t FirstForeignLine() const { return m_firstForeignLine; }
  std::uint64_t ForeignLines() const { return m_foreignLines; }

 private:
  void SetLine(std::string_view bytes);

  std::string m_converted;  // of UTF-16
  std::string_view m_rest;
  std::string m_foreign;  // the current line when its bytes had to be converted
  std::string_view m_line;
  std::uint64_t m_number = 0;
  std::uint64_t m_firstForeignLine = 0;
  std::uint64_t m_foreignLines = 0;
  bool m_isAtEnd = false;
};

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// `text` without spaces and tabs around it.
std::string_view WithoutBlanks(std::string_view text);

}  // namespace vrx::subtitles
