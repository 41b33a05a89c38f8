#include "src/check/CaptionTextCheck.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <span>
#include <string_view>

#include "content/plist/PlistNumbers.h"
#include "drawing/ScaledText.h"
#include "drawing/TextRenderer.h"
#include "foundation/number/Saturate.h"
#include "foundation/text/NearestName.h"
#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"
#include "overlay/caption/CaptionLayout.h"
#include "overlay/document/CaptionItem.h"
#include "src/check/CaptionEscapes.h"

namespace vrx::check {
namespace {

using namespace overlay;
using View = std::u16string_view;

constexpr std::size_t kMostQuoted = 24;  // code units of a text that is no number
constexpr double kPictureHeight = 1080;  // of the picture that font sizes are counted in
constexpr double kLargestColor = 0xFFFFFF;
constexpr double kWholePercent = 100;
constexpr int kMostGuesses = 1000;  // of what a tag was meant to be; no text of a person has as many
constexpr View kCaptionName = u"Caption";

/// Cut to a length that a line of a report has room for.
XpString Quoted(View text) {
  XpString quoted = u"\"" + XpString(text.substr(0, kMostQuoted));
  return quoted + (text.size() > kMostQuoted ? u"...\"" : u"\"");
}

/// Takes from `text` all up to and with the next tag "<name>", or "</name>" where `isClosing`, and gives the
/// name; empty when there is none. Blanks may follow the name, though such a tag is not read.
View TakeTag(View& text, bool isClosing) {
  constexpr std::size_t kLongestName = 32;
  const auto isLetter = [](char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); };
  const View mark = isClosing ? View(u"</") : View(u"<");
  for (std::size_t open; (open = text.find(mark)) != text.npos;) {
    text.remove_prefix(open + mark.size());
    const auto end = static_cast<std::size_t>(std::ranges::find_if_not(text, isLetter) - text.begin());
    const std::size_t close = std::min(text.find_first_not_of(u' ', end), text.size());
    if (end == 0 || end > kLongestName || close == text.size() || text[close] != u'>') continue;
    const View name = text.substr(0, end);
    text.remove_prefix(close + 1);
    return name;
  }
  return {};
}

/// The name of the first tag in the text that is nearly `<meant>`; empty when there is none among the first
/// ones.
View FindNearTag(View text, bool isClosing, View meant) {
  View name;
  for (int i = 0; i < kMostGuesses && !(name = TakeTag(text, isClosing)).empty(); ++i) {
    if (name != meant && NearestName(name, {&meant, 1})) return name;
  }
  return {};
}

/// The lines of places in a text. Places that come one after the other are found fast.
class LineCounter {
 public:
  LineCounter(View text, std::uint64_t line) : m_text(text), m_line(line) {}

  std::uint64_t LineAt(const char16_t* place) {
    const auto at = static_cast<std::size_t>(place - m_text.data());
    if (at >= m_at) {
      m_line += Breaks(m_text.substr(m_at, at - m_at));
    } else {
      m_line -= Breaks(m_text.substr(at, m_at - at));
    }
    m_at = at;
    return m_line;
  }

 private:
  View m_text;
  std::uint64_t m_line;  // of the place `m_at`
  std::size_t m_at = 0;
};

class CaptionTextChecker {
 public:
  CaptionTextChecker(const DocumentText& text, TextReport& report)
      : m_rest(text.text.AsView()), m_lines(m_rest, text.line), m_report(report) {
    for (const CaptionField& field : CaptionFields()) m_names.push_back(field.GetName());
  }

  CaptionPlaces Run() {
    CaptionBodies bodies(m_rest);
    View body;
    TagSearch found = bodies.Next(body);
    for (; found == TagSearch::Found && m_number < kMaxCaptions; found = bodies.Next(body)) {
      const char16_t* open = body.data() - kCaptionTag.open.size();
      CheckOutside(TakeUpTo(open));
      ++m_number;
      m_places.lines.push_back(m_lines.LineAt(open));
      TakeUpTo(body.data() + body.size() + kCaptionTag.close.size());
      CheckCaption(body);
    }
    if (found == TagSearch::Found) {
      XpString message;
      XpFormat(message, u"holds more than %u captions: the others are not read",
               static_cast<std::uint32_t>(kMaxCaptions));
      m_report.Add(message);
    } else if (found == TagSearch::NoClosing) {
      CheckOutside(TakeUpTo(m_rest.data() + m_rest.find(kCaptionTag.open)));
      CheckUnclosed();
    } else if (!CheckOutside(m_rest) && m_number == 0) {
      m_report.Add(u"holds no <Caption>");
    }
    m_escapes.Report(m_report);
    return std::move(m_places);
  }

 private:
  /// The part of the text before `end` that was not taken yet.
  View TakeUpTo(const char16_t* end) {
    const View taken = m_rest.substr(0, static_cast<std::size_t>(end - m_rest.data()));
    m_rest.remove_prefix(taken.size());
    return taken;
  }

  void Add(const XpString& message, View place) {
    ++m_problems;
    m_places.damaged.insert(m_number);
    m_report.Add(u"caption", m_number, message, m_lines.LineAt(place.data()));
  }

  /// What lies in no caption. False when there is nothing to report of it.
  bool CheckOutside(View text) {
    const View near = FindNearTag(text, false, kCaptionName);
    if (!near.empty()) {
      m_report.Add(u"<" + XpString(near) + u"> is an unknown tag; did you mean <Caption>?",
                   m_lines.LineAt(near.data()));
      return true;
    }
    const std::size_t start = text.find_first_not_of(u" \t\r\n");
    if (start == text.npos) return false;
    text = text.substr(start, text.find_last_not_of(u" \t\r\n") + 1 - start);
    m_report.Add(Quoted(text) + u" lies in no <Caption> and is not read", m_lines.LineAt(text.data()));
    return true;
  }

  void CheckUnclosed() {
    ++m_number;
    Add(ClosingTag(m_rest, kCaptionName, kCaptionTag) + u": the caption is not read, nor what follows",
        m_rest);
  }

  /// What is wrong with the closing tag of something: it is nearly right, or not there.
  static XpString ClosingTag(View text, View name, const CaptionTag& tag) {
    const View near = FindNearTag(text, true, name);
    if (near.empty()) return XpString(tag.close) + u" is missing";
    return u"</" + XpString(near) + u"> should be " + XpString(tag.close);
  }

  void CheckCaption(View body) {
    if (const std::size_t next = body.find(kCaptionTag.open); next != body.npos) {
      body = body.substr(0, next);
      Add(ClosingTag(body, kCaptionName, kCaptionTag) + u": the caption after it is not read", body);
    }
    std::vector<View> known;  // the elements that are read, tags included
    for (const CaptionField& field : CaptionFields()) {
      View text;
      if (FindTagged(body, field.tag, text) != TagSearch::Found) {
        // The value of the caption before, which is wrong there.
        if (m_damagedFields.contains(&field)) m_places.damaged.insert(m_number);
        continue;
      }
      known.emplace_back(text.data() - field.tag.open.size(),
                         field.tag.open.size() + text.size() + field.tag.close.size());
      const std::size_t before = m_problems;
      CheckValue(field, text);
      if (m_problems == before) {
        m_damagedFields.erase(&field);
      } else {
        m_damagedFields.insert(&field);
      }
    }
    CheckMissing(body, CheckUnknownTags(body, known));
  }

  /// `meant` are names of tags that others are nearly like.
  void CheckMissing(View body, const std::set<View>& meant) {
    for (const CaptionField& field : CaptionFields()) {
      View text;
      const TagSearch found = FindTagged(body, field.tag, text);
      if (found == TagSearch::NoClosing) {
        const View from = body.substr(body.find(field.tag.open));
        Add(ClosingTag(from, field.GetName(), field.tag) +
                (m_number == 1 ? u": it is not read" : u": the caption keeps the value of the one before"),
            from);
      } else if (found == TagSearch::NoOpening && m_number == 1 && !field.isOptional &&
                 !meant.contains(field.GetName())) {
        Add(NameOf(field) + u" is missing, and no caption before it has one", body);
      }
    }
  }

  void CheckValue(const CaptionField& field, View text) {
    double number = 0;
    switch (field.value) {
      case CaptionValue::Text:
        m_escapes.Look(text, m_number, m_lines.LineAt(text.data()));
        return CheckLength(text);
      case CaptionValue::Name:
        return;
      case CaptionValue::Number:
        if (ReadNumber(field, text, number) && !IsCaptionPlace(Saturate<std::int32_t>(number))) {
          Add(NameOf(field) + u" is " + Quoted(text) + u", not one of 1 to 9: nothing is shown", text);
        }
        return;
      case CaptionValue::Size:
        if (ReadNumber(field, text, number)) CheckFontSize(std::trunc(number), text);
        return;
      case CaptionValue::Color:
        if (ReadNumber(field, text, number) && (number < 0 || number >= kLargestColor + 1)) {
          Add(NameOf(field) + u" lies outside 0 to 16777215: its higher bits are dropped", text);
        }
        return;
      case CaptionValue::Integer:
        if (ReadNumber(field, text, number)) CheckInteger(field, number, text);
        return;
      case CaptionValue::Length:
        if (ReadNumber(field, text, number)) CheckRange(field, number, WidestOf(field), text);
        return;
      case CaptionValue::Percent:
        if (ReadNumber(field, text, number)) CheckPercent(field, number, text);
        return;
      case CaptionValue::Switch:
        CheckSwitch(field, text);
        return;
    }
  }

  void CheckLength(View text) {
    if (text.size() <= drawing::kMaxTextUnits) return;
    XpString message;
    XpFormat(message, u"its text has %I64u characters, of which no more than %u are drawn",
             static_cast<std::uint64_t>(text.size()), static_cast<std::uint32_t>(drawing::kMaxTextUnits));
    Add(message, text);
  }

  /// Names tags outside of what is read, for someone meant them to do something. Gives the names of those
  /// that they are nearly like.
  std::set<View> CheckUnknownTags(View body, std::vector<View>& known) {
    std::set<View> meant;
    std::ranges::sort(known, {}, &View::data);
    const char16_t* at = body.data();
    for (const View element : known) {
      if (element.data() >= at)
        CheckGap(View(at, static_cast<std::size_t>(element.data() - at)), known, meant);
      at = std::max(at, element.data() + element.size());
    }
    CheckGap(View(at, static_cast<std::size_t>(body.data() + body.size() - at)), known, meant);
    return meant;
  }

  static bool IsRead(View name, const std::vector<View>& known) {
    return std::ranges::any_of(known, [&](View element) {
      return element.substr(1).starts_with(name) && element[name.size() + 1] == u'>';
    });
  }

  void CheckGap(View gap, const std::vector<View>& known, std::set<View>& meant) {
    for (View name; !(name = TakeTag(gap, false)).empty();) {
      if (std::ranges::find(m_names, name) != m_names.end()) {
        if (name.data()[name.size()] == u' ') {
          Add(u"<" + XpString(name) + u" > should be <" + XpString(name) + u">", name);
          meant.insert(name);
        } else if (IsRead(name, known)) {
          Add(u"<" + XpString(name) + u"> stands here once more: the first one counts", name);
        }
        continue;
      }
      XpString message = u"<" + XpString(name) + u"> is an unknown tag";
      if (const auto nearest = m_guesses++ < kMostGuesses ? NearestName(name, m_names) : std::nullopt) {
        message = message + u"; did you mean <" + XpString(*nearest) + u">?";
        meant.insert(*nearest);
      } else {
        message = message + u" and is not read";
      }
      Add(message, name);
    }
  }

  static XpString NameOf(const CaptionField& field) { return XpString(field.GetName()); }

  bool ReadNumber(const CaptionField& field, View text, double& number) {
    number = plist::ParseReal(text);
    if (plist::IsReal(text)) return true;
    XpString message;
    XpFormat(message, u"%s is %s, which is no number: it counts as %.6g", NameOf(field), Quoted(text),
             number);
    Add(message, text);
    return false;
  }

  void CheckFontSize(double size, View text) {
    XpString message;
    if (size == 0) {
      message = u"FontSize is 0: a default size is used";
    } else if (size < 0) {
      XpFormat(message, u"FontSize is %.6g: below 0 it gives the height of a line, not of the letters", size);
    } else if (size > kPictureHeight) {
      XpFormat(message, u"FontSize is %.6g: the letters are larger than the picture", size);
    } else {
      return;
    }
    Add(message, text);
  }

  void CheckInteger(const CaptionField& field, double number, View text) {
    using Limits = std::numeric_limits<std::int32_t>;
    XpString message;
    // A small number with a fraction is meant in seconds.
    constexpr double kFew = 10;
    if (std::trunc(number) != number && std::abs(number) < kFew) {
      XpFormat(message, u"%s is %.6g: it counts as %.6g (times are milliseconds)", NameOf(field), number,
               std::trunc(number));
      return Add(message, text);
    }
    if (number >= Limits::min() && number <= Limits::max()) return;
    XpFormat(message, u"%s is %.6g: it counts as %d, the limit", NameOf(field), number,
             number < 0 ? Limits::min() : Limits::max());
    Add(message, text);
  }

  static double WidestOf(const CaptionField& field) {
    return field.GetName() == u"Margin" ? kWidestCaptionMargin : drawing::kWidestOutline;
  }

  void CheckPercent(const CaptionField& field, double number, View text) {
    if (number <= 0 || number >= 1) return CheckRange(field, number, kWholePercent, text);
    XpString message;
    XpFormat(message, u"%s is %.6g percent, which is hardly seen; was %.6g meant?", NameOf(field), number,
             number * kWholePercent);
    Add(message, text);
  }

  void CheckRange(const CaptionField& field, double number, double largest, View text) {
    if (number >= 0 && number <= largest) return;
    XpString message;
    XpFormat(message, u"%s is %.6g: it counts as %.6g, the limit", NameOf(field), number,
             number < 0 ? 0.0 : largest);
    Add(message, text);
  }

  void CheckSwitch(const CaptionField& field, View text) {
    if (IsSwitchedOn(text) || plist::IsReal(text)) return;
    if (XpCompareNoCase(XpString(text), u"false") == 0) return;
    Add(NameOf(field) + u" is " + Quoted(text) + u", which is neither 1 nor 0: it counts as 0", text);
  }

  View m_rest;  // of the text
  LineCounter m_lines;
  TextReport& m_report;
  std::vector<View> m_names;  // of the tags in a caption
  std::size_t m_number = 0;   // of the caption, counted from 1
  std::size_t m_problems = 0;
  int m_guesses = 0;
  std::set<const CaptionField*> m_damagedFields;  // whose last value has a problem
  CaptionPlaces m_places;
  CaptionEscapes m_escapes;
};

}  // namespace

CaptionPlaces CheckCaptionText(const DocumentText& text, std::vector<Problem>& problems) {
  TextReport report(text, problems);
  return CaptionTextChecker(text, report).Run();
}

}  // namespace vrx::check
