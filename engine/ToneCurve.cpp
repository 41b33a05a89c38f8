#include "engine/ToneCurve.h"

#include <algorithm>
#include <cmath>

namespace vrx::engine {
namespace {

constexpr double kWhite = 203;                       // cd/m2, reference white of BT.2408
constexpr double kGamma = 2.4;                       // of a standard display, BT.1886
constexpr double kShoulder = 0.75;                   // of the movie's signal
constexpr double kPqPeak = 10'000, kHlgPeak = 1000;  // cd/m2
constexpr double kHlgGamma = 1.2;                    // of a display whose peak is 1000 cd/m2

// How far a colour lies from the grey of its luminance; at 1 one of its components reaches zero.
constexpr double kGamutShoulder = 0.9;
constexpr double kFarthest = 2.25;  // blue of BT.2020 in BT.709

constexpr Colour kBt709Luma{0.2126, 0.7152, 0.0722};
constexpr std::array<Colour, 3> kBt709ToBt709{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
constexpr Colour kP3Luma{0.2290, 0.6917, 0.0793};
constexpr std::array<Colour, 3> kP3ToBt709{
    {{1.2249, -0.2249, 0}, {-0.0420, 1.0420, 0}, {-0.0197, -0.0786, 1.0983}}};
constexpr Colour kBt2020Luma{0.2627, 0.6780, 0.0593};
constexpr std::array<Colour, 3> kBt2020ToBt709{
    {{1.6605, -0.5877, -0.0728}, {-0.1246, 1.1330, -0.0084}, {-0.0182, -0.1006, 1.1188}}};

/// From 0 to 1 for `place` from 0 to 1, steepest at the beginning; `slope` is the one there, above 1.
double Bend(double place, double slope) { return slope * place / (1 + (slope - 1) * place); }

double Unbend(double value, double slope) { return value / (slope - (slope - 1) * value); }

/// SMPTE ST 2084, in cd/m2.
double PqLight(double code) {
  constexpr double kM1 = 2610.0 / 16384, kM2 = 2523.0 / 32;
  constexpr double kC1 = 3424.0 / 4096, kC2 = 2413.0 / 128, kC3 = 2392.0 / 128;
  const double root = std::pow(code, 1 / kM2);
  return kPqPeak * std::pow(std::max(root - kC1, 0.0) / (kC2 - kC3 * root), 1 / kM1);
}

/// ARIB STD-B67, the light of the scene from 0 to 1.
double HlgScene(double code) {
  constexpr double kA = 0.17883277, kB = 0.28466892, kC = 0.55991073;
  return code <= 0.5 ? code * code / 3 : (std::exp((code - kC) / kA) + kB) / 12;
}

double Dot(const Colour& a, const Colour& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// Draws `colour` towards the grey of its luminance until no component is negative.
void BringIntoGamut(Colour& colour) {
  const double luminance = Dot(kBt709Luma, colour);
  if (luminance <= 0) return;
  const double distance = 1 - *std::ranges::min_element(colour) / luminance;
  if (distance <= kGamutShoulder) return;
  const double place = std::min((distance - kGamutShoulder) / (kFarthest - kGamutShoulder), 1.0);
  constexpr double kSlope = (kFarthest - kGamutShoulder) / (1 - kGamutShoulder);
  const double nearer = kGamutShoulder + (1 - kGamutShoulder) * Bend(place, kSlope);
  for (double& component : colour) component = luminance + (component - luminance) * nearer / distance;
}

const double kShoulderLight = kWhite * std::pow(kShoulder, kGamma);

}  // namespace

ToneCurve::ToneCurve(VRXDynamicRange range, AVColorPrimaries primaries)
    : m_isHlg(range == VRXDynamicRangeHlg),
      m_peak(m_isHlg ? kHlgPeak : kPqPeak),
      m_slope(kShoulder / kGamma * std::log(m_peak / kShoulderLight) / (1 - kShoulder)),
      m_luma(kBt2020Luma),
      m_toBt709(kBt2020ToBt709) {
  if (primaries == AVCOL_PRI_BT709) {
    m_luma = kBt709Luma;
    m_toBt709 = kBt709ToBt709;
  } else if (primaries == AVCOL_PRI_SMPTE432) {
    m_luma = kP3Luma;
    m_toBt709 = kP3ToBt709;
  }
}

double ToneCurve::SignalOfGrey(double code) const {
  return SignalOf(m_isHlg ? kHlgPeak * std::pow(HlgScene(code), kHlgGamma) : PqLight(code));
}

Colour ToneCurve::Map(const Colour& signals) const {
  Colour light;
  std::ranges::transform(signals, light.begin(), [this](double signal) { return LightOf(signal); });
  if (m_isHlg) {
    // A grey of the scene becomes this light by itself; a colour by way of its luminance, as BT.2100 says.
    std::ranges::transform(light, light.begin(), [this](double grey) { return SceneOf(grey); });
    const double gain = kHlgPeak * std::pow(Dot(m_luma, light), kHlgGamma - 1);
    for (double& component : light) component *= gain;
  }
  Colour mapped{Dot(m_toBt709[0], light), Dot(m_toBt709[1], light), Dot(m_toBt709[2], light)};
  BringIntoGamut(mapped);
  const double brightest = *std::ranges::max_element(mapped);
  if (brightest <= 0) return {};
  const double signal = SignalOf(brightest);
  for (double& component : mapped) {
    component = signal * std::pow(std::max(component / brightest, 0.0), 1 / kGamma);
  }
  return mapped;
}

/// `light` in cd/m2.
double ToneCurve::SignalOf(double light) const {
  if (light <= kShoulderLight) return std::pow(light / kWhite, 1 / kGamma);
  const double place = std::log(light / kShoulderLight) / std::log(m_peak / kShoulderLight);
  return kShoulder + (1 - kShoulder) * Bend(std::min(place, 1.0), m_slope);
}

double ToneCurve::LightOf(double signal) const {
  if (signal <= kShoulder) return kWhite * std::pow(signal, kGamma);
  const double place = Unbend((signal - kShoulder) / (1 - kShoulder), m_slope);
  return kShoulderLight * std::pow(m_peak / kShoulderLight, place);
}

/// The light of the scene, 0 to 1, that an HLG display shows as the grey `light` in cd/m2.
double ToneCurve::SceneOf(double light) const { return std::pow(light / kHlgPeak, 1 / kHlgGamma); }

}  // namespace vrx::engine
