// Whether painters draw text at the frame's own resolution. Hosts that compare pictures can ask for the other
// way; the registry decides for a render.
#pragma once

namespace vrx::overlay {

enum class TextResolution {
  Frame,   // laid out on its canvas, drawn with the frame's edges
  Canvas,  // drawn on its canvas, which is scaled to the frame by nearest neighbour
};

/// Canvas when the current user's setting "StretchedText" of "Common", "Settings" is not 0.
TextResolution ChooseTextResolution();

}  // namespace vrx::overlay
