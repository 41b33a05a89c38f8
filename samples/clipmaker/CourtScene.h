// A tennis rally on a court, seen from behind the player, as the moving picture of the tennis sample.
#pragma once

#include <array>

#include "samples/clipmaker/RgbImage.h"

namespace vrx::test_support {

/// The player near the camera strikes at kFirstShotSeconds and then every kShotSeconds; the opponent returns
/// the ball halfway between. The strokes repeat in the order of the overlay's pictograms, after a serve.
class CourtScene {
 public:
  static constexpr double kFirstShotSeconds = 4.0;
  static constexpr double kShotSeconds = 4.0;

  /// Fills `image`, whatever its size, with the view at `seconds`. The same time always gives the same
  /// picture.
  void Draw(double seconds, RgbImage& image);

 private:
  RgbImage m_court;  // what does not move, for the size of the last picture
};

}  // namespace vrx::test_support
