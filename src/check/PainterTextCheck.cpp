#include "src/check/PainterTextCheck.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/text/XpFormat.h"
#include "overlay/document/SlowInfoRecord.h"

namespace vrx::check {
namespace {

using namespace overlay;
using View = std::u16string_view;

constexpr std::array<View, kSlowInfoFields> kSlowFieldNames{
    u"the VideoID", u"the speed",           u"the start",
    u"the end",     u"the time of the log", u"the time with trimmed parts"};

/// Of one record, without its bar.
XpString JudgeRecord(std::string_view text) {
  SlowInfoRecord record;
  const std::size_t fields = ReadSlowInfoRecord(text, record);
  if (fields < kSlowInfoFields) {
    return XpString(kSlowFieldNames[fields]) +
           u" cannot be read: it and the fields after it keep the values of the record before";
  }
  if (!text.empty()) return u"more than six fields: the others are not read";
  if (record.endTime < record.startTime) return u"it ends before it starts";
  if (record.speed == 0) return u"at a speed of 0 it takes no time";
  return {};
}

}  // namespace

void CheckSlowInfoText(const DocumentText& text, std::vector<Problem>& problems) {
  TextReport report(text, problems);
  const XpNarrowString narrow = text.text.ToNarrow();
  std::string_view rest = narrow.AsView();
  std::size_t number = 0;
  std::uint64_t line = text.line;
  for (std::size_t bar; (bar = rest.find('|')) != rest.npos; rest.remove_prefix(bar + 1)) {
    if (++number > kMaxSpeedSections) {
      XpString message;
      XpFormat(message, u"holds more than %u records: the others are not read",
               static_cast<std::uint32_t>(kMaxSpeedSections));
      return report.Add(message, line);
    }
    const std::string_view record = rest.substr(0, bar);
    line += LeadingBreaks(record);
    const XpString problem = JudgeRecord(record);
    if (!problem.IsEmpty()) report.Add(u"record", number, problem, line);
    line += Breaks(record) - LeadingBreaks(record);
  }
  if (rest.empty()) return;
  report.Add(u"record", number + 1, u"does not end with a bar: it is not read", line + LeadingBreaks(rest));
}

}  // namespace vrx::check
