#include "src/check/CaptionShowCheck.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

#include "foundation/number/Saturate.h"
#include "foundation/text/XpFormat.h"
#include "overlay/callback/TimeGenerators.h"
#include "overlay/document/PainterKeys.h"
#include "src/timeline/FrameClock.h"

namespace vrx::check {
namespace {

using timeline::kMillisecondsPerSecond;

constexpr double kCountableFrames = 1e15;  // up to here a double holds every whole number
constexpr std::size_t kMostCaptionProblems = 50;

/// Times or frames that are taken, as intervals that do not touch, by their start. Both ends belong to them.
class Intervals {
 public:
  bool Cover(std::int64_t first, std::int64_t last) const {
    auto it = m_intervals.upper_bound(first);
    return it != m_intervals.begin() && (--it)->second >= last;
  }
  bool Meet(std::int64_t first, std::int64_t last) const { return FindMeeting(first, last).has_value(); }
  /// The last interval that shares a point with these.
  std::optional<std::pair<std::int64_t, std::int64_t>> FindMeeting(std::int64_t first,
                                                                   std::int64_t last) const {
    auto it = m_intervals.upper_bound(last);
    if (it == m_intervals.begin() || (--it)->second < first) return std::nullopt;
    return *it;
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

/// Why a caption does not show as it was meant to.
struct Verdict {
  enum Kind {
    Shows,
    Damaged,  // what the caption says is wrong
    NotItsClip,
    OtherTime,  // it lies outside of the movie, or between frames
    Covered,    // by earlier ones, all the time
    Overlapped,
    NotDrawn,  // no frame that it is on has overlays
    Cut,       // some have none
    Kinds,
  };
  Kind kind = Shows;
  XpString cause;  // in the words of the report; empty for Shows and Cut

  bool IsHidden() const { return kind != Shows && kind != Overlapped && kind != Cut; }
};

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

  Verdict Judge(const CaptionItem& caption) {
    if (caption.text.IsEmpty()) return {Verdict::Damaged, u"its text is empty"};
    if (caption.endMs < caption.startMs) return {Verdict::Damaged, u"it ends before it starts"};
    if (caption.endMs < 0) return {Verdict::OtherTime, u"it ends before the movie begins"};
    if (m_movieMs > 0.0 && caption.startMs >= m_movieMs) {
      return {Verdict::OtherTime, u"it starts after the movie's end"};
    }
    if (!m_showsAlways && !m_currentIds.contains(caption.videoId)) {
      XpString cause;
      XpFormat(cause,
               u"its VideoID %d is that of no current clip (without SaveMovieMode it must be one, or 0)",
               caption.videoId);
      return {Verdict::NotItsClip, cause};
    }
    if (FallsBetweenFrames(caption)) return {Verdict::OtherTime, u"it falls between two frames"};
    return JudgeAmongOthers(caption);
  }

 private:
  static constexpr char16_t kWithoutRange[] =
      u"no frame that is drawn on shows it (are the captions listed in the order of their times?)";

  Verdict JudgeAmongOthers(const CaptionItem& caption) {
    // One without a place hides later ones all the same.
    Intervals& covered = m_covered[m_showsAlways ? 0 : caption.videoId];
    const bool isHidden = covered.Cover(caption.startMs, caption.endMs);
    const auto meeting = covered.FindMeeting(caption.startMs, caption.endMs);
    covered.Add(caption.startMs, caption.endMs);
    if (caption.layoutType == 0) return {Verdict::Damaged, u"its LayoutType is not one of 1 to 9"};
    if (isHidden) return {Verdict::Covered, u"earlier captions are shown all the time"};
    if (!Draws(caption, false)) return {Verdict::NotDrawn, kWithoutRange};
    if (meeting) {
      const std::int64_t first = std::max<std::int64_t>(meeting->first, caption.startMs);
      const std::int64_t last = std::min<std::int64_t>(meeting->second, caption.endMs);
      if (FirstFrameAt(last) - FirstFrameAt(first) >= kNoticedFrames) return Overlap(first, last);
    }
    return {Draws(caption, true) ? Verdict::Shows : Verdict::Cut, XpString()};
  }

  static Verdict Overlap(std::int64_t first, std::int64_t last) {
    XpString cause;
    XpFormat(cause, u"from %.3f s to %.3f s an earlier one is shown in its place",
             static_cast<double>(first) / kMillisecondsPerSecond,
             static_cast<double>(last) / kMillisecondsPerSecond);
    return {Verdict::Overlapped, cause};
  }

  /// Whether frames that are drawn on show the caption: all of its frames, or any.
  bool Draws(const CaptionItem& caption, bool all) const {
    const std::int64_t first = FirstFrame(caption);
    // Where captions meet, the frame between them may show either; that is not reported.
    const std::int64_t last = std::max(first, std::min(FirstFrameBehind(caption.endMs), m_movieFrames) - 2);
    return all ? m_drawnFrames.Cover(first, last) : m_drawnFrames.Meet(first, last);
  }

  static constexpr std::int64_t kNoticedFrames = 2;  // captions may meet, and gaps of two frames close

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

class ShowChecker {
 public:
  ShowChecker(const CaptionShow& show, ProjectReport& report)
      : m_show(show), m_report(report), m_judge(show.info, show.plan, show.frame, report.totalSeconds) {}

  void Run() {
    for (const CaptionItem& caption : m_show.plan.captions) {
      const Verdict verdict = m_judge.Judge(caption);
      m_report.captions.push_back({.number = static_cast<std::uint32_t>(m_report.captions.size() + 1),
                                   .text = caption.text,
                                   .startSeconds = caption.startMs / kMillisecondsPerSecond,
                                   .endSeconds = caption.endMs / kMillisecondsPerSecond,
                                   .layoutType = caption.layoutType,
                                   .hiddenBecause = verdict.IsHidden() ? verdict.cause : XpString()});
      if (m_kinds[verdict.kind]++ == 0) m_firstOfKind[verdict.kind] = m_verdicts.size();
      m_verdicts.push_back(verdict);
    }
    if (CheckSeconds()) return;
    for (std::size_t i = 0; i < m_verdicts.size(); ++i) Report(i);
    if (m_count <= kMostCaptionProblems) return;
    XpString message;
    XpFormat(message, u"%I64u more captions never show, or only in part",
             static_cast<std::uint64_t>(m_count - kMostCaptionProblems));
    Add(message, 0);
  }

 private:
  void Add(const XpString& message, std::size_t number) {
    m_report.problems.push_back({.severity = Severity::Warning,
                                 .file = m_report.painterPath,
                                 .key = overlay::kCaptionString.name,
                                 .message = message,
                                 .line = m_show.places.LineOf(number)});
  }

  /// Times that no movie would have, but which fit as seconds.
  bool CheckSeconds() {
    constexpr double kShortMovie = 5.0;  // a caption may well show in the first moment of such a one
    std::int32_t last = 0;
    for (const CaptionItem& caption : m_show.plan.captions) last = std::max(last, caption.endMs);
    if (m_report.totalSeconds < kShortMovie || last <= 0 || last > m_report.totalSeconds) return false;
    XpString message;
    XpFormat(
        message,
        u"all captions end in the first %.3f s: LeftPos and RightPos are milliseconds; were seconds meant?",
        last / kMillisecondsPerSecond);
    Add(message, 1);
    return true;
  }

  void Report(std::size_t index) {
    const Verdict& verdict = m_verdicts[index];
    const std::size_t number = index + 1;
    if (verdict.kind == Verdict::Shows || m_show.places.damaged.contains(number)) return;
    const bool isOfPlace = verdict.kind != Verdict::Damaged && verdict.kind != Verdict::NotItsClip;
    if (isOfPlace && !m_show.areClipsPlaced) return;
    // One out of order cuts others short, and is hidden itself: that says it all.
    if (verdict.kind == Verdict::Cut && m_kinds[Verdict::Covered] + m_kinds[Verdict::NotDrawn] > 0) return;
    XpString message;
    if (verdict.kind == Verdict::Cut) {
      XpFormat(message,
               u"caption %u shows only in part: another in the list cuts the drawn frames short "
               u"(captions belong in the order of their times, none inside another)",
               static_cast<std::uint32_t>(number));
    } else {
      XpFormat(message,
               verdict.IsHidden() ? u"caption %u never shows: %s" : u"caption %u shows only in part: %s",
               static_cast<std::uint32_t>(number), verdict.cause);
    }
    // These have one cause for all captions.
    if (verdict.kind == Verdict::NotDrawn || verdict.kind == Verdict::NotItsClip) {
      if (m_firstOfKind[verdict.kind] != index) return;
      const auto alike = static_cast<std::uint32_t>(m_kinds[verdict.kind] - 1);
      if (alike > 0) XpAppendFormat(message, u"; more captions like it: %u", alike);
    }
    if (m_count++ >= kMostCaptionProblems) return;
    Add(message, number);
    if (verdict.kind == Verdict::NotItsClip) {
      m_report.problems.back().because =
          XpString(overlay::kGeneralInfo.name) + u"/" + overlay::kSaveMovieMode.name;
    }
  }

  const CaptionShow& m_show;
  ProjectReport& m_report;
  CaptionJudge m_judge;
  std::vector<Verdict> m_verdicts;
  std::array<std::size_t, Verdict::Kinds> m_kinds{};  // captions of each
  std::array<std::size_t, Verdict::Kinds> m_firstOfKind{};
  std::size_t m_count = 0;  // of problems
};

}  // namespace

void CheckCaptionsShow(const CaptionShow& show, ProjectReport& report) { ShowChecker(show, report).Run(); }

}  // namespace vrx::check
