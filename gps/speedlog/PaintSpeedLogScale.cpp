// Of SpeedLogCanvas.h: ticks, labels and the band of the base line.
#include <algorithm>

#include "gps/speedlog/SpeedLogCanvas.h"

namespace vrx::gps {
namespace {

using namespace drawing;

constexpr std::int32_t kMajorSeconds = 30, kMinorSeconds = 6;
constexpr std::int32_t kGapBelowGraph = 4;  // pixels of a 1920 by 1080 frame
constexpr unsigned char kBandGrey = 0x80;

class ScalePainting {
 public:
  ScalePainting(const SpeedLogScene& scene, const SpeedLogLook& look, const SpeedLogLabelStyle& labels,
                bool hasLabels, const EdgeFade& fade, overlay::PainterSurface& surface)
      : m_scene(scene),
        m_look(look),
        m_labels(labels),
        m_hasLabels(hasLabels),
        m_fade(fade),
        m_surface(surface) {
    m_major = SizeOf(look.scale1, scene.graphHeight + kGapBelowGraph);
    m_minor = SizeOf(look.scale2, look.scale2 ? look.scale2->height : 0);
  }

  void Paint() {
    PaintTicks();
    PaintBand();
    FadeLabels();
  }

 private:
  Size SizeOf(const PainterPicture& picture, std::int32_t height) const {
    return {picture ? ScaledLength(picture->width, m_scene.scale) : 0, ScaledLength(height, m_scene.scale)};
  }

  void PaintTicks() {
    ForEachTick(m_scene, m_labels.size.width / 2, [this](std::int32_t x, std::int64_t second) {
      if (second % kMajorSeconds == 0) {
        PaintMajorTick(x, second);
      } else if (second % kMinorSeconds == 0) {
        PaintMinorTick(x);
      }
    });
  }

  void PaintMajorTick(std::int32_t x, std::int64_t second) {
    if (m_look.scale1) {
      const std::int32_t left = x - m_major.width / 2;
      m_surface.Overlay(m_look.scale1, {left, 0, left + m_major.width, m_major.height});
      LimitAlpha({left, 0, x + m_major.width + 1, m_scene.BandTop()});
    }
    if (!m_hasLabels || !HasLabel(second)) return;
    m_surface.Text(LabelText(second).AsView(), m_labels.font, m_look.labelColor,
                   PlaceOfLabel(x, m_scene, m_labels), kSpeedLogLabelFormat);
  }

  void PaintMinorTick(std::int32_t x) {
    if (!m_look.scale2) return;
    const std::int32_t top = m_scene.MinorTickTop();
    m_surface.Overlay(m_look.scale2,
                      Moved({0, 0, m_minor.width, m_minor.height}, std::int64_t{x} - m_minor.width / 2, top));
    LimitAlpha({x - m_major.width / 2, top, x + m_minor.width + 1, m_scene.BandTop() + 1});
  }

  /// No pixel of the rectangle is stronger than its column.
  void LimitAlpha(const Rect& rect) {
    ForEachPixel(rect, [](unsigned char* pixel, std::int32_t strength) {
      pixel[3] = static_cast<unsigned char>(std::min<std::int32_t>(pixel[3], strength));
    });
  }

  void PaintBand() {
    ForEachPixel({0, m_scene.BandTop(), m_scene.canvas.width, m_scene.BandBottom()},
                 [](unsigned char* pixel, std::int32_t strength) {
                   std::fill_n(pixel, 3, kBandGrey);
                   pixel[3] = static_cast<unsigned char>(strength);
                 });
  }

  /// Text is smooth: its alpha says how much of a pixel it covers.
  void FadeLabels() {
    ForEachPixel({0, m_scene.BandBottom(), m_scene.canvas.width, m_scene.canvas.height},
                 [](unsigned char* pixel, std::int32_t strength) {
                   pixel[3] = static_cast<unsigned char>(pixel[3] * strength / 255);
                 });
  }

  template <class Change>
  void ForEachPixel(const Rect& rect, Change change) {
    const Rect visible = Intersect(rect, {0, 0, m_scene.canvas.width, m_scene.canvas.height});
    const XpPlaneBase& plane = *m_surface.GetTarget().GetPlane(0);
    for (std::int32_t y = visible.top; y < visible.bottom; ++y) {
      unsigned char* row = plane.Row(y);
      for (std::int32_t x = visible.left; x < visible.right; ++x)
        change(row + std::int64_t{x} * 4, m_fade[static_cast<std::size_t>(x)]);
    }
  }

  const SpeedLogScene& m_scene;
  const SpeedLogLook& m_look;
  const SpeedLogLabelStyle& m_labels;
  bool m_hasLabels;
  const EdgeFade& m_fade;
  overlay::PainterSurface& m_surface;
  Size m_major;
  Size m_minor;
};

}  // namespace

void PaintSpeedLogScale(const SpeedLogScene& scene, const SpeedLogLook& look,
                        const SpeedLogLabelStyle& labels, bool hasLabels, const EdgeFade& fade,
                        overlay::PainterSurface& surface) {
  ScalePainting(scene, look, labels, hasLabels, fade, surface).Paint();
}

}  // namespace vrx::gps
