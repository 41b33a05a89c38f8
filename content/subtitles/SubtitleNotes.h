// Collects what the reader of subtitles passes over. What often comes back in a file is noted once, with a
// count.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "content/subtitles/Subtitles.h"

namespace vrx::subtitles {

/// What is noted once for a file.
enum class Passed {
  PartStyle,
  OtherStyle,
  Position,
  Vertical,
  Region,
  StyleBlock,
  RegionBlock,
  TimeMap,
  StrayText
};
inline constexpr std::size_t kPassed = 9;

class SubtitleNotes {
 public:
  void Add(std::uint64_t line, std::string text);
  void AddOnce(std::uint64_t line, Passed kind);
  /// Lines that had to be taken as windows-1252: the first one, and how many.
  void AddForeign(std::uint64_t firstLine, std::uint64_t lines);
  /// Moves all notes to `subtitles`.
  void Finish(Subtitles& subtitles);

 private:
  struct Once {
    std::uint64_t line = 0;
    std::uint64_t count = 0;
  };

  std::vector<Note> m_notes;
  std::uint64_t m_further = 0;
  std::array<Once, kPassed> m_once{};
};

}  // namespace vrx::subtitles
