#include "overlay/tennis/TennisStrokes.h"

#include <algorithm>
#include <array>

namespace vrx::overlay {
namespace {

using R = TennisMetaResource;

constexpr std::array kStrokes{
    TennisStroke{0x01, 0, 17, &R::forehandSpinFlat, "forehand", u"Forehand"},
    TennisStroke{0x02, 1, 18, &R::forehandSlice, "forehand-slice", u"Forehand slice"},
    TennisStroke{0x04, 2, 19, &R::forehandVolley, "forehand-volley", u"Forehand volley"},
    TennisStroke{0x08, 3, 20, &R::backhandSpinFlat, "backhand", u"Backhand"},
    TennisStroke{0x10, 4, 21, &R::backhandSlice, "backhand-slice", u"Backhand slice"},
    TennisStroke{0x20, 5, 22, &R::backhandVolley, "backhand-volley", u"Backhand volley"},
    TennisStroke{0x40, 6, 23, &R::smash, "smash", u"Smash"},
    TennisStroke{0x80, 7, 24, &R::serve, "serve", u"Serve"},
};

constexpr std::int32_t kForehandBits = 0x07, kBackhandBits = 0x38, kOverheadBits = 0xC0;

}  // namespace

std::span<const TennisStroke> TennisStrokes() { return kStrokes; }

const TennisStroke* FindStroke(std::int32_t swingType) {
  const auto* found = std::ranges::find(kStrokes, swingType, &TennisStroke::swingType);
  return found == kStrokes.end() ? nullptr : found;
}

FrameSet FrameSetOf(std::int32_t swingType, bool swapSides) {
  if ((swingType & kOverheadBits) != 0) return FrameSet::Racket;
  const std::int32_t shownAsBackhand = swapSides ? kForehandBits : kBackhandBits;
  return (swingType & shownAsBackhand) != 0 ? FrameSet::Back : FrameSet::Fore;
}

const std::vector<PainterPicture>& FramesOf(const TennisMetaResource& resources, FrameSet set) {
  return set == FrameSet::Racket ? resources.racketFrames
         : set == FrameSet::Back ? resources.backFrames
                                 : resources.foreFrames;
}

}  // namespace vrx::overlay
