// Lays a route out in the pixels of its view and rounds its corners. KVSGPSTrack does it once for each view.
#pragma once

#include "drawing/Geometry.h"
#include "gps/trackview/TrackSegment.h"

namespace vrx::gps {

/// Replaces the display points, which have no arcs yet. The square canvas is stretched to the view's shape.
void LayoutSegment(drawing::Size view, TrackSegment& segment);

/// Gives all display points but the first and the last their arc.
void RoundCorners(TrackSegment& segment);

/// The arc at `corner` begins and ends half as far away as the nearer neighbour, at most 15 pixels. There is
/// none where the three points lie in line or a neighbour is nearer than 5 pixels.
void RoundCorner(const TrackDisplayPoint& before, TrackDisplayPoint& corner, const TrackDisplayPoint& after);

/// Replaces the line through the rounded display points, which are moved by `origin`, the view's corner.
void MakeLine(drawing::Point origin, TrackSegment& segment);

/// A place of the view as a pixel of the frame, truncated.
drawing::Point ToFrame(TrackPlace place, drawing::Point origin);

}  // namespace vrx::gps
