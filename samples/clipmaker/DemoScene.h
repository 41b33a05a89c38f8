// A synthetic landscape seen from a driving car (sky, sun, clouds, hills, a road with trees) as the moving
// picture of demonstration clips.
#pragma once

#include <cstdint>
#include <vector>

#include "samples/clipmaker/RgbImage.h"

namespace vrx::test_support {

/// The same seed and time always give the same picture.
class DemoScene {
 public:
  /// Red, green and blue from 0 to 255, with the fractions that blending needs.
  struct Colour {
    float red;
    float green;
    float blue;
  };

  /// The colours of one time of day.
  struct Palette {
    Colour skyTop;
    Colour skyLow;
    Colour sun;
    Colour cloud;
    Colour farHills;
    Colour nearHills;
    Colour grass;
    Colour tree;
  };

  explicit DemoScene(std::uint32_t seed);

  /// Fills `image`, whatever its size, with the view at `seconds` from the start of the drive.
  void Draw(double seconds, RgbImage& image);

 private:
  struct Ridge;

  void DrawSky(double seconds, RgbImage& image);
  void DrawRidge(const Ridge& ridge, double seconds, RgbImage& image);
  void DrawGround(double seconds, RgbImage& image);
  void DrawTrees(double seconds, RgbImage& image);
  void DrawTree(float x, float y, float size, float haze, RgbImage& image);
  float Noise(float x, float y) const;
  float RoadCentre(float depth, double seconds) const;

  std::uint32_t m_seed;
  Palette m_palette;
  float m_sunX;  // in widths of the picture
  float m_sunY;  // in heights
  float m_width = 0;
  float m_height = 0;
  float m_horizon = 0;  // row
};

}  // namespace vrx::test_support
