#include "src/check/Checks.h"

#include <cmath>
#include <map>

#include "foundation/file/XpFile.h"
#include "foundation/number/Saturate.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/text/XpFormat.h"
#include "src/check/BasebandCheck.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"
#include "src/timeline/FrameClock.h"
#include "vrx/VRXLimits.h"

namespace vrx::check {
namespace {

using namespace vrx::project;

/// Asks the file system and the probe about each path once.
class SourceCache {
 public:
  explicit SourceCache(const SourceProbe& probe) : m_probe(probe) {}

  const SourceFacts& Look(const XpString& path) {
    const auto found = m_facts.find(path);
    return found != m_facts.end() ? found->second : m_facts.emplace(path, Ask(path)).first->second;
  }

 private:
  SourceFacts Ask(const XpString& path) const {
    SourceFacts facts;
    platform::FileStatus status;
    if (platform::StatPath(path, platform::Links::Follow, status)) {
      facts.cause = "does not exist";
    } else if (status.isDirectory) {
      facts.cause = "is a folder";
    } else if (status.isSpecial) {
      facts.cause = "is a device, a pipe or a socket";
    } else if (XpFile file; file.OpenPath(path, XpOpenRead, XpShareRead) != XpOk) {
      facts.cause = "cannot be read: no permission";
    } else if (m_probe) {
      facts = m_probe(path);
    } else {
      facts.usable = facts.hasVideo = facts.hasAudio = true;
    }
    return facts;
  }

  const SourceProbe& m_probe;
  std::map<XpString, SourceFacts> m_facts;
};

double WholeMs(double milliseconds) { return std::trunc(milliseconds); }

/// Whether a source of this length, 0 when unknown, has the clip also if its numbers are seconds.
bool CanBeSeconds(const TKLXOutputXmlInfo& clip, double sourceSeconds) {
  return clip.startTime >= 0 && clip.endTime > clip.startTime &&
         (sourceSeconds <= 0 || clip.endTime <= sourceSeconds);
}

XpString MeantTimes(const TKLXOutputXmlInfo& clip) {
  XpString text;
  XpFormat(text, u" (times are milliseconds; were %.10g and %.10g meant?)",
           clip.startTime * timeline::kMillisecondsPerSecond,
           clip.endTime * timeline::kMillisecondsPerSecond);
  return text;
}

/// None, so that nothing is counted, where the settings have none that movies can have; that is said
/// elsewhere.
VRXTimeInfo FrameOf(const ProjectReport& report) {
  if (!report.videoSettings) return {};
  const VRXTimeInfo& frame = report.videoSettings->frameDuration;
  return limits::IsUsableFrameLength(frame.value, frame.scale) ? frame : VRXTimeInfo();
}

XpString EmptyStills(const TKLXOutputXmlInfo& clip) {
  if (clip.endTime <= clip.startTime) return u"must lie after StartTime";
  XpString message = u"the clip is shorter than a frame";
  if (CanBeSeconds(clip, 0)) message.Append(MeantTimes(clip));
  return message;
}

class ClipChecker {
 public:
  ClipChecker(const XpString& file, const SourceLook& look, ProjectReport& report)
      : m_file(file), m_look(look), m_sources(look.probe), m_report(report), m_clock(FrameOf(report)) {}

  void RunTrack(const Key& track, const TKLXOutputXml::Track& clips, bool isVideo) {
    m_track = track.name;
    m_isVideo = isVideo;
    m_movieTime = 0;
    m_clip = 0;
    for (const auto& clip : clips) {
      ++m_clip;
      CheckClip(*clip);
    }
    if (isVideo) CheckSeconds(clips);
    if (isVideo && m_clock.IsUsable()) {
      m_report.totalFrames = m_clock.NumberAt(m_movieTime);
      m_report.totalSeconds = m_clock.ToSeconds(m_movieTime);
    }
  }

  /// The movie's sound comes from the audio track alone.
  void CheckSound(const TKLXOutputXml& project) {
    if (!m_hasSound || !m_report.audioSettings || !project.audioTracks.empty()) return;
    m_report.problems.push_back({.severity = Severity::Warning,
                                 .file = m_file,
                                 .key = kAudioTrack.name,
                                 .message =
                                     u"holds no clip, so the movie is silent: the sound of the clips of "
                                     u"VideoTrack is not used"});
  }

 private:
  void Report(Severity severity, const Key& key, const XpString& message) {
    m_report.problems.push_back({severity, m_file, m_track, m_clip, key.name, message});
  }

  /// A movie of moments is no movie that someone wants: one line for all of its clips.
  void CheckSeconds(const TKLXOutputXml::Track& clips) {
    constexpr double kMoment = 1.0;
    std::size_t first = clips.size();
    for (std::size_t i = 0; i < clips.size(); ++i) {
      const ClipRow& row = m_report.clips[i];
      if (clips[i]->sourceType == VRXSourceBaseband || row.wholeSource) continue;
      const double length = m_lengths[i];
      if (length <= 0 || !CanBeSeconds(*clips[i], length) || row.seconds >= kMoment) return;
      first = std::min(first, i);
    }
    if (first == clips.size()) return;
    m_clip = static_cast<std::uint32_t>(first + 1);
    Report(Severity::Warning, kEndTime, u"every clip lasts less than a second" + MeantTimes(*clips[first]));
  }

  void CheckClip(const TKLXOutputXmlInfo& clip) {
    ClipRow row;
    row.track = m_track;
    row.clip = m_clip;
    row.source = ResolvePath(m_file, clip.sourceFile);
    const bool isBaseband = m_isVideo && clip.sourceType == VRXSourceBaseband;
    SourceFacts unknown;
    const SourceFacts& facts = clip.sourceFile.IsEmpty() || isBaseband ? unknown : m_sources.Look(row.source);
    CheckSource(clip, row, facts, isBaseband);
    if (m_isVideo) m_lengths.push_back(facts.videoSeconds);
    m_hasSound = m_hasSound || (m_isVideo && m_look.probe && facts.hasAudio);
    LayOut(clip, facts, isBaseband, row);
    if (isBaseband && !clip.sourceFile.IsEmpty()) {
      const std::int64_t frame = std::max<std::int64_t>(m_clock.GetFrameValue(), 1);
      const std::int64_t first = std::max<std::int64_t>(m_clock.FloorToFrame(WholeMs(clip.startTime)), 0);
      CheckBasebandClip({m_clip, row.source, first / frame, row.frames}, m_look.stills, m_report);
    }
    m_report.clips.push_back(row);
  }

  void CheckSource(const TKLXOutputXmlInfo& clip, const ClipRow& row, const SourceFacts& facts,
                   bool isBaseband) {
    if (clip.sourceFile.IsEmpty()) return Report(Severity::Error, kSourceFile, u"names no source");
    if (isBaseband) return;  // read once its frames are known
    if (!facts.usable) {
      return Report(Severity::Error, kSourceFile, row.source + u" " + XpNarrowString(facts.cause).ToWide());
    }
    if (m_isVideo && !facts.hasVideo)
      return Report(Severity::Error, kSourceFile, row.source + u" has no picture");
    if (!m_isVideo && !facts.hasAudio) {
      Report(Severity::Warning, kSourceFile, row.source + u" has no sound: the clip is silent");
    }
    if (m_isVideo && facts.dynamicRange != VRXDynamicRangeStandard) {
      const XpString name = facts.dynamicRange == VRXDynamicRangePq ? u"PQ" : u"HLG";
      Report(Severity::Note, kSourceFile,
             row.source + u" is HDR (" + name + u"): its colours are brought to the movie's standard range");
    }
  }

  /// Works out the clip's place in the movie the way the engine does.
  void LayOut(const TKLXOutputXmlInfo& clip, const SourceFacts& facts, bool isBaseband, ClipRow& row) {
    row.firstFrame = m_clock.NumberAt(m_movieTime);
    row.movieStart = m_clock.ToSeconds(m_movieTime);
    // A clip of still images keeps whole milliseconds.
    const double start = isBaseband ? WholeMs(clip.startTime) : clip.startTime;
    const double end = isBaseband ? WholeMs(clip.endTime) : clip.endTime;
    const std::int64_t in = std::max<std::int64_t>(m_clock.FloorToFrame(start), 0);
    const std::int64_t out = m_clock.FloorToFrame(end);
    std::int64_t length = SaturatedSubtract(out, in);
    row.wholeSource = out <= in && !isBaseband;
    const double sourceSeconds = m_isVideo ? facts.videoSeconds : facts.audioSeconds;
    if (row.wholeSource) {
      CheckWholeSource(clip, sourceSeconds);
      // The engine's rule: the nearest whole number of frames, at least one.
      const double frames =
          sourceSeconds > 0.0 ? std::max(std::round(m_clock.FramesInSeconds(sourceSeconds)), 1.0) : 0.0;
      length = m_clock.TimeOf(frames);
    } else {
      row.sourceStart = m_clock.ToSeconds(in);
      if (isBaseband && length <= 0 && m_clock.IsUsable())
        Report(Severity::Error, kEndTime, EmptyStills(clip));
      CheckEnd(in, out, sourceSeconds);
      length = std::max<std::int64_t>(length, 0);
    }
    row.seconds = m_clock.ToSeconds(length);
    row.frames = m_clock.NumberAt(length);
    m_movieTime = SaturatedAdd(m_movieTime, length);
  }

  void CheckWholeSource(const TKLXOutputXmlInfo& clip, double sourceSeconds) {
    if (!m_clock.IsUsable()) return;  // there is no frame to count in, which is said elsewhere
    const bool isEndSet = clip.endTime >= 0;
    if (!isEndSet && clip.startTime < 0) return;  // the plain way to ask for the whole source
    if (!isEndSet) {
      return Report(Severity::Warning, kEndTime,
                    u"is missing, so StartTime is not used: the whole source is used");
    }
    XpString message = u"does not lie after StartTime: the whole source is used";
    if (clip.endTime > clip.startTime) {
      message = u"the clip is shorter than a frame: the whole source is used";
      if (CanBeSeconds(clip, sourceSeconds)) message.Append(MeantTimes(clip));
    }
    Report(Severity::Warning, kEndTime, message);
  }

  void CheckEnd(std::int64_t in, std::int64_t out, double sourceSeconds) {
    const double beyond = m_clock.ToSeconds(out) - sourceSeconds;
    const double frameSeconds = m_clock.ToSeconds(m_clock.GetFrameValue());
    if (sourceSeconds <= 0.0 || beyond < frameSeconds) return;
    const double startBeyond = m_clock.ToSeconds(in) - sourceSeconds;
    const bool isAllBeyond = startBeyond >= 0;
    XpString message;
    XpFormat(message, u"lies %.3f s after the source's end: ", isAllBeyond ? startBeyond : beyond);
    if (m_isVideo) {
      message.Append(isAllBeyond ? u"the clip is the source's last frame" : u"the last frame is held");
    } else {
      message.Append(isAllBeyond ? u"the clip is silent" : u"the rest is silent");
    }
    Report(Severity::Warning, isAllBeyond ? kStartTime : kEndTime, message);
  }

  const XpString& m_file;
  const SourceLook& m_look;
  SourceCache m_sources;
  ProjectReport& m_report;
  timeline::FrameClock m_clock;
  XpString m_track;
  bool m_isVideo = false;
  std::uint32_t m_clip = 0;
  std::int64_t m_movieTime = 0;   // where the next clip of the track begins
  bool m_hasSound = false;        // of a clip of the video track
  std::vector<double> m_lengths;  // of the sources of the video track, seconds; 0 when unknown
};

}  // namespace

void CheckClips(const XpString& file, const TKLXOutputXml& project, const SourceLook& look,
                ProjectReport& report) {
  ClipChecker checker(file, look, report);
  checker.RunTrack(kVideoTrack, project.videoTracks, true);
  checker.RunTrack(kAudioTrack, project.audioTracks, false);
  if (project.videoTracks.empty()) {
    report.problems.push_back(
        {.severity = Severity::Error, .file = file, .key = kVideoTrack.name, .message = u"holds no clip"});
  }
  checker.CheckSound(project);
}

}  // namespace vrx::check
