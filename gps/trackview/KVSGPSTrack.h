// The route of a movie seen from above: what lies ahead and what has been travelled, clip after clip, with
// flags at its ends and a marker at the present position. The painter of positions owns one.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/Geometry.h"
#include "foundation/sync/XpCriticalSection.h"
#include "gps/trackview/TrackPicture.h"
#include "gps/trackview/TrackScene.h"
#include "gps/trackview/TrackSegment.h"
#include "overlay/painter/PainterSurface.h"

/// Each call takes the track's lock, inside the painter's.
class KVSGPSTrack {
 public:
  /// Appends the segment of one clip: with `keepLast` to those of the whole movie, which all lie in the
  /// bounds of the movie, otherwise to those that are shown one at a time, each in the bounds of its clip.
  /// The times are on the movie's time axis.
  void BuildTrackSegment(const KVUGPSInfoList& list, const KVSGPSBounds& bounds, double startSeconds,
                         double endSeconds, bool keepLast);
  void ResetTrack();
  /// Shows the current clip alone, instead of the whole movie.
  void SetPerClip(bool perClip);

  /// Replaces `scene` by what a view that fills `rect` shows at `timeMs` of the movie. Nothing in an empty
  /// rectangle.
  void MakeScene(const vrx::drawing::Rect& rect, std::int64_t timeMs, vrx::gps::TrackScene& scene);

  /// Draws a scene that was made for `rect`.
  void Draw(const vrx::gps::TrackScene& scene, const vrx::gps::TrackLook& look,
            const vrx::drawing::Rect& rect, vrx::overlay::PainterSurface& surface);

 private:
  using Segments = std::vector<vrx::gps::TrackSegment>;

  void EnsureLayout(const vrx::drawing::Rect& rect);
  void MakeClipScene(const vrx::drawing::Rect& rect, double seconds, vrx::gps::TrackScene& scene) const;
  void MakeWholeScene(const vrx::drawing::Rect& rect, double seconds, vrx::gps::TrackScene& scene) const;

  Segments m_wholeSegments;  // one for each clip, also for one without a position
  Segments m_clipSegments;
  vrx::drawing::Rect m_view;  // of the last layout; empty: there is none
  bool m_perClip = false;
  vrx::gps::TrackPicture m_picture;
  XpCriticalSection m_lock;
};
