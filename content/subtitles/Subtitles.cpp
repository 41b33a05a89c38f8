#include "content/subtitles/Subtitles.h"

#include <algorithm>
#include <string_view>

#include "content/subtitles/CueMarkup.h"
#include "content/subtitles/CueTimes.h"
#include "content/subtitles/SubtitleLines.h"
#include "content/subtitles/SubtitleNotes.h"

namespace vrx::subtitles {
namespace {

constexpr std::string_view kMark = "WEBVTT";
constexpr std::string_view kArrow = "-->";

bool IsCounter(std::string_view line) {
  return !line.empty() && line.find_first_not_of("0123456789") == std::string_view::npos;
}

/// True when `line` is `word`, alone or with a blank after it.
bool IsBlock(std::string_view line, std::string_view word) {
  if (!line.starts_with(word)) return false;
  line.remove_prefix(word.size());
  return line.empty() || line.front() == ' ' || line.front() == '\t';
}

/// The lines of one caption, or of text between two.
class CueLines {
 public:
  void Add(std::string_view line) {
    if (line.empty()) {
      m_hasBlankAtEnd = true;
      return;
    }
    if (m_text.size() + line.size() > kLongestText) m_isTooLong = true;
    if (m_isTooLong) return;
    m_hasBlankBeforeLast = m_hasBlankAtEnd;
    m_hasBlankAtEnd = false;
    m_lastStart = m_text.size();
    if (!m_text.empty()) m_text += '\n';
    m_text += line;
  }

  /// Removes the counter of the caption that comes next. A number right before its times is one; with blank
  /// lines in between, or at the end of a file that was cut, only when there is one before the number as
  /// well.
  void DropCounter(bool isAtEnd) {
    std::string_view last = std::string_view(m_text).substr(m_lastStart);
    if (last.starts_with('\n')) last.remove_prefix(1);
    if (!IsCounter(last)) return;
    const bool isApart = m_hasBlankBeforeLast && (!isAtEnd || m_lastStart != 0);
    if (isApart || (!m_hasBlankAtEnd && !isAtEnd)) m_text.resize(m_lastStart);
  }

  const std::string& GetText() const { return m_text; }
  bool IsTooLong() const { return m_isTooLong; }

 private:
  std::string m_text;
  std::size_t m_lastStart = 0;  // of the last line, with the '\n' before it
  bool m_hasBlankBeforeLast = false;
  bool m_hasBlankAtEnd = false;
  bool m_isTooLong = false;
};

class SubtitleReader {
 public:
  SubtitleReader(std::span<const char> bytes, Subtitles& subtitles)
      : m_lines(bytes), m_subtitles(subtitles) {}

  void Read() {
    while (!m_lines.IsAtEnd() && m_lines.Current().empty()) m_lines.Next();
    if (IsBlock(m_lines.Current(), kMark)) {
      m_format = Format::WebVtt;
      ReadHeader();
      while (!m_lines.IsAtEnd() && !HasTooManyCues()) ReadBlock();
    } else {
      ReadStart();
      while (!m_lines.IsAtEnd() && !HasTooManyCues()) ReadSubRipCue();
    }
    std::ranges::stable_sort(m_subtitles.cues, {}, &Cue::startMs);
    m_notes.AddForeign(m_lines.FirstForeignLine(), m_lines.ForeignLines());
    m_notes.Finish(m_subtitles);
  }

  bool HasTooManyCues() const { return m_subtitles.cues.size() > kMostCues; }

 private:
  void ReadHeader() {
    m_lines.Next();
    for (; !m_lines.IsAtEnd() && !m_lines.Current().empty(); m_lines.Next()) {
      if (m_lines.Current().find(kArrow) != std::string_view::npos) return;
      if (m_lines.Current().starts_with("X-TIMESTAMP-MAP"))
        m_notes.AddOnce(m_lines.Number(), Passed::TimeMap);
    }
  }

  /// A caption, with or without a line before its times that names it, or a block of another kind.
  void ReadBlock() {
    while (!m_lines.IsAtEnd() && m_lines.Current().empty()) m_lines.Next();
    if (m_lines.IsAtEnd()) return;
    const std::uint64_t line = m_lines.Number();
    const std::string first(m_lines.Current());
    if (!IsTimes()) m_lines.Next();
    if (!m_lines.IsAtEnd() && IsTimes()) {
      ReadWebVttCue();
      return;
    }
    bool hasText = !m_lines.IsAtEnd() && !m_lines.Current().empty();
    SkipBlock();
    if (IsBlock(first, "NOTE")) return;
    if (IsBlock(first, "STYLE")) {
      m_notes.AddOnce(line, Passed::StyleBlock);
    } else if (IsBlock(first, "REGION")) {
      m_notes.AddOnce(line, Passed::RegionBlock);
    } else if (hasText || !IsCounter(first)) {
      m_notes.AddOnce(line, Passed::StrayText);
    }
  }

  bool IsTimes() const {
    return LooksLikeTimes(m_lines.Current()) || m_lines.Current().find(kArrow) != std::string_view::npos;
  }

  void SkipBlock() {
    while (!m_lines.IsAtEnd() && !m_lines.Current().empty() && !IsTimes()) m_lines.Next();
  }

  void ReadWebVttCue() {
    Cue cue;
    CueSettings settings;
    const bool hasTimes = ReadTimes(cue, settings);
    CueLines lines;
    for (; !m_lines.IsAtEnd() && !m_lines.Current().empty() && !IsTimes(); m_lines.Next()) {
      lines.Add(m_lines.Current());
    }
    if (hasTimes) AddCue(cue, settings, lines);
  }

  /// What comes before the first times of a SubRip file.
  void ReadStart() {
    const std::uint64_t line = m_lines.Number();
    CueLines lines;
    for (; !m_lines.IsAtEnd() && !LooksLikeTimes(m_lines.Current()); m_lines.Next())
      lines.Add(m_lines.Current());
    lines.DropCounter(m_lines.IsAtEnd());
    if (!lines.GetText().empty()) m_notes.AddOnce(line, Passed::StrayText);
  }

  void ReadSubRipCue() {
    Cue cue;
    CueSettings settings;
    const bool hasTimes = ReadTimes(cue, settings);
    CueLines lines;
    for (; !m_lines.IsAtEnd() && !LooksLikeTimes(m_lines.Current()); m_lines.Next())
      lines.Add(m_lines.Current());
    lines.DropCounter(m_lines.IsAtEnd());
    if (hasTimes) AddCue(cue, settings, lines);
  }

  bool ReadTimes(Cue& cue, CueSettings& settings) {
    cue.line = m_lines.Number();
    const auto times = ReadCueTimes(m_lines.Current());
    if (times) {
      cue.startMs = times->startMs;
      cue.endMs = times->endMs;
      if (m_format == Format::WebVtt) settings = ReadCueSettings(times->settings);
      if (m_format == Format::SubRip) settings.hasSidePlace = times->settings.starts_with("X1:");
    } else {
      m_notes.Add(cue.line, "the times cannot be read, their caption is left out");
    }
    m_lines.Next();
    return times.has_value();
  }

  void AddCue(Cue& cue, const CueSettings& settings, const CueLines& lines) {
    if (lines.IsTooLong()) {
      m_notes.Add(cue.line,
                  "the text is longer than " + std::to_string(kLongestText) + " bytes and is left out");
      return;
    }
    if (cue.endMs <= cue.startMs) {
      m_notes.Add(cue.line, cue.endMs < cue.startMs ? "the caption ends before it starts and is left out"
                                                    : "the caption ends when it starts and is left out");
      return;
    }
    PlainText plain = TakeMarkupOut(lines.GetText(), m_format);
    if (plain.text.empty()) {
      m_notes.Add(cue.line, "the caption has no text and is left out");
      return;
    }
    NoteLosses(cue.line, settings, plain);
    cue.text = std::move(plain.text);
    cue.bold = plain.bold;
    cue.italic = plain.italic;
    cue.place = plain.place.value_or(settings.place.value_or(Place::Bottom));
    m_subtitles.cues.push_back(std::move(cue));
  }

  void NoteLosses(std::uint64_t line, const CueSettings& settings, const PlainText& plain) {
    if (plain.hasPartStyle) m_notes.AddOnce(line, Passed::PartStyle);
    if (plain.hasOtherStyle) m_notes.AddOnce(line, Passed::OtherStyle);
    if (plain.hasPosition || settings.hasSidePlace) m_notes.AddOnce(line, Passed::Position);
    if (settings.isVertical) m_notes.AddOnce(line, Passed::Vertical);
    if (settings.hasRegion) m_notes.AddOnce(line, Passed::Region);
  }

  SubtitleLines m_lines;
  Subtitles& m_subtitles;
  SubtitleNotes m_notes;
  Format m_format = Format::SubRip;
};

std::string WhyEmpty(const Subtitles& subtitles) {
  std::string why = "no caption was found: a caption begins with a line as 00:00:01,000 --> 00:00:02,500";
  if (!subtitles.notes.empty()) {
    const Note& first = subtitles.notes.front();
    why = "no caption is left: line " + std::to_string(first.line) + ": " + first.text;
  }
  return why;
}

}  // namespace

XpResult ReadSubtitles(std::span<const char> bytes, Subtitles& subtitles, std::string& cause) {
  subtitles = {};
  cause.clear();
  if (bytes.size() > kMostBytes) {
    cause = "the file is larger than " + std::to_string(kMostBytes >> 20) + " MiB";
    return XpErrInvalidFile;
  }
  SubtitleReader reader(bytes, subtitles);
  reader.Read();
  if (reader.HasTooManyCues()) {
    cause = "there are more than " + std::to_string(kMostCues) + " captions";
    subtitles.cues.clear();
  } else if (subtitles.cues.empty()) {
    cause = WhyEmpty(subtitles);
  }
  return cause.empty() ? XpOk : XpErrInvalidFile;
}

}  // namespace vrx::subtitles
