// Reads the captions of SubRip (.srt) and WebVTT (.vtt) files. The commands that make a project of clips use
// it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "vrx/XpResult.h"

namespace vrx::subtitles {

inline constexpr std::size_t kMostBytes = std::size_t{16} << 20;
inline constexpr std::size_t kMostCues = 100'000;
inline constexpr std::size_t kLongestText = std::size_t{32} << 10;  // bytes of a cue, with its markup
inline constexpr std::size_t kMostNotes = 100;

/// Where in the frame a caption lies.
enum class Place { Bottom, Top, Middle };

/// One caption. Its times count from the start of the movie, and the end is after the start.
struct Cue {
  std::int64_t startMs = 0;
  std::int64_t endMs = 0;
  std::string text;     // UTF-8 without markup and control characters; lines end at '\n', none is blank
  bool bold = false;    // all of the text is
  bool italic = false;  // all of the text is
  Place place = Place::Bottom;
  std::uint64_t line = 0;  // of its times in the file, from 1
};

/// What was passed over or taken for something else, as a phrase in English.
struct Note {
  std::uint64_t line = 0;  // from 1
  std::string text;
};

struct Subtitles {
  std::vector<Cue> cues;           // by their starts; captions of one time stay in the order of the file
  std::vector<Note> notes;         // in the order of their lines, at most kMostNotes
  std::uint64_t furtherNotes = 0;  // how many more there would be
};

/// Replaces `subtitles` by what `bytes` hold. Files that begin with "WEBVTT" are read as W3C WebVTT, all
/// others as SubRip, as players do: a caption goes on until the next line with times, and blank lines and
/// counters in between are left out. Text is UTF-8, or UTF-16 by its mark or first character; lines that are
/// no UTF-8 are read as windows-1252. Captions without text or whose end is not after their start are left
/// out with a note; those that overlap are kept. Fractions of a second count milliseconds, also with fewer
/// than three digits, and those beyond three are cut off. XpErrInvalidFile when there is no caption or a
/// limit is passed: then there are no cues, `cause` says why as a phrase in English, and the notes stay.
XpResult ReadSubtitles(std::span<const char> bytes, Subtitles& subtitles, std::string& cause);

}  // namespace vrx::subtitles
