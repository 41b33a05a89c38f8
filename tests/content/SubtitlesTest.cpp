// Subtitles of SubRip and WebVTT as programs and people write them, and files that are damaged or hostile.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "content/subtitles/Subtitles.h"

namespace {

using namespace vrx::subtitles;

Subtitles Read(const std::string& bytes) {
  Subtitles subtitles;
  std::string cause;
  EXPECT_EQ(ReadSubtitles(bytes, subtitles, cause), XpOk) << cause << "\n" << bytes.substr(0, 300);
  return subtitles;
}

/// "1000-2000 text" for each cue, with '|' for ends of lines.
std::vector<std::string> Shown(const Subtitles& subtitles) {
  std::vector<std::string> shown;
  for (const Cue& cue : subtitles.cues) {
    std::string text = cue.text;
    for (char& c : text) c = c == '\n' ? '|' : c;
    shown.push_back(std::to_string(cue.startMs) + "-" + std::to_string(cue.endMs) + " " + text);
  }
  return shown;
}

std::vector<std::string> Notes(const Subtitles& subtitles) {
  std::vector<std::string> notes;
  for (const Note& note : subtitles.notes) notes.push_back(std::to_string(note.line) + ": " + note.text);
  return notes;
}

using Lines = std::vector<std::string>;

TEST(SubtitlesTest, SubRipFilesAreReadHoweverTheyAreLaidOut) {
  struct Case {
    const char* name;
    std::string bytes;
    Lines shown;
  };
  const std::string times = "00:00:01,000 --> 00:00:02,000\n";
  const std::string later = "00:00:03,000 --> 00:00:04,000\n";
  const Case cases[] = {
      {"plain",
       "1\n" + times + "One\nTwo\n\n2\n" + later + "Three\n",
       {"1000-2000 One|Two", "3000-4000 Three"}},
      {"no end of line", times + "One", {"1000-2000 One"}},
      {"carriage returns",
       "1\r00:00:01,000 --> 00:00:02,000\rOne\rTwo\r\r2\r" + later + "Three",
       {"1000-2000 One|Two", "3000-4000 Three"}},
      {"CR CR LF",
       "1\r\r\n00:00:01,000 --> 00:00:02,000\r\r\nOne\r\r\nTwo\r\r\n\r\r\n",
       {"1000-2000 One|Two"}},
      {"no counters", times + "One\n\n" + later + "Three\n", {"1000-2000 One", "3000-4000 Three"}},
      {"wrong counters",
       "7\n" + times + "One\n\n7\n" + later + "Three\n",
       {"1000-2000 One", "3000-4000 Three"}},
      {"a number is the text",
       "1\n" + times + "42\n\n2\n" + later + "7\n\n",
       {"1000-2000 42", "3000-4000 7"}},
      {"a number is the text and there are no counters",
       times + "42\n\n" + later + "7",
       {"1000-2000 42", "3000-4000 7"}},
      {"no blank lines", "1\n" + times + "One\n2\n" + later + "Three", {"1000-2000 One", "3000-4000 Three"}},
      {"a blank line after each line",
       "1\n\n" + times + "\nOne\n\n2\n\n" + later + "\nThree\n\n",
       {"1000-2000 One", "3000-4000 Three"}},
      {"blank lines inside",
       "1\n" + times + "\n\nOne\n \t\n\nTwo\n\n\n\n2\n" + later + "Three\n",
       {"1000-2000 One|Two", "3000-4000 Three"}},
      {"marks between joined files",
       "\xEF\xBB\xBF"
       "1\n" +
           times +
           "One\n\n\xEF\xBB\xBF"
           "1\n" +
           later + "Two",
       {"1000-2000 One", "3000-4000 Two"}},
      {"out of order and overlapping",
       later + "B\n\n00:00:00,500 --> 00:00:09,000\nA\n\n" + later + "C\n",
       {"500-9000 A", "3000-4000 B", "3000-4000 C"}},
      {"text with arrows", times + "a --> b\n12:30 -> 14:00\n", {"1000-2000 a --> b|12:30 -> 14:00"}},
  };
  for (const Case& c : cases) EXPECT_EQ(Shown(Read(c.bytes)), c.shown) << c.name;
}

TEST(SubtitlesTest, TimesAreReadInAllFormsThatPlayersTake) {
  struct Case {
    const char* times;
    const char* shown;  // null when there are no times in it
  };
  const Case cases[] = {
      {"00:00:01,000-->00:00:02,500", "1000-2500 x"},
      {" 1:02:03.004  -->\t1:02:04.005 ", "3723004-3724005 x"},
      {"00:01.000 --> 00:02.000", "1000-2000 x"},
      {"00: 00: 01, 000 --> 00: 00: 02, 000", "1000-2000 x"},
      {"00:00:01 --> 00:00:02", "1000-2000 x"},
      {"00:00:01,5 --> 00:00:02,50", "1005-2050 x"},
      {"00:00:01,000999 --> 00:00:02,123456", "1000-2123 x"},
      {"00:00:01,000 -> 00:00:02,000", "1000-2000 x"},
      {"123:59:60,000 --> 999999:00:00,000", "446400000-3599996400000 x"},
      {"00:00:01,000 --> 00:00:02,000 and more", "1000-2000 x"},
      {"-00:00:01,000 --> 00:00:02,000", nullptr},
      {"00:00:01,000 -->", nullptr},
      {"00:00:01, --> 00:00:02,000", nullptr},
      {"00:00:xx,000 --> 00:00:02,000", nullptr},
      {"1000000:00:01,000 --> 1000000:00:02,000", nullptr},
      {"00:00:01,000 00:00:03,000 --> 00:00:02,000", nullptr},
  };
  for (const Case& c : cases) {
    // A line of times that cannot be read ends the caption before it and takes its own text with it.
    const auto subtitles =
        Read("00:00:00,100 --> 00:00:00,200\nfirst\n\n2\n" + std::string(c.times) + "\nx\n");
    Lines expected{"100-200 first"};
    if (c.shown != nullptr) expected.emplace_back(c.shown);
    EXPECT_EQ(Shown(subtitles), expected) << c.times;
    EXPECT_EQ(subtitles.cues.back().line, c.shown != nullptr ? 5u : 1u) << c.times;
    Lines unreadable;
    if (c.shown == nullptr) unreadable.emplace_back("5: the times cannot be read, their caption is left out");
    EXPECT_EQ(Notes(subtitles), unreadable) << c.times;
  }
}

TEST(SubtitlesTest, WebVttBlocksFollowTheStandard) {
  const std::string header = "\xEF\xBB\xBFWEBVTT - Title\nKind: captions\n\n";
  struct Case {
    const char* name;
    std::string bytes;
    Lines shown;
    Lines notes;
  };
  const Case cases[] = {
      {"ids",
       header + "intro\n00:01.000 --> 00:02.000\nOne\nTwo\n\n2\n1:00:03.000 --> 1:00:04.000\nThree",
       {"1000-2000 One|Two", "3603000-3604000 Three"},
       {}},
      {"comments",
       header + "NOTE\na\nb\n\nNOTE c\n\n00:01.000 --> 00:02.000\nOne\n\nNOTE end",
       {"1000-2000 One"},
       {}},
      {"CR CR LF", "WEBVTT\r\r\n\r\r\n00:01.000 --> 00:02.000\r\r\nOne\r\r\nTwo", {"1000-2000 One|Two"}, {}},
      {"times right after the header", "WEBVTT\n00:01.000 --> 00:02.000\nOne", {"1000-2000 One"}, {}},
      {"times without a blank line before",
       header + "00:01.000 --> 00:02.000\nOne\n00:03.000 --> 00:04.000\nTwo",
       {"1000-2000 One", "3000-4000 Two"},
       {}},
      {"styles and regions",
       "WEBVTT\nX-TIMESTAMP-MAP=MPEGTS:1,LOCAL:0\n\nSTYLE\n::cue{}\n\nREGION\nid:a\n\n00:01.000 --> "
       "00:02.000 region:a\nOne",
       {"1000-2000 One"},
       {"2: the map of times to those of a stream is ignored, times count from the start of the movie",
        "4: style sheets are not kept", "7: definitions of regions are not kept",
        "10: regions are not kept, their captions are shown at the bottom"}},
      {"a blank line ends a caption",
       header + "00:01.000 --> 00:02.000\nOne\n\nlost\n\n00:03.000 --> 00:04.000\nTwo",
       {"1000-2000 One", "3000-4000 Two"},
       {"7: text that belongs to no times is left out"}},
      {"arrows without times",
       header + "a --> b\nlost\n\n00:03.000 --> 00:04.000\nTwo",
       {"3000-4000 Two"},
       {"4: the times cannot be read, their caption is left out"}},
  };
  for (const Case& c : cases) {
    const Subtitles subtitles = Read(c.bytes);
    EXPECT_EQ(Shown(subtitles), c.shown) << c.name;
    EXPECT_EQ(Notes(subtitles), c.notes) << c.name;
  }
}

TEST(SubtitlesTest, MarkupIsTakenOutOfTheText) {
  struct Case {
    const char* marked;
    const char* subRip;
    const char* webVtt;
  };
  const Case cases[] = {
      {"<i>a</i> <B>b</B> <u>c</u>", "a b c", "a b c"},
      {"<font color=\"#ff0000\" size=3>a</font><br/>b", "a|b", "a|b"},
      {"<v.loud Ann>a</v> <c.red.big>b</c> <lang en-GB>c</lang>", "a b c", "a b c"},
      {"a <00:01.500>b <00:00:01.700><c>c</c>", "a b c", "a b c"},
      {"<ruby>a<rt>b</rt></ruby>", "a(b)", "a(b)"},
      {"<Sighs> a", "<Sighs> a", "a"},
      {"1 < 2 > 0 <3 a<", "1 < 2 > 0 <3 a<", "1 < 2 > 0 <3 a<"},
      {"a <b c <i>d</i>", "a <b c d", "a <b c d"},
      {"{\\an8}a {\\i1}b{\\i0\\b0} {y:i}c {d} {\\", "a b c {d} {\\", "a b c {d} {\\"},
      {"&amp;&lt;i&gt;&quot;&#65;&#x42;&#X1F600; &amp;lt; &unknown; & &#; &#1114112;",
       "&<i>\"AB\xF0\x9F\x98\x80 &lt; &unknown; & &#; \xEF\xBF\xBD",
       "&<i>\"AB\xF0\x9F\x98\x80 &lt; &unknown; & &#; \xEF\xBF\xBD"},
      {"a&nbsp;b&lrm;",
       "a\xC2\xA0"
       "b\xE2\x80\x8E",
       "a\xC2\xA0"
       "b\xE2\x80\x8E"},
      {"a\tb\x01\x1B\x7F&#0;&#7;&#xD800;&#xFFFE;c",
       "a b\xEF\xBF\xBD"
       "c",
       "a b\xEF\xBF\xBD"
       "c"},
      {" <i> a \n&nbsp;\n b </i> ", "a|b", "a|b"},
  };
  for (const Case& c : cases) {
    const std::string cue = "00:01.000 --> 00:02.000\n" + std::string(c.marked) + "\n";
    EXPECT_EQ(Shown(Read(cue)), Lines{"1000-2000 " + std::string(c.subRip)}) << c.marked;
    EXPECT_EQ(Shown(Read("WEBVTT\n\n" + cue)), Lines{"1000-2000 " + std::string(c.webVtt)}) << c.marked;
  }
}

TEST(SubtitlesTest, StyleAndPlaceOfWholeCaptionsAreKept) {
  struct Case {
    const char* settings;
    const char* text;
    bool bold = false;
    bool italic = false;
    Place place = Place::Bottom;
    const char* note = nullptr;
  };
  const char* partNote = "bold or italic letters of a part of a caption are not kept";
  const char* styleNote = "fonts, colours, underlines and other styles of letters are not kept";
  const char* placeNote = "places other than top, middle and bottom are not kept";
  const Case cases[] = {
      {"", "<b>a</b>\n<b>b</b>", true},
      {"", "<i><b>a</b> <b>b</b></i>", true, true},
      {"", "<b><b>a</b> b</b>", true},
      {"", "<i>a</i> b", false, false, Place::Bottom, partNote},
      {"", "a <b>b</b>", false, false, Place::Bottom, partNote},
      {"", "</i></b>a"},
      {"", "{\\i1}a{\\i0}", false, true},
      {"", "{\\b700}a{\\r}", true, false, Place::Bottom, styleNote},
      {"", "<u>a</u>", false, false, Place::Bottom, styleNote},
      {"", "{\\an8}a", false, false, Place::Top},
      {"", "{\\an5}a", false, false, Place::Middle},
      {"", "{\\a6}a", false, false, Place::Top},
      {"line:0", "{\\an2\\pos(1,2)}a", false, false, Place::Bottom, placeNote},
      {"line:0", "a", false, false, Place::Top},
      {"line:-1", "a"},
      {"line:-18 align:center", "a", false, false, Place::Top},
      {"line:8", "a", false, false, Place::Middle},
      {"line:10%,start", "a", false, false, Place::Top},
      {"size:80% line:50%", "a", false, false, Place::Middle},
      {"line:84.5%", "a"},
      {"line:x% line", "a"},
      {"position:10%", "a", false, false, Place::Bottom, placeNote},
      {"line:5%\talign:start", "a", false, false, Place::Top, placeNote},
      {"vertical:rl", "a", false, false, Place::Bottom, "vertical text becomes horizontal"},
  };
  for (const Case& c : cases) {
    const std::string what = std::string(c.settings) + " " + c.text;
    const Subtitles subtitles =
        Read("WEBVTT\n\n00:01.000 --> 00:02.000 " + std::string(c.settings) + "\n" + c.text + "\n");
    const Cue& cue = subtitles.cues.at(0);
    EXPECT_EQ(cue.bold, c.bold) << what;
    EXPECT_EQ(cue.italic, c.italic) << what;
    EXPECT_EQ(cue.place, c.place) << what;
    EXPECT_EQ(Notes(subtitles), c.note == nullptr ? Lines{} : Lines{"3: " + std::string(c.note)}) << what;
  }
}

TEST(SubtitlesTest, EncodingsAreFoundByContent) {
  const std::string text = "1\n00:00:01,000 --> 00:00:02,000\n\xC3\xA9\xE2\x82\xAC\n";
  const auto wide = [&text](bool isBigEndian, const std::string& mark) {
    std::string bytes = mark;
    const std::string narrow = text.substr(0, text.find('\xC3'));
    for (const char16_t c : std::u16string(narrow.begin(), narrow.end()) + u"\u00E9\u20AC\n") {
      const char high = static_cast<char>(c >> 8);
      const char low = static_cast<char>(c & 0xFF);
      bytes += isBigEndian ? high : low;
      bytes += isBigEndian ? low : high;
    }
    return bytes;
  };
  const Lines expected{"1000-2000 \xC3\xA9\xE2\x82\xAC"};
  const std::string files[] = {text,
                               "\xEF\xBB\xBF" + text,
                               wide(false, "\xFF\xFE"),
                               wide(true, "\xFE\xFF"),
                               wide(false, ""),
                               wide(true, ""),
                               wide(false, "\xFF\xFE") + "\x01"};
  for (const std::string& file : files) EXPECT_EQ(Shown(Read(file)), expected) << file;

  const Subtitles old = Read("00:00:01,000 --> 00:00:02,000\n\xE9\x80\n\xFF\n\xC3\xA9");
  EXPECT_EQ(Shown(old), Lines{expected[0] + "|\xC3\xBF|\xC3\xA9"});
  EXPECT_EQ(Notes(old), Lines{"2: bytes that are no UTF-8 are taken as windows-1252, here and in 1 more"});
}

TEST(SubtitlesTest, WhatIsLeftOutIsNoted) {
  const Subtitles subtitles = Read(
      "junk\n\n1\n00:00:03,000 --> 00:00:02,000\nbackward\n\n2\n00:00:03,000 --> 00:00:03,000\nnever\n\n"
      "3\n00:00:03,000 --> 00:00:04,000\n<i> </i>&nbsp;\n\n00:00:05,000 --> 00:00:06,000\n4\n"
      "00:00:07,000 --> 00:00:08,000 X1:0\n<i>a</i>b\n\n00:00:09,000 --> 00:00:10,000 X1:1\n<b>c</b>d\n\n" +
      std::string("00:00:11,000 --> 00:00:12,000\n") + std::string(kLongestText + 1, 'x') + "\n");
  EXPECT_EQ(Shown(subtitles), (Lines{"7000-8000 ab", "9000-10000 cd"}));
  EXPECT_EQ(
      Notes(subtitles),
      (Lines{"1: text that belongs to no times is left out",
             "4: the caption ends before it starts and is left out",
             "8: the caption ends when it starts and is left out",
             "12: the caption has no text and is left out", "15: the caption has no text and is left out",
             "17: bold or italic letters of a part of a caption are not kept, here and in 1 more",
             "17: places other than top, middle and bottom are not kept, here and in 1 more",
             "23: the text is longer than 32768 bytes and is left out"}));
}

TEST(SubtitlesTest, LimitsHold) {
  std::string cause;
  Subtitles subtitles;
  std::string many;
  for (std::size_t i = 0; i <= kMostCues; ++i) many += "0:1 --> 0:2\nx\n";
  EXPECT_EQ(ReadSubtitles(many, subtitles, cause), XpErrInvalidFile);
  EXPECT_EQ(cause, "there are more than 100000 captions");
  EXPECT_TRUE(subtitles.cues.empty());
  many.resize(many.find('x') + 2);
  for (std::size_t i = 0; i < kMostNotes + 5; ++i) many += "0:2 --> 0:1\nx\n";
  subtitles = Read(many);
  EXPECT_EQ(subtitles.notes.size(), kMostNotes);
  EXPECT_EQ(subtitles.furtherNotes, 5u);
  EXPECT_EQ(ReadSubtitles(std::string(kMostBytes + 1, '\n'), subtitles, cause), XpErrInvalidFile);
  EXPECT_EQ(cause, "the file is larger than 16 MiB");
  // Deep and long markup that never ends takes no more than one pass.
  for (const char* mark : {"<", "{\\", "&#", "<b>", "\n", "\r"}) {
    std::string text = "0:1 --> 0:2\nx\n";
    while (text.size() < kLongestText) text += mark;
    EXPECT_EQ(Read(text).cues.size(), 1u) << mark;
  }
}

TEST(SubtitlesTest, FilesWithoutCaptionsAreRefusedWithTheReason) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "no caption was found: a caption begins with a line as 00:00:01,000 --> 00:00:02,500"},
      {"WEBVTT\n\n", "no caption was found: a caption begins with a line as 00:00:01,000 --> 00:00:02,500"},
      {"[Script Info]\nTitle: x\n", "no caption is left: line 1: text that belongs to no times is left out"},
      {"\n1\n00:00:02,000 --> 00:00:01,000\nx",
       "no caption is left: line 3: the caption ends before it starts and is left out"},
  };
  for (const auto& [bytes, expected] : cases) {
    Subtitles subtitles;
    std::string cause;
    EXPECT_EQ(ReadSubtitles(bytes, subtitles, cause), XpErrInvalidFile) << bytes;
    EXPECT_EQ(cause, expected) << bytes;
  }
}

TEST(SubtitlesTest, FilesThatAreCutAnywhereKeepTheCaptionsBeforeTheCut) {
  for (const std::string start : {"", "WEBVTT\n\n"}) {
    const std::string first = start + "00:00:01.000 --> 00:00:02.000\n<i>One</i> &amp; {\\an8}two\n\n";
    const std::string whole =
        first + "2\n00:00:03.000 --> 00:00:04.000 line:5%\n<b>Thr\xC3\xA9\xC3\xA9</b>\n";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
      Subtitles subtitles;
      std::string cause;
      const XpResult result = ReadSubtitles({whole.data(), size}, subtitles, cause);
      if (size < first.size()) continue;
      ASSERT_EQ(result, XpOk) << size;
      // A line of times that is cut counts as text.
      const std::string shown = Shown(subtitles).front();
      EXPECT_TRUE(shown.starts_with("1000-2000 One & two")) << size;
      if (size <= whole.find("\n00:00:03") + 1) {
        EXPECT_EQ(shown, "1000-2000 One & two") << size;
      }
      const std::size_t tag = whole.find("<b>");
      EXPECT_EQ(subtitles.cues.size(), size <= tag || size == tag + 3 ? 1u : 2u) << size;
    }
  }
}

}  // namespace
