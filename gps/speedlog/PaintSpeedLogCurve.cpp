// Of SpeedLogCanvas.h: the curve over the scale.
#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "foundation/number/Saturate.h"
#include "gps/speedlog/SpeedLogCanvas.h"

namespace vrx::gps {
namespace {

using namespace drawing;

// The two strokes are found again on the canvas by their colours, and get those that are shown.
constexpr unsigned char kLineGrey = 0xF0, kShadowGrey = 0x20;
constexpr std::int32_t kLineWidth = 6, kShadowWidth = 10, kLeastLineWidth = 1, kLeastShadowWidth = 3;
constexpr unsigned char kPaleGrey = 0xFE;
constexpr double kShadowStrength = 0.9, kPaleStrength = 0.7, kMostStrength = 0.9;

constexpr Pen GreyPen(unsigned char grey, std::int32_t width) { return {MakeColor(grey, grey, grey), width}; }

bool IsGrey(const unsigned char* pixel, unsigned char grey) {
  return pixel[0] == grey && pixel[1] == grey && pixel[2] == grey;
}

unsigned char Part(std::int32_t strength, double share) {
  return static_cast<unsigned char>(strength * share);
}

/// The colours of the speed: red-orange at the top of the graph, yellow at its base line.
class SpeedColors {
 public:
  explicit SpeedColors(std::int32_t graphRows) : m_graphRows(graphRows) {}

  /// Blue, green, red.
  std::array<unsigned char, 3> At(std::int32_t row) const {
    const std::int32_t blue = 45 - Share(20, row), green = 89 + Share(139, row);
    return {static_cast<unsigned char>(std::clamp(blue, 0, 255)),
            static_cast<unsigned char>(std::clamp(green, 0, 255)), 255};
  }
  /// How strong the fill below the curve is.
  std::int32_t FillAt(std::int32_t row) const { return std::clamp(Share(255, m_graphRows - row), 0, 255); }

 private:
  std::int32_t Share(std::int32_t whole, std::int32_t rows) const {
    return m_graphRows > 0 ? Saturated(std::int64_t{whole} * rows / m_graphRows) : 0;
  }

  std::int32_t m_graphRows;
};

class CurvePainting {
 public:
  CurvePainting(const SpeedLogScene& scene, const EdgeFade& fade, overlay::PainterSurface& surface)
      : m_scene(scene),
        m_fade(fade),
        m_surface(surface),
        m_plane(*surface.GetTarget().GetPlane(0)),
        m_colors(scene.GraphRows()),
        m_rows(std::clamp(scene.BandTop(), 0, scene.canvas.height)) {}

  void Paint(const SpeedLogLook& look) {
    DrawStrokes();
    for (std::int32_t x = 0; x < m_scene.canvas.width; ++x) ColorColumn(x);
    if (m_scene.start) PaintSpeedLogMark(*m_scene.start, look.startMarker, m_scene.scale, m_surface);
    if (m_scene.goal) PaintSpeedLogMark(*m_scene.goal, look.goalMarker, m_scene.scale, m_surface);
    FadeEnds();
  }

 private:
  /// The strokes reach into the band below the graph, which keeps its alpha, and not beyond.
  void DrawStrokes() {
    const std::int32_t bottom = std::clamp(m_scene.BandBottom(), m_rows, m_scene.canvas.height);
    XpBitmap upper = m_surface.GetCanvas().GetBitmap();
    upper.height = bottom;
    Canvas canvas(&upper);
    const Pen shadow = GreyPen(kShadowGrey, ScaledPen(kShadowWidth, kLeastShadowWidth));
    const Pen line = GreyPen(kLineGrey, ScaledPen(kLineWidth, kLeastLineWidth));
    std::size_t first = 0;
    for (const std::size_t end : m_scene.strokeEnds) {
      const std::span<const Point> stroke(m_scene.curve.data() + first, end - first);
      canvas.DrawPolyline(stroke, shadow);
      canvas.DrawPolyline(stroke, line);
      first = end;
    }
    for (std::int32_t y = m_rows; y < bottom; ++y) {
      for (std::int32_t x = 0; x < m_scene.canvas.width; ++x)
        PixelAt(x, y)[3] = static_cast<unsigned char>(FadeAt(x));
    }
  }
  std::int32_t ScaledPen(std::int32_t width, std::int32_t least) const {
    return std::max(Saturate<std::int32_t>(width * m_scene.scale), least);
  }

  void ColorColumn(std::int32_t x) {
    const std::int32_t strength = FadeAt(x);
    const bool isPassed = x <= m_scene.cursorX;
    bool lineSeen = false;
    std::array<unsigned char, 3> lineColor{};
    for (std::int32_t y = 0; y < m_rows; ++y) {
      unsigned char* pixel = PixelAt(x, y);
      if (IsGrey(pixel, kShadowGrey)) {
        pixel[3] = Part(strength, kShadowStrength);
      } else if (IsGrey(pixel, kLineGrey)) {
        if (!lineSeen) lineColor = m_colors.At(y + 1);
        lineSeen = true;
        ColorLine(pixel, isPassed, lineColor, strength);
      } else if (lineSeen && isPassed && m_scene.isInRange) {
        Fill(pixel, y);
      }
    }
  }

  static void ColorLine(unsigned char* pixel, bool isPassed, const std::array<unsigned char, 3>& color,
                        std::int32_t strength) {
    if (isPassed) {
      std::copy(color.begin(), color.end(), pixel);
      pixel[3] = static_cast<unsigned char>(strength);
    } else {
      std::fill_n(pixel, 3, kPaleGrey);
      pixel[3] = Part(strength, kPaleStrength);
    }
  }

  void Fill(unsigned char* pixel, std::int32_t y) const {
    const auto color = m_colors.At(y);
    const std::int32_t share = m_colors.FillAt(y);
    if (pixel[0] == 0 || pixel[1] == 0 || pixel[2] == 0) {
      std::copy(color.begin(), color.end(), pixel);
      pixel[3] = static_cast<unsigned char>(share);
      return;
    }
    for (std::size_t c = 0; c < color.size(); ++c)
      pixel[c] = static_cast<unsigned char>(color[c] * share / 255 + pixel[c] * (255 - share) / 255);
    pixel[3] = 255;
  }

  void FadeEnds() {
    for (std::int32_t y = 0; y < m_rows; ++y) {
      for (std::int32_t x = 0; x < m_scene.canvas.width; ++x) {
        unsigned char* pixel = PixelAt(x, y);
        if (pixel[0] == 0 && (pixel[1] == 0 || pixel[2] == 0)) continue;
        pixel[3] = std::min(pixel[3], Part(FadeAt(x), kMostStrength));
      }
    }
  }

  unsigned char* PixelAt(std::int32_t x, std::int32_t y) const {
    return m_plane.Row(y) + std::int64_t{x} * 4;
  }
  std::int32_t FadeAt(std::int32_t x) const { return m_fade[static_cast<std::size_t>(x)]; }

  const SpeedLogScene& m_scene;
  const EdgeFade& m_fade;
  overlay::PainterSurface& m_surface;
  const XpPlaneBase& m_plane;
  SpeedColors m_colors;
  std::int32_t m_rows;  // above the band
};

}  // namespace

void PaintSpeedLogCurve(const SpeedLogScene& scene, const SpeedLogLook& look, const EdgeFade& fade,
                        overlay::PainterSurface& surface) {
  CurvePainting(scene, fade, surface).Paint(look);
}

}  // namespace vrx::gps
