// The times below the ticks of the speed graph: where each stands on the graph's canvas, and a picture of
// them with the frame's own edges for a frame on which the canvas is stretched.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "drawing/TextRenderer.h"
#include "gps/speedlog/SpeedLogScene.h"
#include "imaging/pixmap/XpPixmap.h"
#include "overlay/painter/PainterSurface.h"
#include "vrx/XpString.h"

namespace vrx::gps {

inline constexpr std::uint32_t kSpeedLogLabelFormat = drawing::DT_NOPREFIX;

/// How strong the columns of a canvas are, 0 to 255: both ends of the strip fade out.
using EdgeFade = std::vector<std::int32_t>;

struct SpeedLogLabelStyle {
  drawing::Font font;
  drawing::Size size;    // of one label, pixels of the canvas
  std::int32_t top = 0;  // of all labels
};
SpeedLogLabelStyle StyleOfLabels(const SpeedLogScene& scene, const XpString& fontName,
                                 drawing::TextRenderer& renderer);

/// Calls `visit(x, second)` for each second of the strip that can be seen, in pixels of the canvas. Labels
/// reach `halfLabel` beyond their tick.
void ForEachTick(const SpeedLogScene& scene, std::int32_t halfLabel,
                 const std::function<void(std::int32_t x, std::int64_t second)>& visit);

bool HasLabel(std::int64_t second);
XpString LabelText(std::int64_t second);
drawing::Rect PlaceOfLabel(std::int32_t x, const SpeedLogScene& scene, const SpeedLogLabelStyle& style);

class SharpSpeedLogLabels {
 public:
  /// Lays the labels over `rect` of the frame, into which the canvas is stretched. Drawn again only when
  /// something changed. Without memory nothing is drawn.
  void Show(const SpeedLogScene& scene, const XpString& fontName, drawing::ColorRef color,
            const EdgeFade& fade, const drawing::Rect& rect, overlay::PainterSurface& surface);

 private:
  bool Prepare(drawing::Size size);
  void Paint(const drawing::TextScale& scale, drawing::TextRenderer& renderer);
  void Fade(const EdgeFade& fade, std::int32_t firstRow);

  XpPixmap32 m_pixmap;
  bool m_isDrawn = false;
  SpeedLogScene m_scene;
  XpString m_fontName;
  drawing::ColorRef m_color = 0;
};

}  // namespace vrx::gps
