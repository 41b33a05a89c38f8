#include "overlay/tennis/TennisScene.h"

#include "foundation/number/Saturate.h"

namespace vrx::overlay {
namespace {

constexpr std::int64_t kAheadMs = 33;
constexpr std::int64_t kTimeLineMs = 10000;
constexpr std::int64_t kPlayedMs = 500;  // that a shot stays at the end of the time line
constexpr std::int32_t kHalfPictogram = 10;

TennisScene::Swing MakeSwing(const TennisShots& shots, const KVSTennisMetaPainterLayoutBase& layout,
                             std::int64_t ms, std::int64_t index) {
  const auto atRest = [&](FrameSet set) {
    return TennisScene::Swing{.set = set, .frame = layout.GetFrameCount(set) - 1, .mark = {}};
  };
  const TennisShot* shot = shots.At(index);
  if (shot == nullptr) return atRest(FrameSet::Racket);
  const std::int32_t frame = shots.SwingFrameIndex(ms, index, layout.GetRacketFrameCount());
  if (frame >= 0) return {.set = shots.At(index + 1)->GetFrameSet(), .frame = frame, .mark = {}};
  TennisScene::Swing swing = atRest(shot->GetFrameSet());
  const drawing::Rect zone = layout.GetZoneRect(swing.set, shot->impactZone);
  const drawing::Rect box = layout.GetSwingRect();
  if (!zone.IsEmpty()) swing.mark = drawing::Moved(zone, box.left, box.top);
  return swing;
}

void FillTimeLine(const TennisShots& shots, const KVSTennisMetaPainterLayoutBase& layout, std::int64_t t,
                  TennisScene& scene) {
  const auto clipMs = static_cast<double>(shots.ClipTime(t));
  for (const TennisShot& shot : shots.Get()) {
    const auto ahead = Saturate<std::int64_t>(shot.GetMilliseconds() - clipMs);
    const auto marker = [&](std::int64_t place) {
      return TennisScene::Marker{shot.strokeClass,
                                 layout.GetTimeMarkerRect(place, kTimeLineMs, kHalfPictogram)};
    };
    if (ahead >= -kPlayedMs && ahead <= 0) {
      scene.played = marker(0);
    } else if (ahead > 0 && ahead <= kTimeLineMs) {
      scene.markers.push_back(marker(ahead));
    }
  }
}

}  // namespace

void MakeTennisScene(const TennisShots& shots, const KVSTennisMetaPainterLayoutBase& layout,
                     std::int32_t unit, std::int64_t ms, TennisScene& scene) {
  const std::int64_t t = SaturatedAdd(ms, kAheadMs);
  const std::int64_t index = shots.FindShotIndex(t);
  const TennisShot* current = shots.At(index);
  const CounterRolls rolls(current, shots.At(index + 1), t, layout.GetRollHeight());
  scene.counters = {rolls.Count(), rolls.Speed(&TennisShot::secondPanelSpeed, unit),
                    rolls.Speed(&TennisShot::thirdPanelSpeed, unit)};
  for (CounterRoll& counter : scene.counters) counter.offset = layout.ScaleY(counter.offset);
  scene.swing = MakeSwing(shots, layout, ms, index);
  scene.name = XpString();
  scene.markers.clear();
  scene.played.reset();
  if (!layout.HasTimeLine()) return;
  if (current != nullptr) scene.name = current->name;
  FillTimeLine(shots, layout, t, scene);
}

}  // namespace vrx::overlay
