// How light of high dynamic range becomes the movie's: the numbers of ITU-R BT.2100 for PQ and HLG, and the
// curve from them to BT.709. Used by ToneMapper.
#pragma once

#include <array>

#include "engine/PictureColour.h"

namespace vrx::engine {

/// Red, green and blue.
using Colour = std::array<double, 3>;

/// The curve of one transfer and one set of primaries. Up to 75 percent of the movie's signal it undoes what
/// BT.2408 does to put a standard picture into an HDR one (white at 203 cd/m2, a display of gamma 2.4), so
/// that shadows and mid-tones look the same. From there a shoulder, which begins with the same slope, runs to
/// 100 percent at the peak of the transfer: 10000 cd/m2 for PQ, 1000 for HLG. White of 203 cd/m2 comes out at
/// 88 and 89 percent, which leaves the brighter a tenth of the signal.
class ToneCurve {
 public:
  /// Primaries other than BT.709 and P3 with the white of D65 count as BT.2020.
  ToneCurve(VRXDynamicRange range, AVColorPrimaries primaries);

  /// The movie's signal, 0 to 1, of a grey whose sample is `code`, 0 to 1.
  double SignalOfGrey(double code) const;

  /// The movie's red, green and blue, 0 to 1, for the colour whose samples, each alone as a grey, would
  /// give `signals`. Greys stay as they are. The brightest of the three follows the curve and the others keep
  /// their ratio to it. What lies outside of BT.709 is drawn towards the grey of the same luminance,
  /// gradually, so that colours that differ there still differ.
  Colour Map(const Colour& signals) const;

 private:
  double SignalOf(double light) const;
  double LightOf(double signal) const;
  double SceneOf(double light) const;

  bool m_isHlg;
  double m_peak;                    // cd/m2
  double m_slope;                   // of the shoulder where it begins
  Colour m_luma;                    // the shares of the source's primaries in the luminance
  std::array<Colour, 3> m_toBt709;  // a row for each of the movie's colours
};

}  // namespace vrx::engine
