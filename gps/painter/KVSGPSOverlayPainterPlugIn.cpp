#include "gps/painter/KVSGPSOverlayPainterPlugIn.h"

#include <algorithm>

#include "foundation/number/Saturate.h"
#include "gps/painter/GpsClipTimes.h"
#include "gps/painter/GpsMeter.h"
#include "overlay/painter/PainterFontName.h"

using namespace vrx::gps;
using vrx::Saturate;
using vrx::drawing::Rect;
using vrx::drawing::Saturated;
using vrx::overlay::PainterSurface;
using vrx::overlay::TextAt;

namespace {

/// The texts of a unit's speeds; those of its distances come after them.
constexpr std::int32_t kUnitTexts[] = {2, 0, 4};  // by the unit

/// Margins of the track in the map, in a frame of 1920 by 1080.
constexpr std::int64_t kTrackRight = -126;
constexpr Rect kStackedTrack{30, 70, -30, -30};

}  // namespace

KVSGPSOverlayPainterPlugIn::KVSGPSOverlayPainterPlugIn(vrx::drawing::TextRenderer& textRenderer,
                                                       vrx::overlay::TextResolution resolution)
    : m_textRenderer(textRenderer) {
  m_speedLog.SetTextResolution(resolution);
  painterType = KVSPainterGPSOverlay;
  m_timeline.unit = -1;
}

bool KVSGPSOverlayPainterPlugIn::SetPainterInfo(const PainterInfo* info, const PainterInfoBase* record) {
  if (info == nullptr || dynamic_cast<const TemplateInfo*>(record) == nullptr) return false;
  Configure(info, record);
  Prepare();
  return true;
}

void KVSGPSOverlayPainterPlugIn::Configure(const PainterInfo* info, const PainterInfoBase* record) {
  const XpSingleLock lock(&m_lock);
  const auto* look = dynamic_cast<const TemplateInfo*>(record);
  if (info == nullptr || look == nullptr) return;
  m_templateWidth = look->width;
  m_templateHeight = look->height;
  m_videoWidth = info->videoWidth;
  m_videoHeight = info->videoHeight;
  m_saveMovieMode = info->saveMovieMode;
  m_strings = info->stringTable;
  m_timeline.unit = info->gpsUnitFromUser;
  SetResources(look->scenarioType, look->resources);
  SetScenario(look->scenarioType);
  SetVideoLayout(info->videoLayoutType, 0);
  m_timeline.drawTrimmedOutArea = look->drawTrimmedOutArea;
  m_linkGpsLog = look->linkGpsLog;
  m_track.SetPerClip(!m_linkGpsLog);
  m_clips = look->logData;
  ForgetDrawn();
}

void KVSGPSOverlayPainterPlugIn::SetResources(std::int32_t scenarioType,
                                              std::shared_ptr<TemplateResource> resources) {
  m_resources[scenarioType] = std::move(resources);
}

void KVSGPSOverlayPainterPlugIn::SetScenario(std::int32_t type) {
  const XpSingleLock lock(&m_lock);
  if (type == m_scenarioType && !m_saveMovieMode) return;
  const auto found = m_resources.find(type);
  const auto resource = found == m_resources.end() ? nullptr : found->second;
  m_template.scenario = MakeTemplateScenario(type, m_templateWidth, m_templateHeight, m_fontName);
  const bool hasResource = resource != nullptr && m_template.scenario != nullptr;
  if (hasResource) m_template.scenario->SetResource(resource);
  // A scenario without its pictures is asked for again.
  if (hasResource || m_saveMovieMode) m_scenarioType = type;
  m_renditions.Reset(resource);
  ForgetDrawn();
}

void KVSGPSOverlayPainterPlugIn::SetVideoLayout(std::int32_t layoutType, std::int32_t /*subVideoSize*/) {
  const XpSingleLock lock(&m_lock);
  if (layoutType == m_videoLayoutType) return;
  m_template.structure =
      MakeTemplateStructure(layoutType, m_templateWidth, m_templateHeight, m_videoWidth, m_videoHeight);
  m_videoLayoutType = layoutType;
  ForgetDrawn();
}

void KVSGPSOverlayPainterPlugIn::SetOutputSize(std::int32_t width, std::int32_t height) {
  const XpSingleLock lock(&m_lock);
  m_templateWidth = width;
  m_templateHeight = height;
  if (IsReady()) {
    m_template.structure->SetSize(width, height);
    m_template.scenario->SetSize(width, height);
  }
  m_renditions.Forget();
  ForgetDrawn();
}

void KVSGPSOverlayPainterPlugIn::SetMode(std::uint32_t mode) {
  const XpSingleLock lock(&m_lock);
  m_timeline.unit = static_cast<std::int32_t>(mode);
  m_unitTexts.unit = m_timeline.unit;
  ForgetDrawn();
}

LogDataEntry* KVSGPSOverlayPainterPlugIn::FindClip(std::int32_t videoId) {
  const auto found = std::ranges::find(m_clips, videoId, &LogDataEntry::videoId);
  return found == m_clips.end() ? nullptr : &*found;
}

void KVSGPSOverlayPainterPlugIn::SetClipDateTime(const XpDateTime& date, std::uint32_t durationSeconds,
                                                 std::int32_t videoId) {
  const XpSingleLock lock(&m_lock);
  if (LogDataEntry* clip = FindClip(videoId)) {
    clip->originalDateTime = date;
    clip->duration = durationSeconds;
  }
}

void KVSGPSOverlayPainterPlugIn::SetClipRange(double startTime, double endTime, std::int32_t videoId) {
  const XpSingleLock lock(&m_lock);
  if (LogDataEntry* clip = FindClip(videoId)) {
    clip->startTime = startTime;
    clip->endTime = endTime;
  }
}

bool KVSGPSOverlayPainterPlugIn::IsDrawable() const {
  return m_template.scenario != nullptr && m_template.scenario->GetType() != kScenarioNone;
}

bool KVSGPSOverlayPainterPlugIn::AnyLogHasHeaderMark() const {
  return std::ranges::any_of(m_timeline.clips,
                             [](const ClipTrack& clip) { return clip.summary.logHasHeaderMark; });
}

void KVSGPSOverlayPainterPlugIn::ClearLogs() {
  const XpSingleLock lock(&m_lock);
  m_timeline.logs.clear();
}

void KVSGPSOverlayPainterPlugIn::Prepare() {
  const XpSingleLock lock(&m_lock);
  PrepareTimeline(m_clips, m_timeline);
  if (AnyLogHasHeaderMark()) m_linkGpsLog = false;
  m_wholeClip = {};
  if (!m_timeline.clips.empty()) m_wholeClip.endTime = m_timeline.clips.back().movieEndSeconds;
  m_wholeClip.duration = m_wholeClip.endTime;
  BuildTrack();
  if (!m_strings.empty()) m_fontName = ChoosePainterFontName();
  SetScenario(m_scenarioType);
  SetVideoLayout(m_videoLayoutType, 0);
  SetOutputSize(m_templateWidth, m_templateHeight);
  if (IsReady() && m_template.scenario->HasSpeedLog()) FillSpeedLog();
  SetUnitTexts();
  m_labels = GpsLabelsFrom(m_strings);
}

void KVSGPSOverlayPainterPlugIn::BuildTrack() {
  m_track.ResetTrack();
  for (const ClipTrack& clip : m_timeline.clips) {
    m_track.BuildTrackSegment(clip.points, clip.bounds, clip.movieStartSeconds, clip.movieEndSeconds, false);
  }
  double start = 0.0;
  for (const LogDataEntry& clip : m_clips) {
    const ClipTrack* track = m_timeline.FindClip(clip.videoId);
    if (track == nullptr) continue;
    m_track.BuildTrackSegment(track->points, m_timeline.bounds, start, start + clip.duration, true);
    start += clip.duration;
  }
}

void KVSGPSOverlayPainterPlugIn::FillSpeedLog() {
  const Rect rect = m_template.scenario->GetSpeedLogRect(false);
  m_speedLog.ResetSpeedLog();
  m_speedLog.SetSpeedLogSize(Saturated(rect.Width()), Saturated(rect.Height()));
  m_speedLog.SetLinked(m_linkGpsLog);
  m_speedLog.SetFontName(m_fontName);
  double accumulatedMs = 0.0;
  for (const LogDataEntry& clip : m_clips) {
    const ClipTrack* track = m_timeline.FindClip(clip.videoId);
    if (track == nullptr) continue;
    const double seconds = ClipSeconds(clip, m_timeline.drawTrimmedOutArea);
    m_speedLog.AddSpeedLogClip(track->points, clip.videoId, accumulatedMs, 0.0, seconds * 1000);
    accumulatedMs += 1.0;
  }
  m_speedLog.SetWholeRecord(m_timeline.points);
}

void KVSGPSOverlayPainterPlugIn::SetUnitTexts() {
  m_unitTexts.unit = m_timeline.unit;
  const bool isKnown = m_timeline.unit >= 0 && m_timeline.unit < std::ssize(kUnitTexts);
  if (!isKnown || m_strings.empty()) return;
  const std::int32_t entry = kUnitTexts[m_timeline.unit];
  m_unitTexts.speed = TextAt(m_strings, entry);
  m_unitTexts.distance = TextAt(m_strings, entry + 1);
}

void KVSGPSOverlayPainterPlugIn::ForgetDrawn() {
  ++m_generation;
  m_isStamped = false;
  m_readoutsOf = {};
  m_base.Forget();
}

bool KVSGPSOverlayPainterPlugIn::FindInClip(std::int32_t videoId, std::int64_t ms, Shown& shown) const {
  const ClipTrack* track = m_timeline.FindClip(videoId);
  if (track == nullptr || track->points.empty() || ms < 0) return false;
  const std::int64_t last = std::ssize(track->points) - 1;
  const std::int64_t second = std::min(ms / 1000, last);
  const std::int64_t trackMs = ms / 1000 > last ? last * 1000 : ms;
  const GpsPlace place = FindPlace(m_clips, m_timeline.drawTrimmedOutArea, videoId, trackMs);
  shown = {.list = &track->points,
           .second = static_cast<std::size_t>(second),
           .elapsedMs = ms,
           .movieMs = place.movieMs};
  ShowTexts(place.clipIndex, videoId, shown);
  return true;
}

bool KVSGPSOverlayPainterPlugIn::FindInMovie(std::int64_t ms, Shown& shown) const {
  if (m_timeline.points.empty() || ms < 0) return false;
  const std::int64_t last = std::ssize(m_timeline.points) - 1;
  const std::int64_t second = std::min(ms / 1000, last);
  std::int64_t trackMs = ms / 1000 > last ? last * 1000 : ms;
  const KVUGPSInfo& point = m_timeline.points[static_cast<std::size_t>(second)];
  if (point.status == 0 && point.kind == GPSPointBeforeFix) trackMs = 0;
  if (point.status == 0 && point.kind == GPSPointAfterFix) trackMs = last * 1000;
  shown = {.list = &m_timeline.points,
           .second = static_cast<std::size_t>(second),
           .elapsedMs = ms,
           .movieMs = static_cast<double>(trackMs)};
  const std::size_t index = FindClipAt(m_clips, m_timeline.drawTrimmedOutArea, second);
  if (!m_clips.empty()) {
    ShowTexts(index, m_clips[std::min(index, m_clips.size() - 1)].videoId, shown);
    // After the last clip its own texts stand, whatever is linked.
    if (index == m_clips.size()) {
      shown.entry = &m_clips.back();
      shown.average = shown.zone;
    }
  }
  return true;
}

void KVSGPSOverlayPainterPlugIn::ShowTexts(std::size_t clipIndex, std::int32_t videoId, Shown& shown) const {
  const ClipTrack* track = m_timeline.FindClip(videoId);
  if (track == nullptr) return;
  shown.zone = &track->summary;
  if (m_linkGpsLog) {
    shown.average = &m_timeline.totals;
    shown.entry = &m_wholeClip;
  } else if (!m_clips.empty()) {
    shown.average = &track->summary;
    shown.entry = &m_clips[std::min(clipIndex, m_clips.size() - 1)];
  }
}

const GpsReadouts& KVSGPSOverlayPainterPlugIn::ReadoutsFor(const Shown& shown) {
  // The list and the second decide the clip, and with it everything else.
  const bool isCurrent = m_readoutsOf.list == shown.list && m_readoutsOf.second == shown.second &&
                         m_readoutsOf.elapsedMs / 1000 == shown.elapsedMs / 1000;
  if (isCurrent) return m_readouts;
  const KVUGPSInfo& point = (*shown.list)[shown.second];
  m_readouts = MakeGpsReadouts({.point = point,
                                .hasFix = HasFix(point),
                                .averageSpeed = shown.average->averageSpeed,
                                .timeZoneMinutes = shown.zone->timeZoneMinutes,
                                .elapsedMs = shown.elapsedMs,
                                .totalSeconds = ClipSeconds(*shown.entry, m_timeline.drawTrimmedOutArea)},
                               m_unitTexts);
  m_readoutsOf = shown;
  return m_readouts;
}

void KVSGPSOverlayPainterPlugIn::MakeScene(const Shown& shown, GpsScene& scene) {
  scene.isVisible = shown.list != nullptr && IsReady() && m_template.scenario->GetType() != kScenarioNone;
  if (!scene.isVisible) return;
  const KorvoTemplateScenario& scenario = *m_template.scenario;
  const KVUGPSInfo& point = (*shown.list)[shown.second];
  scene.hasFix = HasFix(point);
  scene.needle = NeedleAt(point, m_timeline.totals.maxSpeed, m_timeline.unit, scenario);
  if (!scene.speedLog) scene.speedLog.emplace();
  if (!scenario.HasSpeedLog() ||
      !m_speedLog.MakeScene(scenario.GetSpeedLogRect(true), shown.movieMs, *scene.speedLog)) {
    scene.speedLog.reset();
  }
  if (m_timeline.lastFixIndex == 0) {
    scene.track.reset();
  } else {
    if (!scene.track) scene.track.emplace();
    m_track.MakeScene(TrackRect(), Saturate<std::int64_t>(shown.movieMs), *scene.track);
  }
  if (shown.entry == nullptr) {
    scene.readouts.reset();
  } else {
    scene.readouts = ReadoutsFor(shown);
  }
}

PainterStamp KVSGPSOverlayPainterPlugIn::GetContentStamp(const PainterTimes& times) {
  const XpSingleLock lock(&m_lock);
  Shown shown;
  FindInClip(times.videoId, times.gpsMs, shown);
  MakeScene(shown, m_scene);
  const bool isSame = m_scene.isVisible ? m_scene == m_stamped : !m_stamped.isVisible;
  if (!m_isStamped || !isSame) {
    std::swap(m_stamped, m_scene);
    ++m_sceneNumber;
    m_isStamped = true;
  }
  return {.isKnown = true, .generation = m_generation, .content = m_sceneNumber};
}

bool KVSGPSOverlayPainterPlugIn::Draw(std::int64_t gpsMs, std::int64_t /*tennisMs*/,
                                      std::int64_t /*captionMs*/, PixmapHolder& holder) {
  const XpSingleLock lock(&m_lock);
  m_drawnRows = {0, 0};
  if (!holder) return false;
  Shown shown;
  FindInMovie(gpsMs, shown);
  MakeScene(shown, m_scene);
  DrawScene(m_scene, *holder);
  return true;
}

bool KVSGPSOverlayPainterPlugIn::DrawForVideo(std::int32_t videoId, std::int64_t gpsMs,
                                              std::int64_t /*tennisMs*/, std::int64_t /*captionMs*/,
                                              PixmapHolder& holder) {
  const XpSingleLock lock(&m_lock);
  m_drawnRows = {0, 0};
  if (!holder) return false;
  Shown shown;
  FindInClip(videoId, gpsMs, shown);
  MakeScene(shown, m_scene);
  DrawScene(m_scene, *holder);
  return true;
}

Rect KVSGPSOverlayPainterPlugIn::TrackRect() const {
  const KorvoTemplateStructure& structure = *m_template.structure;
  const Rect map = structure.GetMapRect();
  const auto x = [&](std::int64_t value) { return std::int64_t{structure.ScaleX(value)}; };
  const auto y = [&](std::int64_t value) { return std::int64_t{structure.ScaleY(value)}; };
  if (!structure.IsTopBottom()) return {map.left, map.top, Saturated(map.right + x(kTrackRight)), map.bottom};
  return {Saturated(map.left + x(kStackedTrack.left)), Saturated(map.top + y(kStackedTrack.top)),
          Saturated(map.right + x(kStackedTrack.right)), Saturated(map.bottom + y(kStackedTrack.bottom))};
}

TrackLook KVSGPSOverlayPainterPlugIn::MakeTrackLook() const {
  const KorvoTemplateScenario& scenario = *m_template.scenario;
  return {.aheadWidth = scenario.GetAheadLineWidth(),
          .walkedWidth = scenario.GetWalkedLineWidth(),
          .shadowWidth = scenario.GetShadowLineWidth(),
          .aheadColor = scenario.GetAheadColor(0),
          .walkedColor = scenario.GetWalkedColor(0),
          .shadowColor = scenario.GetShadowColor(),
          .startMarker = scenario.GetStartMarker(),
          .goalMarker = scenario.GetGoalMarker(),
          .startText = scenario.GetStartText(),
          .goalText = scenario.GetGoalText(),
          .positionMarker = scenario.GetPositionMarker(),
          .frameWidth = m_template.structure->GetFrameWidth(),
          .frameHeight = m_template.structure->GetFrameHeight()};
}

SpeedLogLook KVSGPSOverlayPainterPlugIn::MakeSpeedLogLook() const {
  const KorvoTemplateScenario& scenario = *m_template.scenario;
  return {.scale1 = scenario.GetSpeedLogScale1(),
          .scale2 = scenario.GetSpeedLogScale2(),
          .startMarker = scenario.GetStartMarker(),
          .goalMarker = scenario.GetGoalMarker(),
          .positionMarker = scenario.GetPositionMarker(),
          .labelColor = scenario.GetRowLabelColor()};
}

void KVSGPSOverlayPainterPlugIn::DrawScene(const GpsScene& scene, XpPixmap32& target) {
  if (!scene.isVisible || target.data == nullptr) return;
  PainterSurface surface(target, m_textRenderer, m_renditions);
  if (m_baseHasFix != scene.hasFix || !(m_baseNeedle == scene.needle)) m_base.Forget();
  m_baseHasFix = scene.hasFix;
  m_baseNeedle = scene.needle;
  m_base.Show(surface, [&](PainterSurface& kept) {
    DrawGpsBaseLayer(m_template, scene.hasFix, kept);
    kept.Overlay(scene.needle, m_template.scenario->GetMeterRect());
  });
  if (scene.speedLog) {
    m_speedLog.Draw(*scene.speedLog, MakeSpeedLogLook(), m_template.scenario->GetSpeedLogRect(true), surface);
  }
  if (scene.track) m_track.Draw(*scene.track, MakeTrackLook(), TrackRect(), surface);
  if (scene.readouts) DrawGpsTextFields(m_template, m_labels, *scene.readouts, m_unitTexts.speed, surface);
  m_drawnRows = {surface.GetTouched().top, surface.GetTouched().bottom};
}
