#include "host/make/GpsOverlay.h"

#include <map>

#include "foundation/platform/FileSystem.h"
#include "foundation/text/XpPath.h"
#include "host/Console.h"
#include "host/GpsMovie.h"
#include "host/GpsSidecar.h"
#include "host/GpsSource.h"

namespace vrx::host {
namespace {

class GpsPlanner {
 public:
  GpsPlanner(const GpsRequest& request, const XpString& folder, const XpString& stem, MoviePlan& plan,
             GpsOverlay& overlay)
      : m_request(request), m_folder(folder), m_stem(stem), m_plan(plan), m_overlay(overlay) {}

  bool Plan(std::string& cause) {
    m_overlay.look = m_request.look;
    m_overlay.unit = m_request.unit;
    if (!ReadLog(cause)) return false;
    std::int64_t frame = 0;
    std::int32_t id = 0;
    for (const PlannedClip& clip : m_plan.clips) {
      ++id;
      if (clip.IsMovie() && !AddClip(clip, id, frame, cause)) return false;
      frame += clip.frames;
    }
    if (m_sources.empty()) {
      cause = m_log + " needs a clip; there are only pictures";
      return false;
    }
    return SayOverlap(cause);
  }

 private:
  struct Source {
    XpString link;
    receiver::MovieTime time;
    receiver::Alignment alignment;
  };

  bool ReadLog(std::string& cause) {
    m_log = FileName(m_request.log);
    GpsSource source;
    if (!ReadReceiverLog(m_request.log, {m_request.correctWeekRollover}, source, m_seconds, cause))
      return false;
    for (const std::string& warning : source.warnings)
      m_plan.choices.push_back("warning: " + m_log + ": " + warning);
    if (m_seconds.empty()) cause = m_log + " holds no position";
    return !m_seconds.empty();
  }

  bool AddClip(const PlannedClip& clip, std::int32_t id, std::int64_t frame, std::string& cause) {
    auto known = m_sources.find(clip.source);
    if (known == m_sources.end()) {
      Source source;
      if (!PlaceSource(clip.source, source, cause)) return false;
      known = m_sources.emplace(clip.source, source).first;
      m_earlierSeconds += clip.sourceSeconds;
    }
    m_overlay.clips.push_back({.videoId = id,
                               .movie = known->second.link,
                               .date = known->second.time.localStart,
                               .clipSeconds = clip.sourceSeconds,
                               .start = m_plan.SecondsOf(clip.sourceFrame),
                               .end = m_plan.SecondsOf(clip.sourceFrame + clip.frames),
                               .movieStart = m_plan.SecondsOf(frame),
                               .movieEnd = m_plan.SecondsOf(frame + clip.frames)});
    return true;
  }

  /// A start that was given is that of the first clip; the others follow by their dates, or one after the
  /// other.
  receiver::AlignRequest RequestOf(const receiver::MovieTime& time) {
    receiver::AlignRequest align = m_request.align;
    if (!align.startUtcSeconds) return align;
    if (m_sources.empty()) {
      m_first = time.localStart;
      return align;
    }
    std::int64_t later = 0;
    if (!time.localStart.IsValid() || !time.localStart.DifferenceInSeconds(m_first, later))
      later = static_cast<std::int64_t>(m_earlierSeconds);
    *align.startUtcSeconds += later;
    return align;
  }

  bool PlaceSource(const XpString& path, Source& source, std::string& cause) {
    source.time = InspectMovie(path);
    PlacedLog placed;
    if (!PlaceLog(m_seconds, RequestOf(source.time), m_log, FileName(path), source.time, placed, cause))
      return false;
    source.alignment = placed.alignment;
    const XpString number = XpNarrowString(std::to_string(m_sources.size() + 1)).ToWide();
    source.link = XpPathJoin(m_folder, m_stem + u"-gps-" + number + XpPathExtension(path));
    if (const std::error_code error = platform::ReplaceLink(path, source.link)) {
      cause = Utf8(source.link) + " cannot be made: " + error.message();
      return false;
    }
    if (!WriteGpsSidecar(source.link, placed.text, cause)) return false;
    m_isZoneAssumed = m_isZoneAssumed || placed.alignment.isZoneAssumed;
    return true;
  }

  bool SayOverlap(std::string& cause) {
    bool hasOverlap = false;
    for (const auto& [path, source] : m_sources) {
      const std::string mismatch = MismatchText(source.alignment, m_request.align.offsetSeconds, "make");
      hasOverlap = hasOverlap || source.alignment.hasOverlap;
      if (cause.empty() && !mismatch.empty()) cause = m_log + " and " + FileName(path) + ": " + mismatch;
      m_plan.choices.push_back((mismatch.empty() ? "GPS: " : "warning: ") + FileName(path) + ": " +
                               (mismatch.empty() ? receiver::DescribeOverlap(source.alignment) : mismatch));
    }
    if (!hasOverlap) return false;
    cause.clear();
    if (m_isZoneAssumed) {
      m_plan.choices.push_back(
          "note: a clip states no time zone, so its clock was taken as UTC; --zone MINUTES says otherwise");
    }
    return true;
  }

  const GpsRequest& m_request;
  const XpString& m_folder;
  const XpString& m_stem;
  MoviePlan& m_plan;
  GpsOverlay& m_overlay;
  std::string m_log;
  std::vector<receiver::Fix> m_seconds;
  std::map<XpString, Source> m_sources;
  XpDateTime m_first;             // date of the first clip
  double m_earlierSeconds = 0.0;  // that the clips before last
  bool m_isZoneAssumed = false;
};

}  // namespace

bool PlanGps(const GpsRequest& request, const XpString& folder, const XpString& stem, MoviePlan& plan,
             GpsOverlay& overlay, std::string& cause) {
  overlay = {};
  cause.clear();
  return GpsPlanner(request, folder, stem, plan, overlay).Plan(cause);
}

}  // namespace vrx::host
