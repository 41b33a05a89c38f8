// Draws a scene of the track view. KVSGPSTrack keeps one.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "drawing/Geometry.h"
#include "gps/trackview/TrackLineMap.h"
#include "gps/trackview/TrackScene.h"
#include "overlay/painter/PainterSurface.h"

namespace vrx::gps {

/// Keeps maps of a few long lines of the last scene; the pixels are the same as without them.
class TrackPicture {
 public:
  /// Shadows first, then what lies ahead, what has been travelled, the flags and the marker. `rect` is the
  /// one that the scene was made for; texts of flags stay left of its right edge.
  void Draw(const TrackScene& scene, const TrackLook& look, const drawing::Rect& rect,
            overlay::PainterSurface& surface);
  /// Releases the maps, when the lines are replaced.
  void Forget() { m_maps.clear(); }

 private:
  /// What the maps depend on besides their line.
  struct MapSizes {
    std::int32_t shadowWidth = 0;
    std::int32_t aheadWidth = 0;
    std::int32_t walkedWidth = 0;
    drawing::Size frame;
    friend bool operator==(const MapSizes&, const MapSizes&) = default;
  };
  /// Null: a map that cannot be made, which is not tried again.
  struct LineMaps {
    std::shared_ptr<const TrackLine> line;
    std::optional<TrackLineMap> shadowAhead;
    std::optional<TrackLineMap> shadowWalked;
    std::optional<TrackLineMap> ahead;
    std::optional<TrackLineMap> walked;
  };

  /// Without maps for a line that is to be drawn part after part.
  const LineMaps& FindMaps(const TrackWalk& walk);
  void DrawShadows(const TrackScene& scene, const TrackLook& look, overlay::PainterSurface& surface);
  void DrawAhead(const TrackScene& scene, const TrackLook& look, overlay::PainterSurface& surface);
  void DrawWalked(const TrackScene& scene, const TrackLook& look, overlay::PainterSurface& surface);

  MapSizes m_sizes;
  std::vector<LineMaps> m_maps;
};

/// Makes every pixel of the grey 0x333333 in the rectangle a translucent shadow.
void FixTrackShadowAlpha(XpPixmap32& pixmap, const drawing::Rect& rect);

}  // namespace vrx::gps
