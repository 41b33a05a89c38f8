#include "src/check/OverlayCheck.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "drawing/BoxTextRenderer.h"
#include "foundation/file/XpPathQuery.h"
#include "foundation/number/Saturate.h"
#include "foundation/text/XpFormat.h"
#include "overlay/callback/TimeGenerators.h"
#include "overlay/document/PainterKeys.h"
#include "src/check/PainterDocumentCheck.h"
#include "src/check/PainterTextCheck.h"
#include "src/overlay/OverlayRanges.h"
#include "src/overlay/PainterTable.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"

namespace vrx::check {
namespace {

constexpr double kMillisecondsPerSecond = 1000.0;
constexpr double kCountableFrames = 1e15;  // a double still tells one from the next
constexpr std::size_t kMostCaptionProblems = 50;

/// Times that earlier captions already fill, as intervals that do not touch, by their start.
class CoveredTime {
 public:
  bool Covers(std::int64_t first, std::int64_t last) const {
    auto it = m_intervals.upper_bound(first);
    return it != m_intervals.begin() && (--it)->second >= last;
  }
  void Add(std::int64_t first, std::int64_t last) {
    auto it = m_intervals.upper_bound(first);
    if (it != m_intervals.begin() && std::prev(it)->second >= first - 1) --it;
    while (it != m_intervals.end() && it->first <= last + 1) {
      first = std::min(first, it->first);
      last = std::max(last, it->second);
      it = m_intervals.erase(it);
    }
    m_intervals[first] = last;
  }

 private:
  std::map<std::int64_t, std::int64_t> m_intervals;
};

/// Why a caption never shows, in the words of the report.
class CaptionJudge {
 public:
  CaptionJudge(const PainterInfo& info, const overlay::OverlayPlan& plan, const VRXTimeInfo& frame,
               double movieSeconds)
      : m_showsAlways(info.saveMovieMode), m_frame(frame), m_movieMs(movieSeconds * kMillisecondsPerSecond) {
    // Without a log no clip is ever named as the current one.
    if (!info.templateInfo.valid) return;
    for (const SlowInfoRecord& record : plan.speedSections) m_currentIds.insert(record.videoId);
  }

  XpString Judge(const CaptionItem& caption) {
    if (caption.text.IsEmpty()) return u"its text is empty";
    if (caption.endMs < caption.startMs) return u"it ends before it starts";
    if (caption.endMs < 0) return u"it ends before the movie begins";
    if (m_movieMs > 0.0 && caption.startMs >= m_movieMs) return u"it starts behind the movie's end";
    if (!m_showsAlways && !m_currentIds.contains(caption.videoId)) {
      XpString cause;
      cause.Format(u"its VideoID %d is that of no current clip (without SaveMovieMode it must be one, or 0)",
                   caption.videoId);
      return cause;
    }
    if (FallsBetweenFrames(caption)) return u"it falls between two frames";
    // One without a place hides those behind it all the same.
    CoveredTime& covered = m_covered[m_showsAlways ? 0 : caption.videoId];
    const bool isHidden = covered.Covers(caption.startMs, caption.endMs);
    covered.Add(caption.startMs, caption.endMs);
    if (caption.layoutType == 0) return u"its LayoutType is not one of 1 to 9";
    return isHidden ? XpString(u"earlier captions are shown all the time") : XpString();
  }

 private:
  bool FallsBetweenFrames(const CaptionItem& caption) const {
    const overlay::FrameLength length{m_frame.value, m_frame.scale};
    const auto timeOf = [&](std::uint64_t frame) { return VRXCaptionTimeGenerate().Generate(frame, length); };
    const double frames = std::max(caption.startMs, 0) / kMillisecondsPerSecond *
                          static_cast<double>(m_frame.scale) / static_cast<double>(m_frame.value);
    auto frame = static_cast<std::uint64_t>(Saturate<std::int64_t>(frames));
    // A frame's time is cut to whole milliseconds, so the one that begins with the caption may not show it.
    while (timeOf(frame) < caption.startMs && frames < kCountableFrames) ++frame;
    return timeOf(frame) > caption.endMs;
  }

  bool m_showsAlways;
  VRXTimeInfo m_frame;
  double m_movieMs;  // 0 when unknown
  std::set<std::int32_t> m_currentIds{0};
  std::map<std::int32_t, CoveredTime> m_covered;
};

class OverlayChecker {
 public:
  OverlayChecker(const XpString& file, ProjectReport& report) : m_file(file), m_report(report) {}

  void Run(const TKLXOutputXml& project) {
    m_report.painterPath = project::ResolvePath(m_file, project.painterEffect);
    const XpString& path = m_report.painterPath;
    if (path.IsEmpty()) return;
    if (!XpPathIsFile(path)) {
      Report(m_file, Severity::Warning, project::kPainterEffect.name,
             path + u" does not exist: the movie will have no overlays");
      return;
    }
    TKLXPainterInfoXml document;
    xml::XmlProblem problem;
    const XpResult result = document.Load(XpPath(path), &problem);
    if (document.GetDocument().GetCount() == 0) return ReportUnreadable(problem);
    CheckPainterDocument(document.GetDocument(), path, m_report.problems);
    if (result == XpErrFileNotFound) return;
    if (result != XpOk) {
      Report(path, Severity::Warning, DecidingKey(document.GetDocument()),
             u"is missing or cannot be read: the movie will have no overlays");
      return;
    }
    PainterInfo info;
    AdoptPainterInfo(document.GetPainterInfo(), info);
    CheckValid(document.GetPainterInfo(), info);
    if (info.captionInfo.valid) CheckCaptionText(info.captionInfo.captionString, path, m_report.problems);
    CheckSlowInfoText(info.slowInfoData, path, m_report.problems);
    CheckPainters(info);
    CheckClipTimes();
    if (m_report.videoSettings) AddRows(project, info);
  }

 private:
  void Report(const XpString& file, Severity severity, const XpString& key, const XpString& message) {
    m_report.problems.push_back({severity, file, XpString(), 0, key, message});
  }

  void ReportUnreadable(const xml::XmlProblem& problem) {
    XpString message = u"cannot be read as a painter document: the movie will have no overlays";
    if (!problem.message.empty()) message = message + u" (" + XpNarrowString(problem.message).ToWide() + u")";
    Report(m_report.painterPath, Severity::Warning, XpString(), message);
  }

  void CheckValid(const PainterInfo& document, const PainterInfo& adopted) {
    const XpString& path = m_report.painterPath;
    if (document.captionInfo.valid && !adopted.captionInfo.valid) {
      Report(path, Severity::Note, overlay::kCaptionInfo.name, u"is valid but holds no captions");
    }
    if (!document.captionInfo.valid && !document.captionInfo.captionString.IsEmpty()) {
      Report(path, Severity::Note, overlay::kCaptionInfo.name,
             u"holds captions, but Valid is not true: none shows");
    }
    if (document.templateInfo.valid && !adopted.templateInfo.valid) {
      Report(path, Severity::Note, overlay::kTemplateInfo.name,
             u"is valid but has no log, or a ScenarioType that switches it off");
    }
    if (document.tennisMetaInfo.valid && !adopted.tennisMetaInfo.valid) {
      Report(path, Severity::Note, overlay::kTennisMetaInfo.name, u"is valid but holds no data");
    }
  }

  /// Frames of such a record go through the callback, but nobody draws on them.
  void CheckPainters(const PainterInfo& info) {
    drawing::BoxTextRenderer unused;
    const PainterMakers makers = overlay::MakePainterTable(unused);
    const auto check = [&](bool isValid, std::int32_t painterType, const XpString& record) {
      if (!isValid || makers[static_cast<std::size_t>(painterType)]) return;
      Report(m_report.painterPath, Severity::Warning, record,
             u"is valid, but this version draws no such overlay");
    };
    check(info.templateInfo.valid, KVSPainterGPSOverlay, overlay::kTemplateInfo.name);
    check(info.tennisMetaInfo.valid, KVSPainterTennisMeta, overlay::kTennisMetaInfo.name);
  }

  /// Overlays are placed by the times that the document gives, and a whole clip gives none.
  void CheckClipTimes() {
    for (const ClipRow& clip : m_report.clips) {
      if (!clip.wholeSource || !(clip.track == project::kVideoTrack.name)) continue;
      m_report.problems.push_back({Severity::Warning, m_file, clip.track, clip.clip, project::kEndTime.name,
                                   u"is not set: overlays count this clip as empty and may be missing"});
    }
  }

  void AddRows(const TKLXOutputXml& project, const PainterInfo& info) {
    const VRXTimeInfo& frame = m_report.videoSettings->frameDuration;
    overlay::MovieTimes movie{.frame = frame};
    const timeline::TimelineContext context{.projectPath = m_file,
                                            .clock = timeline::FrameClock(frame),
                                            .makeBaseband = [&](const auto&) -> IVRXRawInputCallback* {
                                              movie.hasBaseband = true;
                                              return nullptr;
                                            }};
    VRXTimeline scratch;
    AddVideoTrack(project.videoTracks, context, scratch, movie.sums);
    const overlay::OverlayPlan plan = PlanOverlays(movie, info);
    for (const overlay::OverlayRange& range : plan.ranges) {
      const std::int64_t value = context.clock.GetFrameValue();
      m_report.overlays.push_back({range.start / value, range.end / value,
                                   context.clock.ToSeconds(range.start), context.clock.ToSeconds(range.end)});
    }
    if (info.captionInfo.valid && movie.IsUsable()) AddCaptions(info, plan, frame);
  }

  void AddCaptions(const PainterInfo& info, const overlay::OverlayPlan& plan, const VRXTimeInfo& frame) {
    if (plan.captions.empty()) {
      Report(m_report.painterPath, Severity::Warning, overlay::kCaptionString.name,
             u"holds no complete <Caption>");
    }
    CaptionJudge judge(info, plan, frame, m_report.totalSeconds);
    std::size_t hidden = 0;
    for (const CaptionItem& caption : plan.captions) {
      CaptionRow row{.number = static_cast<std::uint32_t>(m_report.captions.size() + 1),
                     .text = caption.text,
                     .startSeconds = caption.startMs / kMillisecondsPerSecond,
                     .endSeconds = caption.endMs / kMillisecondsPerSecond,
                     .layoutType = caption.layoutType,
                     .hiddenBecause = judge.Judge(caption)};
      if (!row.hiddenBecause.IsEmpty() && hidden++ < kMostCaptionProblems) {
        XpString message;
        message.Format(u"caption %u never shows: %s", row.number, row.hiddenBecause);
        Report(m_report.painterPath, Severity::Warning, overlay::kCaptionString.name, message);
      }
      m_report.captions.push_back(row);
    }
    if (hidden <= kMostCaptionProblems) return;
    XpString message;
    message.Format(u"%I64u more captions never show",
                   static_cast<std::uint64_t>(hidden - kMostCaptionProblems));
    Report(m_report.painterPath, Severity::Warning, overlay::kCaptionString.name, message);
  }

  const XpString& m_file;
  ProjectReport& m_report;
};

}  // namespace

void CheckOverlays(const XpString& file, const TKLXOutputXml& project, ProjectReport& report) {
  OverlayChecker(file, report).Run(project);
}

}  // namespace vrx::check
