#include "samples/clipmaker/CourtScene.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>

namespace vrx::test_support {
namespace {

// Metres: x to the right, y away from the camera, z up; the net stands at y 0.
struct Place {
  double x = 0;
  double y = 0;
  double z = 0;
};
struct Pixel {
  double x = 0;
  double y = 0;
};

constexpr double kHalfLength = 11.885;
constexpr double kHalfWidth = 5.485;  // of the doubles court
constexpr double kHalfSingles = 4.115;
constexpr double kServiceLine = 6.4;
constexpr double kNetHeight = 0.95;
constexpr double kWallDistance = 19.0;

constexpr Rgb kSkyTop = {112, 160, 214};
constexpr Rgb kSkyLow = {206, 224, 238};
constexpr Rgb kWall = {38, 74, 62};
constexpr Rgb kSeats = {86, 96, 112};
constexpr Rgb kDarkSeats = {72, 82, 98};
constexpr std::array<Rgb, 5> kShirts = {
    {{152, 166, 178}, {120, 96, 104}, {176, 168, 150}, {98, 112, 130}, {138, 140, 126}}};
constexpr Rgb kOutside = {70, 122, 96};
constexpr Rgb kSurface = {44, 92, 150};
constexpr Rgb kPaint = {240, 242, 238};
constexpr Rgb kNet = {24, 30, 36};
constexpr Rgb kSkin = {214, 168, 136};
constexpr Rgb kHair = {64, 46, 34};
constexpr Rgb kShadow = {22, 46, 72};
constexpr Rgb kBall = {222, 240, 72};
constexpr Rgb kRacket = {236, 110, 30};

std::uint8_t Mixed(std::uint8_t below, std::uint8_t above, double share) {
  return static_cast<std::uint8_t>(std::lround(below + (above - below) * share));
}

/// A view of the court that draws smooth shapes in pixels.
class View {
 public:
  explicit View(RgbImage& image) : m_image(image), m_height(image.Height()) {}

  Pixel At(const Place& place) const {
    const double d = Depth(place);
    const double up = (place.y - kCamera.y) * kSine + (place.z - kCamera.z) * kCosine;
    return {m_image.Width() / 2.0 + Focal() * place.x / d, m_height * kCentre - Focal() * up / d};
  }
  /// Pixels of a metre at a place.
  double Scale(const Place& place) const { return Focal() / Depth(place); }

  void Blend(int x, int y, const Rgb& colour, double share) {
    std::uint8_t* pixel = m_image.Row(y) + 3 * x;
    for (int c = 0; c < 3; ++c) {
      const auto i = static_cast<std::size_t>(c);
      pixel[c] = Mixed(pixel[c], colour[i], share);
    }
  }

  /// A line with round ends; of two equal ends a disc.
  void Capsule(Pixel a, Pixel b, double radius, const Rgb& colour, double opacity = 1.0) {
    const double length2 = (b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y);
    Cover(std::min(a.x, b.x) - radius, std::min(a.y, b.y) - radius, std::max(a.x, b.x) + radius,
          std::max(a.y, b.y) + radius, colour, opacity, [&](double x, double y) {
            const double along = (x - a.x) * (b.x - a.x) + (y - a.y) * (b.y - a.y);
            const double t = length2 == 0 ? 0 : std::clamp(along / length2, 0.0, 1.0);
            return radius - std::hypot(x - a.x - t * (b.x - a.x), y - a.y - t * (b.y - a.y));
          });
  }
  void Limb(const Place& a, const Place& b, double metres, const Rgb& colour) {
    Capsule(At(a), At(b), metres * Scale(a), colour);
  }

  /// A convex polygon whose corners run clockwise on the picture.
  void Polygon(std::span<const Pixel> corners, const Rgb& colour, double opacity = 1.0) {
    double left = corners[0].x, right = left, top = corners[0].y, bottom = top;
    for (const Pixel& corner : corners) {
      left = std::min(left, corner.x);
      right = std::max(right, corner.x);
      top = std::min(top, corner.y);
      bottom = std::max(bottom, corner.y);
    }
    Cover(left, top, right, bottom, colour, opacity, [&](double x, double y) {
      double inside = 1e9;
      for (std::size_t i = 0; i < corners.size(); ++i) {
        const Pixel& a = corners[i];
        const Pixel& b = corners[(i + 1) % corners.size()];
        const double length = std::max(std::hypot(b.x - a.x, b.y - a.y), 1e-6);
        inside = std::min(inside, ((b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x)) / length);
      }
      return inside;
    });
  }
  /// On the ground, from left to right and from near to far.
  void Ground(double left, double right, double near, double far, const Rgb& colour) {
    const Pixel corners[] = {At({left, far}), At({right, far}), At({right, near}), At({left, near})};
    Polygon(corners, colour);
  }
  /// Facing the camera.
  void Upright(double left, double right, double y, double bottom, double top, const Rgb& colour,
               double opacity = 1.0) {
    const Pixel corners[] = {At({left, y, top}), At({right, y, top}), At({right, y, bottom}),
                             At({left, y, bottom})};
    Polygon(corners, colour, opacity);
  }

 private:
  static constexpr Place kCamera = {0, -27, 9};
  static constexpr double kSine = 0.2924;  // of the angle by which the camera looks down
  static constexpr double kCosine = 0.9563;
  static constexpr double kCentre = 0.34;  // of the height: where the camera's axis meets the picture

  double Focal() const { return 1.85 * m_height; }
  double Depth(const Place& place) const {
    return (place.y - kCamera.y) * kCosine - (place.z - kCamera.z) * kSine;
  }

  /// `inside` gives the distance to the shape's edge in pixels, positive inside.
  template <class Inside>
  void Cover(double left, double top, double right, double bottom, const Rgb& colour, double opacity,
             Inside inside) {
    const int x0 = std::max(0, static_cast<int>(std::floor(left)) - 1);
    const int x1 = std::min(m_image.Width() - 1, static_cast<int>(std::ceil(right)) + 1);
    const int y0 = std::max(0, static_cast<int>(std::floor(top)) - 1);
    const int y1 = std::min(m_image.Height() - 1, static_cast<int>(std::ceil(bottom)) + 1);
    for (int y = y0; y <= y1; ++y) {
      for (int x = x0; x <= x1; ++x) {
        const double share = std::clamp(inside(x + 0.5, y + 0.5) + 0.5, 0.0, 1.0) * opacity;
        if (share > 0) Blend(x, y, colour, share);
      }
    }
  }

  RgbImage& m_image;
  double m_height;
};

void DrawSurroundings(View& view, RgbImage& image) {
  for (int y = 0; y < image.Height(); ++y) {
    const double share = std::min(1.0, y / (image.Height() * 0.25));
    for (int x = 0; x < image.Width(); ++x) {
      image.Set(x, y, kSkyTop);
      view.Blend(x, y, kSkyLow, share);
    }
  }
  constexpr double kWide = 60.0;
  // Farther rows first, each a step higher, with spectators in most of the seats.
  constexpr double kRow = 0.9;
  for (int row = 7; row >= 0; --row) {
    const double y = kWallDistance + 3 + row;
    const double bottom = 1.4 + row * kRow;
    view.Upright(-kWide, kWide, y, bottom - kRow, bottom + 0.35, row % 2 == 0 ? kSeats : kDarkSeats);
    for (int seat = -24; seat <= 24; ++seat) {
      const int mix = (seat * 7 + row * 13 + 500) % 11;
      if (mix < 3) continue;
      const Place head = {seat * 0.9 + row % 2 * 0.45, y, bottom + 0.55};
      view.Limb(head, {head.x, y, bottom + 0.2}, 0.2,
                kShirts[static_cast<std::size_t>(mix) % kShirts.size()]);
      view.Limb(head, head, 0.13, kSkin);
    }
  }
  view.Ground(-kWide, kWide, -25.0, kWallDistance, kOutside);
  view.Upright(-kWide, kWide, kWallDistance, 0, 2.6, kWall);
}

void DrawLines(View& view) {
  constexpr double kHalf = 0.05;
  const auto across = [&](double y, double halfWidth) {
    view.Ground(-halfWidth, halfWidth, y - kHalf, y + kHalf, kPaint);
  };
  const auto along = [&](double x, double halfLength) {
    view.Ground(x - kHalf, x + kHalf, -halfLength, halfLength, kPaint);
  };
  for (const double side : {-1.0, 1.0}) {
    across(side * kHalfLength, kHalfWidth);
    across(side * kServiceLine, kHalfSingles);
    along(side * kHalfWidth, kHalfLength);
    along(side * kHalfSingles, kHalfLength);
  }
  along(0, kServiceLine);
}

void DrawNet(View& view) {
  constexpr double kHalfNet = 6.4;
  view.Upright(-kHalfNet, kHalfNet, 0, 0, kNetHeight, kNet, 0.45);
  view.Upright(-kHalfNet, kHalfNet, 0, kNetHeight - 0.06, kNetHeight, kPaint);
  for (const double side : {-kHalfNet, kHalfNet}) view.Limb({side, 0, 0}, {side, 0, 1.07}, 0.05, kNet);
}

double Ease(double t) {
  t = std::clamp(t, 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

/// Where the near player strikes: the strokes of the overlay in their order, a serve first.
Place StrikePlace(int shot) {
  constexpr std::array<Place, 8> kPlaces = {{{1.2, -11.6, 2.6},
                                             {2.6, -11.2, 1.0},
                                             {2.2, -10.6, 0.8},
                                             {1.6, -3.2, 1.4},
                                             {-2.6, -11.2, 1.0},
                                             {-2.2, -10.6, 0.8},
                                             {-1.6, -3.2, 1.4},
                                             {0.4, -5.0, 2.5}}};
  return kPlaces[static_cast<std::size_t>(shot) % kPlaces.size()];
}

Place ReturnPlace(int shot) {
  const double side = shot % 3 - 1.0;
  return {side * 2.8, 11.2, 1.0};
}

Place Between(const Place& a, const Place& b, double t) {
  return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
}

/// A flight with one bounce, `t` from 0 to 1.
Place Flight(const Place& from, const Place& to, double t) {
  constexpr double kBounce = 0.72;
  Place ball = Between(from, to, t);
  if (t < kBounce) {
    const double u = t / kBounce;
    ball.z = from.z * (1 - u) + 4.0 * 1.6 * u * (1 - u);
  } else {
    const double u = (t - kBounce) / (1 - kBounce);
    ball.z = to.z * u + 4.0 * 0.5 * u * (1 - u);
  }
  return ball;
}

struct Rally {
  int shot;      // the near player's last one, -1 before the first
  double phase;  // from that shot (0) to the next (1)
};

Rally RallyAt(double seconds) {
  const double shots = (seconds - CourtScene::kFirstShotSeconds) / CourtScene::kShotSeconds;
  const double whole = std::floor(shots);
  return {std::max(static_cast<int>(whole), -1), shots - whole};
}

void DrawBall(View& view, double seconds) {
  const Rally rally = RallyAt(seconds);
  Place ball = StrikePlace(0);
  if (rally.shot >= 0) {
    const Place far = ReturnPlace(rally.shot);
    ball = rally.phase < 0.5 ? Flight(StrikePlace(rally.shot), far, rally.phase * 2)
                             : Flight(far, StrikePlace(rally.shot + 1), rally.phase * 2 - 1);
  } else {
    // Thrown up for the serve.
    ball.z = 1.2 + 1.4 * Ease((seconds - 3.0) / (CourtScene::kFirstShotSeconds - 3.0));
  }
  const Place ground = {ball.x, ball.y, 0};
  view.Capsule(view.At(ground), view.At(ground), 0.07 * view.Scale(ground), kShadow, 0.6);
  view.Capsule(view.At(ball), view.At(ball), std::max(0.09 * view.Scale(ball), 1.5), kBall);
}

struct Player {
  Place feet;
  double side;   // of the racket: 1 right, -1 left
  double swing;  // -1 taken back, 0 at the ball, 1 swung through
  double reach;  // height of the racket at the ball
  Rgb shirt;
};

void DrawPlayer(View& view, const Player& p) {
  const auto at = [&](double x, double z, double y = 0) { return Place{p.feet.x + x, p.feet.y + y, z}; };
  const Place ground = at(0, 0);
  view.Capsule(view.At(at(-0.4, 0)), view.At(at(0.4, 0)), 0.16 * view.Scale(ground), kShadow, 0.45);
  view.Limb(at(-0.22, 0.06), at(-0.1, 0.85), 0.09, kSkin);
  view.Limb(at(0.22, 0.06), at(0.1, 0.85), 0.09, kSkin);
  view.Limb(at(-0.08, 0.8), at(0.08, 0.8), 0.2, kPaint);
  view.Limb(at(0, 1.0), at(0, 1.38), 0.2, p.shirt);
  view.Limb(at(0, 1.72), at(0, 1.76), 0.13, kSkin);
  view.Limb(at(0, 1.8), at(0, 1.8), 0.12, kHair);
  // The free arm, and the one with the racket, which sweeps past the ball.
  view.Limb(at(-p.side * 0.2, 1.4), at(-p.side * 0.5, 1.15), 0.06, kSkin);
  const double angle = p.swing * 1.1;
  const double out = p.side * (0.75 * std::cos(angle));
  const double height = p.reach > 2 ? 1.9 + 0.25 * std::cos(angle) : 1.1 + 0.25 * p.swing;
  const Place hand = at(out * 0.75, height, 0.4 * std::sin(angle));
  const Place head = at(out * 1.35 + (p.reach > 2 ? 0.1 * p.side : 0), height + (p.reach > 2 ? 0.5 : 0.12),
                        0.8 * std::sin(angle));
  view.Limb(at(p.side * 0.2, 1.4), hand, 0.06, kSkin);
  view.Limb(hand, head, 0.03, kRacket);
  view.Limb(head, head, 0.17, kRacket);
  view.Limb(head, head, 0.13, kPaint);
}

/// From taking the racket back to swinging it through, around a strike `before` (0 to 1) of the way between
/// strikes before or after it.
double SwingOf(double phase) {
  constexpr double kAround = 0.12;
  if (phase > 1 - kAround) return -1 + Ease((phase - 1 + kAround) / kAround);
  if (phase < kAround) return Ease(phase / kAround);
  return phase < 0.5 ? 1 - 2 * Ease((phase - kAround) / (0.5 - kAround)) : -1;
}

void DrawPlayers(View& view, double seconds) {
  const Rally rally = RallyAt(seconds);
  const double phase = rally.shot < 0 ? std::clamp(rally.phase, 0.0, 1.0) : rally.phase;
  const Place from = StrikePlace(std::max(rally.shot, 0));
  const Place to = StrikePlace(rally.shot + 1);
  const Place& strike = phase < 0.5 && rally.shot >= 0 ? from : to;
  Place feet = Between(from, to, Ease(phase * 1.25 - 0.1));
  const double side = strike.x < 0 ? -1.0 : 1.0;
  feet.x -= side;
  const double farPhase = std::fmod(phase + 0.5, 1.0);
  Place opponent = Between(ReturnPlace(std::max(rally.shot - 1, 0)), ReturnPlace(std::max(rally.shot, 0)),
                           Ease(phase * 2));
  opponent.x -= 0.9;
  DrawPlayer(view, {opponent, 1.0, SwingOf(farPhase), 1.0, {176, 42, 52}});
  DrawNet(view);
  if (feet.y < 0) DrawPlayer(view, {feet, side, SwingOf(phase), strike.z, {250, 208, 72}});
}

}  // namespace

void CourtScene::Draw(double seconds, RgbImage& image) {
  if (m_court.Width() != image.Width() || m_court.Height() != image.Height()) {
    m_court.Resize(image.Width(), image.Height());
    View court(m_court);
    DrawSurroundings(court, m_court);
    court.Ground(-kHalfWidth, kHalfWidth, -kHalfLength, kHalfLength, kSurface);
    DrawLines(court);
  }
  std::memcpy(image.Row(0), m_court.Row(0),
              3 * static_cast<std::size_t>(image.Width()) * static_cast<std::size_t>(image.Height()));
  View view(image);
  DrawPlayers(view, seconds);
  DrawBall(view, seconds);
}

}  // namespace vrx::test_support
