#include "src/check/Checks.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "foundation/file/XpFileOperations.h"
#include "foundation/number/Saturate.h"
#include "foundation/text/XpFormat.h"
#include "overlay/callback/TimeGenerators.h"
#include "overlay/document/PainterKeys.h"
#include "src/check/GpsCheck.h"
#include "src/check/PainterDocumentCheck.h"
#include "src/check/PainterTextCheck.h"
#include "src/check/TennisCheck.h"
#include "src/overlayplan/LogPaths.h"
#include "src/overlayplan/OverlayRanges.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"

namespace vrx::check {
namespace {

using timeline::kMillisecondsPerSecond;

constexpr double kCountableFrames = 1e15;  // up to here doubles can be told apart
constexpr std::size_t kMostCaptionProblems = 50;

/// Times or frames that are taken, as intervals that do not touch, by their start. Both ends belong to them.
class Intervals {
 public:
  bool Cover(std::int64_t first, std::int64_t last) const {
    auto it = m_intervals.upper_bound(first);
    return it != m_intervals.begin() && (--it)->second >= last;
  }
  bool Meet(std::int64_t first, std::int64_t last) const {
    auto it = m_intervals.upper_bound(last);
    return it != m_intervals.begin() && (--it)->second >= first;
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
  CaptionJudge(const PainterInfo& info, const overlayplan::OverlayPlan& plan, const VRXTimeInfo& frame,
               double movieSeconds)
      : m_showsAlways(info.saveMovieMode),
        m_frame(frame),
        m_clock(frame),
        m_movieMs(movieSeconds * kMillisecondsPerSecond),
        m_movieFrames(FirstFrameAt(Saturate<std::int64_t>(m_movieMs))) {
    for (const overlayplan::OverlayRange& range : plan.ranges) {
      if (range.start > range.end) continue;
      m_drawnFrames.Add(m_clock.NumberAt(range.start), m_clock.NumberAt(range.end));
    }
    // Without a log there is never a current clip.
    if (!info.templateInfo.valid) return;
    for (const SlowInfoRecord& record : plan.speedSections) m_currentIds.insert(record.videoId);
  }

  XpString Judge(const CaptionItem& caption) {
    if (caption.text.IsEmpty()) return u"its text is empty";
    if (caption.endMs < caption.startMs) return u"it ends before it starts";
    if (caption.endMs < 0) return u"it ends before the movie begins";
    if (m_movieMs > 0.0 && caption.startMs >= m_movieMs) return u"it starts after the movie's end";
    if (!m_showsAlways && !m_currentIds.contains(caption.videoId)) {
      XpString cause;
      XpFormat(cause,
               u"its VideoID %d is that of no current clip (without SaveMovieMode it must be one, or 0)",
               caption.videoId);
      return cause;
    }
    if (FallsBetweenFrames(caption)) return u"it falls between two frames";
    // One without a place hides later ones all the same.
    Intervals& covered = m_covered[m_showsAlways ? 0 : caption.videoId];
    const bool isHidden = covered.Cover(caption.startMs, caption.endMs);
    covered.Add(caption.startMs, caption.endMs);
    if (caption.layoutType == 0) return u"its LayoutType is not one of 1 to 9";
    if (isHidden) return u"earlier captions are shown all the time";
    return Draws(caption, false) ? XpString() : XpString(kWithoutRange);
  }

  /// Whether frames that are drawn on show the caption: all of its frames, or any.
  bool Draws(const CaptionItem& caption, bool all) const {
    const std::int64_t first = FirstFrame(caption);
    // Where captions meet, the frame between them may show either; that is not reported.
    const std::int64_t last = std::max(first, std::min(FirstFrameBehind(caption.endMs), m_movieFrames) - 2);
    return all ? m_drawnFrames.Cover(first, last) : m_drawnFrames.Meet(first, last);
  }

 private:
  static constexpr char16_t kWithoutRange[] =
      u"no frame that is drawn on shows it (are the captions listed in the order of their times?)";

  std::int64_t TimeOf(std::int64_t frame) const {
    return VRXCaptionTimeGenerate().Generate(static_cast<std::uint64_t>(frame), m_frame);
  }
  /// The first whose time, which is cut to whole milliseconds, does not lie before `ms`.
  std::int64_t FirstFrameAt(std::int64_t ms) const {
    const double frames = m_clock.FramesIn(static_cast<double>(std::max<std::int64_t>(ms, 0)));
    auto frame = Saturate<std::int64_t>(frames);
    while (TimeOf(frame) < ms && frames < kCountableFrames) ++frame;
    return frame;
  }
  std::int64_t FirstFrame(const CaptionItem& caption) const { return FirstFrameAt(caption.startMs); }
  std::int64_t FirstFrameBehind(std::int64_t ms) const { return FirstFrameAt(ms + 1); }
  bool FallsBetweenFrames(const CaptionItem& caption) const {
    return TimeOf(FirstFrame(caption)) > caption.endMs;
  }

  bool m_showsAlways;
  VRXTimeInfo m_frame;
  timeline::FrameClock m_clock;
  double m_movieMs;  // 0 when unknown
  std::int64_t m_movieFrames;
  Intervals m_drawnFrames;
  std::set<std::int32_t> m_currentIds{0};
  std::map<std::int32_t, Intervals> m_covered;
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
    if (info.tennisMetaInfo.valid) CheckTennis(info, path, m_report.problems);
    if (info.templateInfo.valid) {
      std::vector<SlowInfoRecord> sections;
      ParseSlowInfoData(info.slowInfoData, sections);
      overlayplan::ResolveLogPaths(path, info);
      CheckGps(info, sections, m_report);
    }
    CheckClipTimes();
    CheckRoom(info);
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

  /// Overlays are placed by the times in the document, and those of a clip that is used whole do not tell its
  /// length.
  void CheckClipTimes() {
    for (const ClipRow& clip : m_report.clips) {
      if (!clip.wholeSource || !(clip.track == project::kVideoTrack.name)) continue;
      m_report.problems.push_back({Severity::Warning, m_file, clip.track, clip.clip, project::kEndTime.name,
                                   u"does not say where the clip ends: overlays count it as empty and may be "
                                   u"missing"});
    }
  }

  /// Captions keep a margin on each side.
  void CheckRoom(const PainterInfo& info) {
    constexpr std::int32_t kMargins = 20;  // pixels, both sides together
    if (!info.captionInfo.valid || !m_report.videoSettings) return;
    const VRXVideoOutputSetting& video = *m_report.videoSettings;
    const XpString& path = m_report.painterPath;
    if (video.width <= kMargins || video.height <= kMargins) {
      return Report(path, Severity::Warning, overlay::kCaptionInfo.name,
                    u"captions do not show in a movie of 20 pixels or less on a side");
    }
    // Captions are scaled from a picture of this size, in each direction on its own.
    constexpr double kCanvasShape = 1920.0 / 1080.0;
    constexpr double kNoticed = 0.1;
    const double squeeze =
        static_cast<double>(video.width - kMargins) / (video.height - kMargins) / kCanvasShape;
    if (std::abs(squeeze - 1.0) < kNoticed) return;
    XpString message;
    XpFormat(message, u"the letters are %.2f times as wide as usual, since the movie is not 16 by 9",
             squeeze);
    Report(path, Severity::Note, overlay::kCaptionInfo.name, message);
  }

  void AddRows(const TKLXOutputXml& project, const PainterInfo& info) {
    const VRXTimeInfo& frame = m_report.videoSettings->frameDuration;
    overlayplan::MovieTimes movie{.frame = frame};
    const timeline::TimelineContext context{.projectPath = m_file,
                                            .clock = timeline::FrameClock(frame),
                                            .makeBaseband = [&](const auto&) -> IVRXRawInputCallback* {
                                              movie.hasBaseband = true;
                                              return nullptr;
                                            }};
    VRXTimeline scratch;
    AddVideoTrack(project.videoTracks, context, scratch, movie.sums);
    const overlayplan::OverlayPlan plan = PlanOverlays(movie, info);
    for (const overlayplan::OverlayRange& range : plan.ranges) {
      m_report.overlays.push_back({context.clock.NumberAt(range.start), context.clock.NumberAt(range.end),
                                   context.clock.ToSeconds(range.start), context.clock.ToSeconds(range.end)});
    }
    if (info.captionInfo.valid && movie.IsUsable()) AddCaptions(info, plan, frame);
  }

  void AddCaptions(const PainterInfo& info, const overlayplan::OverlayPlan& plan, const VRXTimeInfo& frame) {
    CaptionJudge judge(info, plan, frame, m_report.totalSeconds);
    std::size_t hidden = 0;
    for (const CaptionItem& caption : plan.captions) {
      CaptionRow row{.number = static_cast<std::uint32_t>(m_report.captions.size() + 1),
                     .text = caption.text,
                     .startSeconds = caption.startMs / kMillisecondsPerSecond,
                     .endSeconds = caption.endMs / kMillisecondsPerSecond,
                     .layoutType = caption.layoutType,
                     .hiddenBecause = judge.Judge(caption)};
      XpString message;
      if (!row.hiddenBecause.IsEmpty()) {
        XpFormat(message, u"caption %u never shows: %s", row.number, row.hiddenBecause);
      } else if (!judge.Draws(caption, true)) {
        XpFormat(message,
                 u"caption %u shows only in part: another in the list cuts the drawn frames short "
                 u"(captions belong in the order of their times, none inside another)",
                 row.number);
      }
      m_report.captions.push_back(row);
      if (!message.IsEmpty() && hidden++ < kMostCaptionProblems) {
        Report(m_report.painterPath, Severity::Warning, overlay::kCaptionString.name, message);
      }
    }
    if (hidden <= kMostCaptionProblems) return;
    XpString message;
    XpFormat(message, u"%I64u more captions never show, or only in part",
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
