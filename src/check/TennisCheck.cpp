#include "src/check/TennisCheck.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/text/XpFormat.h"
#include "overlay/document/PainterKeys.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutLight.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutNormal.h"
#include "overlay/tennis/TennisMetaData.h"

namespace vrx::check {
namespace {

using namespace overlay;

constexpr std::array<std::u16string_view, kTennisFields> kTennisFieldNames{
    u"the time",           u"the swing type",    u"the impact zone",  u"the third counter",
    u"the second counter", u"the first counter", u"the clip's start", u"the clip's anchor",
    u"the clip's end",     u"the left child",    u"the right child",  u"the swap of sides"};
constexpr std::int32_t kUnits = 3;

class ShotsChecker {
 public:
  ShotsChecker(const DocumentText& text, TextReport& report) : m_text(text), m_report(report) {}

  void Run() {
    const XpNarrowString narrow = m_text.text.ToNarrow();
    m_line = m_text.line;
    std::string_view rest = narrow.AsView();
    std::size_t number = 0;
    for (std::size_t bar; (bar = rest.find('|')) != rest.npos; rest.remove_prefix(bar + 1)) {
      if (m_shots.size() == kMaxTennisShots) {
        XpString message;
        XpFormat(message, u"holds more than %u shots: the others are not read",
                 static_cast<std::uint32_t>(kMaxTennisShots));
        m_report.Add(message, m_line);
        return CheckList();
      }
      const std::string_view record = rest.substr(0, bar);
      m_line += LeadingBreaks(record);
      CheckRecord(record, ++number);
      m_line += Breaks(record) - LeadingBreaks(record);
    }
    if (!rest.empty()) {
      m_report.Add(u"record", number + 1, u"does not end with a bar: it is not read",
                   m_line + LeadingBreaks(rest));
    }
    CheckList();
  }

 private:
  void CheckRecord(std::string_view text, std::size_t number) {
    TennisShot shot;
    const std::size_t fields = ReadTennisRecord(text, shot);
    if (fields < kTennisFields) {
      m_report.Add(u"record", number,
                   XpString(kTennisFieldNames[fields]) + u" cannot be read: the record is left out", m_line);
      return;
    }
    if (!text.empty())
      m_report.Add(u"record", number, u"more than twelve fields: the others are not read", m_line);
    XpString message;
    if (FindStroke(shot.swingType) == nullptr) {
      XpFormat(message, u"%d is no swing type: the shot has no name", shot.swingType);
      m_report.Add(u"record", number, message, m_line);
    }
    if (shot.impactZone < 0 || shot.impactZone >= kImpactZones) {
      XpFormat(message, u"the impact zone %d is not one of 0 to %d: no mark is shown", shot.impactZone,
               kImpactZones - 1);
      m_report.Add(u"record", number, message, m_line);
    }
    m_shots.push_back(shot);
    m_numbers.push_back(number);
    m_lines.push_back(m_line);
  }

  void CheckList() {
    if (m_shots.empty()) return m_report.Add(u"holds no shot that can be read: nothing is drawn");
    if (const auto unsorted = FindUnsortedShot(m_shots)) {
      return m_report.Add(u"record", m_numbers[*unsorted],
                          u"its time lies before that of the shot before it: shots belong in the order of "
                          u"their times, and the search tree is not used",
                          m_lines[*unsorted]);
    }
    if (const auto node = FindWrongTreeNode(m_shots)) {
      m_report.Add(u"record", m_numbers[*node],
                   u"its children do not make a search tree over all shots: the tree is not used",
                   m_lines[*node]);
    }
  }

  const DocumentText& m_text;
  TextReport& m_report;
  std::uint64_t m_line = 0;  // of the document, of the current record
  std::vector<TennisShot> m_shots;
  std::vector<std::size_t> m_numbers;  // of the records that the shots come from
  std::vector<std::uint64_t> m_lines;  // of the document, likewise
};

}  // namespace

void CheckTennis(const PainterInfo& info, const DocumentText& shots, std::vector<Problem>& problems) {
  const auto warn = [&](const XpString& key, const XpString& message) {
    problems.push_back({Severity::Warning, shots.file, XpString(), 0, key, message});
  };
  {
    TextReport report(shots, problems);
    ShotsChecker(shots, report).Run();
  }
  XpString message;
  const std::int32_t layout = info.tennisMetaInfo.layoutType;
  if (layout != KVSTennisMetaPainterLayoutNormal::kLayoutType &&
      layout != KVSTennisMetaPainterLayoutLight::kLayoutType) {
    XpFormat(message, u"is %d, which is no layout: nothing is drawn (1 is the full panel, 2 the short one)",
             layout);
    warn(kTennisMetaLayoutType.name, message);
  }
  const auto isEmpty = [](const auto& entry) { return entry.second.IsEmpty(); };
  if (std::ranges::all_of(info.stringTable, isEmpty)) {
    warn(kStringManager.name, u"holds no texts: strokes, counters and units have no names");
  }
  if (info.gpsUnitFromUser < 0 || info.gpsUnitFromUser >= kUnits) {
    XpFormat(message, u"is %d, which is no unit of speed: speeds are shown in km/h without a unit",
             info.gpsUnitFromUser);
    warn(kGpsUnitFromUser.name, message);
  }
  if (info.templateInfo.drawEndTime <= info.templateInfo.drawStartTime) {
    warn(XpString(kTemplateInfo.name) + u"/" + kDrawEndTime.name,
         u"does not lie after DrawStartTime: the clock of the tennis overlay does not run");
  }
}

}  // namespace vrx::check
