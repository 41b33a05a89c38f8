#include "content/subtitles/SubtitleNotes.h"

#include <algorithm>

namespace vrx::subtitles {
namespace {

constexpr std::array<const char*, kPassed> kWords = {
    "bold or italic letters of a part of a caption are not kept",
    "fonts, colours, underlines and other styles of letters are not kept",
    "places other than top, middle and bottom are not kept",
    "vertical text becomes horizontal",
    "regions are not kept, their captions are shown at the bottom",
    "style sheets are not kept",
    "definitions of regions are not kept",
    "the map of times to those of a stream is ignored, times count from the start of the movie",
    "text that belongs to no times is left out",
};

std::string WithCount(std::string text, std::uint64_t further) {
  if (further != 0) text += ", here and in " + std::to_string(further) + " more";
  return text;
}

}  // namespace

void SubtitleNotes::Add(std::uint64_t line, std::string text) {
  if (m_notes.size() < kMostNotes) {
    m_notes.push_back({line, std::move(text)});
  } else {
    ++m_further;
  }
}

void SubtitleNotes::AddOnce(std::uint64_t line, Passed kind) {
  Once& once = m_once.at(static_cast<std::size_t>(kind));
  if (once.count++ == 0) once.line = line;
}

void SubtitleNotes::AddForeign(std::uint64_t firstLine, std::uint64_t lines) {
  if (lines == 0) return;
  Add(firstLine, WithCount("bytes that are no UTF-8 are taken as windows-1252", lines - 1));
}

void SubtitleNotes::Finish(Subtitles& subtitles) {
  for (std::size_t kind = 0; kind < kPassed; ++kind) {
    const Once& once = m_once.at(kind);
    if (once.count != 0) Add(once.line, WithCount(kWords.at(kind), once.count - 1));
  }
  std::ranges::stable_sort(m_notes, {}, &Note::line);
  subtitles.notes = std::move(m_notes);
  subtitles.furtherNotes = m_further;
}

}  // namespace vrx::subtitles
