#include "src/check/PainterTextCheck.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

#include "content/plist/PlistNumbers.h"
#include "drawing/TextRenderer.h"
#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"
#include "overlay/document/CaptionItem.h"
#include "overlay/document/PainterKeys.h"
#include "overlay/document/SlowInfoRecord.h"
#include "src/check/TextReport.h"

namespace vrx::check {
namespace {

using namespace overlay;
using View = std::u16string_view;

constexpr std::size_t kMostQuoted = 24;  // code units of a text that is no number
constexpr double kPictureHeight = 1080;  // of the picture that font sizes are counted in
constexpr double kLargestColor = 0xFFFFFF;
constexpr double kWholePercent = 100;

/// Cut to a length that a line of a report has room for.
XpString Quoted(View text) {
  XpString quoted = u"\"" + XpString(text.substr(0, kMostQuoted));
  return quoted + (text.size() > kMostQuoted ? u"...\"" : u"\"");
}

class CaptionTextChecker {
 public:
  explicit CaptionTextChecker(TextReport& report) : m_report(report) {}

  void Run(View text) {
    CaptionBodies bodies(text);
    View body;
    TagSearch found = bodies.Next(body);
    for (; found == TagSearch::Found && m_number < kMaxCaptions; found = bodies.Next(body)) {
      ++m_number;
      CheckCaption(body);
    }
    if (found == TagSearch::NoClosing) {
      ++m_number;
      Add(u"</Caption> is missing: the caption is not read, nor what follows");
    } else if (m_number == 0) {
      m_report.Add(u"holds no <Caption>");
    } else if (found == TagSearch::Found) {
      XpString message;
      XpFormat(message, u"holds more than %u captions: the others are not read",
               static_cast<std::uint32_t>(kMaxCaptions));
      m_report.Add(message);
    }
  }

 private:
  void Add(const XpString& message) { m_report.Add(u"caption", m_number, message); }

  void CheckCaption(View body) {
    std::vector<View> known;  // the elements that are read, tags included
    for (const CaptionField& field : CaptionFields()) {
      View text;
      if (!Find(body, field, text)) continue;
      known.emplace_back(text.data() - field.tag.open.size(),
                         field.tag.open.size() + text.size() + field.tag.close.size());
      CheckValue(field, text);
    }
    CheckUnknownTags(body, known);
  }

  void CheckValue(const CaptionField& field, View text) {
    double number = 0;
    switch (field.value) {
      case CaptionValue::Text:
        return CheckLength(text);
      case CaptionValue::Name:
        return;
      case CaptionValue::Number:
        ReadNumber(field, text, number);
        return;
      case CaptionValue::Size:
        if (ReadNumber(field, text, number)) CheckFontSize(std::trunc(number));
        return;
      case CaptionValue::Color:
        if (ReadNumber(field, text, number) && (number < 0 || number >= kLargestColor + 1)) {
          Add(NameOf(field) + u" lies outside 0 to 16777215: its higher bits are dropped");
        }
        return;
      case CaptionValue::Integer:
        if (ReadNumber(field, text, number)) CheckInteger(field, number);
        return;
      case CaptionValue::Length:
        if (ReadNumber(field, text, number)) CheckRange(field, number, kPictureHeight / 2);
        return;
      case CaptionValue::Percent:
        if (ReadNumber(field, text, number)) CheckRange(field, number, kWholePercent);
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
    Add(message);
  }

  /// Names tags outside of what is read, for someone meant them to do something.
  void CheckUnknownTags(View body, std::vector<View>& known) {
    std::ranges::sort(known, {}, &View::data);
    const char16_t* at = body.data();
    for (const View element : known) {
      if (element.data() >= at) CheckGap(View(at, static_cast<std::size_t>(element.data() - at)));
      at = std::max(at, element.data() + element.size());
    }
    CheckGap(View(at, static_cast<std::size_t>(body.data() + body.size() - at)));
  }

  void CheckGap(View gap) {
    constexpr std::size_t kLongestName = 32;
    const auto isLetter = [](char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); };
    for (std::size_t open; (open = gap.find(u'<')) != gap.npos;) {
      gap.remove_prefix(open + 1);
      const auto end = static_cast<std::size_t>(std::ranges::find_if_not(gap, isLetter) - gap.begin());
      if (end == 0 || end > kLongestName || end == gap.size() || gap[end] != u'>') continue;
      const View name = gap.substr(0, end);
      if (std::ranges::find(CaptionFields(), name, &CaptionField::GetName) != CaptionFields().end()) continue;
      Add(u"<" + XpString(name) + u"> is an unknown tag and is not read");
    }
  }

  static XpString NameOf(const CaptionField& field) { return XpString(field.GetName()); }

  bool Find(View body, const CaptionField& field, View& text) {
    const TagSearch found = FindTagged(body, field.tag, text);
    if (found == TagSearch::NoClosing) {
      Add(XpString(field.tag.close) + u" is missing: the caption keeps the value of the one before");
    } else if (found == TagSearch::NoOpening && m_number == 1 && !field.isOptional) {
      Add(NameOf(field) + u" is missing, and no caption before it has one");
    }
    return found == TagSearch::Found;
  }

  bool ReadNumber(const CaptionField& field, View text, double& number) {
    number = plist::ParseReal(text);
    if (plist::IsReal(text)) return true;
    XpString message;
    XpFormat(message, u"%s is %s, which is no number: it counts as %.6g", NameOf(field), Quoted(text),
             number);
    Add(message);
    return false;
  }

  void CheckFontSize(double size) {
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
    Add(message);
  }

  void CheckInteger(const CaptionField& field, double number) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (number >= Limits::min() && number <= Limits::max()) return;
    XpString message;
    XpFormat(message, u"%s is %.6g: it counts as %d, the limit", NameOf(field), number,
             number < 0 ? Limits::min() : Limits::max());
    Add(message);
  }

  void CheckRange(const CaptionField& field, double number, double largest) {
    if (number >= 0 && number <= largest) return;
    XpString message;
    XpFormat(message, u"%s is %.6g: it counts as %.6g, the limit", NameOf(field), number,
             number < 0 ? 0.0 : largest);
    Add(message);
  }

  void CheckSwitch(const CaptionField& field, View text) {
    if (IsSwitchedOn(text) || plist::IsReal(text)) return;
    if (XpCompareNoCase(XpString(text), u"false") == 0) return;
    Add(NameOf(field) + u" is " + Quoted(text) + u", which is neither 1 nor 0: it counts as 0");
  }

  TextReport& m_report;
  std::size_t m_number = 0;  // of the caption, counted from 1
};

constexpr std::array<View, kSlowInfoFields> kFieldNames{
    u"the VideoID", u"the speed",           u"the start",
    u"the end",     u"the time of the log", u"the time with trimmed parts"};

/// Of one record, without its bar.
XpString JudgeRecord(std::string_view text) {
  SlowInfoRecord record;
  const std::size_t fields = ReadSlowInfoRecord(text, record);
  if (fields < kSlowInfoFields) {
    return XpString(kFieldNames[fields]) +
           u" cannot be read: it and the fields after it keep the values of the record before";
  }
  if (!text.empty()) return u"more than six fields: the others are not read";
  if (record.endTime < record.startTime) return u"it ends before it starts";
  if (record.speed == 0) return u"at a speed of 0 it takes no time";
  return {};
}

}  // namespace

void CheckCaptionText(const XpString& text, const XpString& file, std::vector<Problem>& problems) {
  TextReport report(file, kCaptionString.name, problems);
  CaptionTextChecker(report).Run(text.AsView());
}

void CheckSlowInfoText(const XpString& text, const XpString& file, std::vector<Problem>& problems) {
  TextReport report(file, kSlowInfoData.name, problems);
  const XpNarrowString narrow = text.ToNarrow();
  std::string_view rest = narrow.AsView();
  std::size_t number = 0;
  for (std::size_t bar; (bar = rest.find('|')) != rest.npos; rest.remove_prefix(bar + 1)) {
    if (++number > kMaxSpeedSections) {
      XpString message;
      XpFormat(message, u"holds more than %u records: the others are not read",
               static_cast<std::uint32_t>(kMaxSpeedSections));
      return report.Add(message);
    }
    const XpString problem = JudgeRecord(rest.substr(0, bar));
    if (!problem.IsEmpty()) report.Add(u"record", number, problem);
  }
  if (rest.empty()) return;
  report.Add(u"record", number + 1, u"does not end with a bar: it is not read");
}

}  // namespace vrx::check
