#include "src/check/Checks.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "drawing/pango/PangoTextRenderer.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/text/XpFormat.h"
#include "overlay/caption/CaptionLayout.h"
#include "overlay/document/PainterKeys.h"
#include "src/check/CaptionLookCheck.h"
#include "src/check/DocumentParts.h"
#include "src/check/GpsCheck.h"
#include "src/check/PainterDocumentCheck.h"
#include "src/check/PainterTextCheck.h"
#include "src/check/TennisCheck.h"
#include "src/overlayplan/LogPaths.h"
#include "src/overlayplan/OverlayRanges.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"
#include "vrx/VRXLimits.h"

namespace vrx::check {
namespace {

constexpr std::int32_t kMargins = 2 * overlay::kCaptionFrameMargin;

class OverlayChecker {
 public:
  OverlayChecker(const XpString& file, ProjectReport& report) : m_file(file), m_report(report) {}

  void Run(const TKLXOutputXml& project) {
    m_report.painterPath = project::ResolvePath(m_file, project.painterEffect);
    const XpString& path = m_report.painterPath;
    if (path.IsEmpty()) return;
    if (!XpPathIsFile(path)) {
      Report(m_file, Severity::Warning, project::kPainterEffect,
             path + u" does not exist: the movie will have no overlays");
      return;
    }
    plist::Findings findings;
    const XpResult result = m_document.Load(XpPath(path), &findings);
    if (m_document.GetDocument().GetCount() == 0) return ReportUnreadable(findings.problem);
    for (const plist::Remark& remark : findings.remarks) m_report.problems.push_back(RemarkOf(path, remark));
    CheckPainterDocument(m_document.GetDocument(), path, m_report.problems);
    if (result == XpOk) {
      CheckInfo(project);
    } else if (result != XpErrFileNotFound) {
      Report(path, Severity::Warning, DecidingKey(m_document.GetDocument()),
             u"is missing or cannot be read: the movie will have no overlays");
    }
    DocumentLines(m_document.GetDocument(), PainterParts()).Fill(path, m_report.problems);
  }

 private:
  void Report(const XpString& file, Severity severity, const XpString& key, const XpString& message) {
    m_report.problems.push_back({severity, file, XpString(), 0, key, message});
  }
  void Report(const XpString& file, Severity severity, const plist::Key& key, const XpString& message) {
    Report(file, severity, XpString(key.name), message);
  }

  void CheckInfo(const TKLXOutputXml& project) {
    const XpString& path = m_report.painterPath;
    PainterInfo info;
    AdoptPainterInfo(m_document.GetPainterInfo(), info);
    CheckValid(m_document.GetPainterInfo(), info);
    const DocumentText captions = TextOf(overlay::kCaptionInfo, overlay::kCaptionString);
    CaptionPlaces places;
    if (info.captionInfo.valid) places = CheckCaptionText(captions, m_report.problems);
    CheckSlowInfoText(TextOf(overlay::kGeneralInfo, overlay::kSlowInfoData), m_report.problems);
    if (info.tennisMetaInfo.valid) {
      CheckTennis(info, TextOf(overlay::kTennisMetaInfo, overlay::kTennisMetaData), m_report.problems);
    }
    if (info.templateInfo.valid) {
      std::vector<SlowInfoRecord> sections;
      ParseSlowInfoData(info.slowInfoData, sections);
      overlayplan::ResolveLogPaths(path, info);
      CheckGps(info, sections, m_report);
    }
    CheckClipTimes();
    if (!m_report.videoSettings) return;
    AddRows(project, info, places);
    CheckRoom(info);
  }

  DocumentText TextOf(const plist::Key& part, const plist::Key& key) const {
    DocumentText text{.file = m_report.painterPath, .key = key.name};
    const XpIniElement* root = Find(&m_document.GetDocument(), overlay::kPainterInfo);
    if (const XpIniElement* element = Find(Find(root, part), key)) {
      element->GetString(text.text);
      text.line = element->GetLines().text;
    }
    return text;
  }

  void ReportUnreadable(const xml::XmlProblem& problem) {
    XpString message = u"cannot be read as a painter document: the movie will have no overlays";
    if (!problem.message.empty()) message = message + u" (" + XpNarrowString(problem.message).ToWide() + u")";
    Report(m_report.painterPath, Severity::Warning, XpString(), message);
    m_report.problems.back().line = problem.line;
  }

  void CheckValid(const PainterInfo& document, const PainterInfo& adopted) {
    const auto note = [this](const plist::Key& part, const plist::Key& key, const char16_t* message) {
      Report(m_report.painterPath, Severity::Note, XpString(part.name) + u"/" + key.name, message);
    };
    using namespace overlay;
    if (document.captionInfo.valid && !adopted.captionInfo.valid) {
      note(kCaptionInfo, kCaptionString, u"holds no captions");
    }
    if (!document.captionInfo.valid && !document.captionInfo.captionString.IsEmpty()) {
      note(kCaptionInfo, kValid, u"is not true: none of the captions shows");
    }
    if (document.templateInfo.valid && !adopted.templateInfo.valid) {
      const bool hasLogs = !document.templateInfo.logData.empty();
      note(kTemplateInfo, hasLogs ? kScenarioType : kLogDataArray,
           hasLogs ? u"switches the GPS overlay off" : u"holds no log: there is no GPS overlay");
    }
    if (document.tennisMetaInfo.valid && !adopted.tennisMetaInfo.valid) {
      note(kTennisMetaInfo, kTennisMetaData, u"holds no shots: there is no tennis overlay");
    }
  }

  /// Overlays are placed by the times in the document, and those of a clip that is used whole do not tell its
  /// length.
  void CheckClipTimes() {
    // Without a frame to count in no time means anything, which is said elsewhere.
    if (!HasFrame()) return;
    std::set<std::uint32_t> said;  // clips whose end is in doubt already
    for (const Problem& problem : m_report.problems) {
      const bool isEnd = problem.track == project::kVideoTrack.name && problem.key == project::kEndTime.name;
      if (isEnd) said.insert(problem.clip);
    }
    for (const ClipRow& clip : m_report.clips) {
      if (!clip.wholeSource || !(clip.track == project::kVideoTrack.name)) continue;
      m_areClipsPlaced = false;
      if (said.contains(clip.clip)) continue;
      m_report.problems.push_back({Severity::Warning, m_file, clip.track, clip.clip, project::kEndTime.name,
                                   u"does not say where the clip ends: overlays count it as empty and may be "
                                   u"missing"});
    }
  }

  /// Captions keep a margin on each side.
  void CheckRoom(const PainterInfo& info) {
    const VRXVideoOutputSetting& video = *m_report.videoSettings;
    const bool isUsable = limits::IsUsableSide(video.width) && limits::IsUsableSide(video.height);
    if (!info.captionInfo.valid || !isUsable) return;
    const XpString& path = m_report.painterPath;
    if (!HasRoom()) {
      return Report(path, Severity::Warning, overlay::kCaptionInfo,
                    u"captions do not show in a movie of 20 pixels or less on a side");
    }
    // Captions are scaled from a picture of this size, in each direction on its own.
    constexpr double kCanvasShape = 1920.0 / 1080.0;
    constexpr double kNoticed = 0.1;
    const double squeeze =
        static_cast<double>(video.width - kMargins) / (video.height - kMargins) / kCanvasShape;
    if (info.captionInfo.keepShape || std::abs(squeeze - 1.0) < kNoticed || !HasCaptions()) return;
    XpString message;
    XpFormat(message,
             u"the letters are %.2f times as wide as usual, since the movie is not 16 by 9 (KeepShape "
             u"keeps their shape)",
             squeeze);
    Report(path, Severity::Warning, overlay::kCaptionInfo, message);
  }

  void AddRows(const TKLXOutputXml& project, const PainterInfo& info, const CaptionPlaces& places) {
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
    if (!info.captionInfo.valid || !HasFrame() || !movie.IsUsable()) return;
    const bool hasMovie = m_report.totalFrames > 0;
    const CaptionShow show{info, plan, frame, places, m_areClipsPlaced && hasMovie};
    CheckCaptionsShow(show, m_report);
    if (!HasRoom() || !HasCaptions()) return;
    const auto fonts = drawing::FontCheck::OfSystem();
    drawing::PangoTextRenderer renderer;
    CheckCaptionsLook(show, *fonts, renderer, m_report);
  }

  /// Captions that show.
  bool HasCaptions() const {
    const auto shows = [](const CaptionRow& row) { return row.hiddenBecause.IsEmpty(); };
    return std::ranges::any_of(m_report.captions, shows);
  }

  bool HasFrame() const {
    if (!m_report.videoSettings) return false;
    const VRXTimeInfo& frame = m_report.videoSettings->frameDuration;
    return timeline::FrameClock(frame).IsUsable() && limits::IsUsableFrameLength(frame.value, frame.scale);
  }

  /// For captions.
  bool HasRoom() const {
    return m_report.videoSettings->width > kMargins && m_report.videoSettings->height > kMargins;
  }

  const XpString& m_file;
  ProjectReport& m_report;
  TKLXPainterInfoXml m_document;
  bool m_areClipsPlaced = true;  // each says where it ends
};

}  // namespace

void CheckOverlays(const XpString& file, const TKLXOutputXml& project, ProjectReport& report) {
  OverlayChecker(file, report).Run(project);
}

}  // namespace vrx::check
