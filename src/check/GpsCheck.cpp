#include "src/check/GpsCheck.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"
#include "foundation/text/XpFormat.h"
#include "gps/log/ReadGPSLog.h"
#include "gps/templates/KorvoTemplateStructure.h"
#include "gps/track/GpsTimeline.h"
#include "overlay/document/PainterKeys.h"

namespace vrx::check {
namespace {

using namespace overlay;

constexpr double kRoom = 1.5;             // a clip may be so much longer than its log
constexpr double kNoticedSeconds = 10.0;  // a log may begin or end so much inside its clip without a word

XpString Clock(double seconds) {
  const auto whole = std::max<std::int64_t>(Saturate<std::int64_t>(seconds), 0);
  XpString text;
  XpFormat(text, u"%I64d:%02I64d", whole / 60, whole % 60);
  return text;
}

/// A question after a time in seconds that lies far behind `most`, and would not as milliseconds.
XpString MeantSeconds(double seconds, double most) {
  constexpr double kFar = 100.0;
  constexpr double kMillisecond = 1e-3;
  XpString text;
  if (seconds < most * kFar || seconds * kMillisecond > most) return text;
  XpFormat(text, u"; it counts in seconds: was %.6g meant?", seconds * kMillisecond);
  return text;
}

class GpsChecker {
 public:
  GpsChecker(const PainterInfo& info, const std::vector<SlowInfoRecord>& sections, ProjectReport& report)
      : m_info(info), m_sections(sections), m_report(report) {
    m_timeline.unit = info.gpsUnitFromUser;
    m_timeline.drawTrimmedOutArea = info.templateInfo.drawTrimmedOutArea;
  }

  void Run() {
    CheckKeys();
    gps::PrepareTimeline(m_info.templateInfo.logData, m_timeline);
    for (std::size_t i = 0; i < m_timeline.clips.size(); ++i) {
      CheckClip(m_info.templateInfo.logData[i], m_timeline.clips[i]);
    }
    for (std::size_t i = 0; i < m_sections.size(); ++i) CheckSection(i);
    if (gps::kGpsUnitKilometers <= m_info.gpsUnitFromUser &&
        m_info.gpsUnitFromUser <= gps::kGpsUnitNauticalMiles) {
      return;
    }
    XpString message;
    XpFormat(message, u"is %d, which is no unit (0 km/h, 1 mph, 2 knots): speeds are shown as 0",
             m_info.gpsUnitFromUser);
    Warn(kGpsUnitFromUser.name, message);
  }

 private:
  void Warn(const XpString& key, const XpString& message) {
    m_report.problems.push_back({Severity::Warning, m_report.painterPath, XpString(), 0, key, message});
  }
  /// `because` is the key that would be missing.
  void WarnOfClip(const LogDataEntry& clip, const Key& because, const XpString& message) {
    XpString whole;
    XpFormat(whole, u"VideoID %d: %s", clip.videoId, message);
    Warn(kLogDataArray.name, whole);
    m_report.problems.back().line = clip.line;
    m_report.problems.back().because = because.name;
  }

  void CheckKeys() {
    XpString message;
    const std::int32_t layout = m_info.videoLayoutType;
    if (gps::MakeTemplateStructure(layout, 1, 1, 1, 1) == nullptr) {
      XpFormat(message,
               u"is %d, which is no layout: no GPS overlay is drawn (1 lies along the lower edge, 7 at the "
               u"sides)",
               layout);
      Warn(kVideoLayoutType.name, message);
    }
    if (m_info.stringTable.empty()) Warn(kStringManager.name, u"holds no texts: readouts have no labels");
    const TemplateInfo& look = m_info.templateInfo;
    if (m_report.totalSeconds > 0 && look.drawStartTime >= m_report.totalSeconds) {
      XpFormat(message, u"is %.6g s, after the movie's end: nothing is drawn%s", look.drawStartTime,
               MeantSeconds(look.drawStartTime, m_report.totalSeconds));
      Warn(XpString(kTemplateInfo.name) + u"/" + kDrawStartTime.name, message);
    } else if (look.drawEndTime <= look.drawStartTime) {
      Warn(XpString(kTemplateInfo.name) + u"/" + kDrawEndTime.name,
           u"does not lie after DrawStartTime: the clock of the GPS overlay does not run");
    }
    if (m_sections.empty()) {
      Warn(kSlowInfoData.name,
           u"has no record: it says when each clip is current, and without it only a clip of VideoID 0 is");
    }
  }

  void CheckClip(const LogDataEntry& clip, const gps::ClipTrack& track) {
    GpsClipRow row{.videoId = clip.videoId,
                   .log = clip.gpsLogFilePath,
                   .clipSeconds = gps::ClipSeconds(clip, m_timeline.drawTrimmedOutArea)};
    const auto isFix = [](const KVUGPSInfo& point) {
      return point.kind == GPSPointLogged && point.status != 0;
    };
    row.fixes = static_cast<std::uint64_t>(std::ranges::count_if(track.points, isFix));
    if (row.fixes > 0) {
      const auto first = std::ranges::find_if(track.points, isFix);
      const auto last = std::find_if(track.points.rbegin(), track.points.rend(), isFix);
      row.firstFixSeconds = static_cast<double>(first - track.points.begin());
      row.lastFixSeconds = static_cast<double>(track.points.rend() - last - 1);
    }
    for (const SlowInfoRecord& section : m_sections) {
      if (section.videoId == clip.videoId) row.shown.emplace_back(section.startTime, section.endTime);
    }
    JudgeClip(clip, row);
    m_report.gpsClips.push_back(row);
  }

  void JudgeClip(const LogDataEntry& clip, const GpsClipRow& row) {
    std::string log;
    if (clip.gpsLogFilePath.IsEmpty()) {
      WarnOfClip(clip, kGPSLogFilePath, u"GPSLogFilePath is empty: no position is shown");
    } else if (row.fixes == 0 && LoadGPSLogText(clip.gpsLogFilePath, log) != XpOk) {
      WarnOfClip(clip, kGPSLogFilePath,
                 u"no log can be read for " + clip.gpsLogFilePath + u": no position is shown");
    } else if (!(row.clipSeconds > 0)) {
      WarnOfClip(clip, m_timeline.drawTrimmedOutArea ? kDuration : kLogEndTime,
                 m_timeline.drawTrimmedOutArea ? u"has no Duration: nothing of its log is shown"
                                               : u"EndTime does not lie after StartTime");
    } else if (row.fixes == 0) {
      WarnOfClip(clip, kOriginalDateTime,
                 u"the log of " + clip.gpsLogFilePath +
                     u" has no position in the time of the clip: does OriginalDateTime fit? (vrx gps "
                     u"show prints the log's times)");
    } else if (row.firstFixSeconds > kNoticedSeconds) {
      WarnOfClip(clip, kOriginalDateTime,
                 u"its log begins late, at " + Clock(row.firstFixSeconds) + u" of the clip");
    } else if (row.lastFixSeconds + kNoticedSeconds < row.clipSeconds) {
      WarnOfClip(clip, kOriginalDateTime,
                 u"its log ends early, at " + Clock(row.lastFixSeconds) + u" of " + Clock(row.clipSeconds) +
                     MeantSeconds(row.clipSeconds, row.lastFixSeconds * kRoom));
    }
    if (row.shown.empty() && !m_sections.empty()) {
      WarnOfClip(clip, kVideoID, u"no record of SlowInfoData names it: it is never current");
    }
  }

  void CheckSection(std::size_t index) {
    const std::int32_t id = m_sections[index].videoId;
    if (std::ranges::find(m_info.templateInfo.logData, id, &LogDataEntry::videoId) !=
        m_info.templateInfo.logData.end()) {
      return;
    }
    XpString message;
    XpFormat(message, u"record %u: no log has VideoID %d: no position is shown then",
             static_cast<std::uint32_t>(index + 1), id);
    Warn(kSlowInfoData.name, message);
    m_report.problems.back().because = kVideoID.name;
  }

  const PainterInfo& m_info;
  const std::vector<SlowInfoRecord>& m_sections;
  ProjectReport& m_report;
  gps::GpsTimeline m_timeline;
};

}  // namespace

void CheckGps(const PainterInfo& info, const std::vector<SlowInfoRecord>& sections, ProjectReport& report) {
  GpsChecker(info, sections, report).Run();
}

}  // namespace vrx::check
