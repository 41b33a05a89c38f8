#include "engine/AlphaConversion.h"

#include "engine/ColourCoefficients.h"

namespace vrx::engine {
namespace {

constexpr int kTopByte = 24;  // bits below it
// Fainter pixels have too few levels before they are divided by their alpha: their colours are not spread.
constexpr std::uint32_t kFirmAlpha = 16;
constexpr std::uint32_t kReach = 16;  // pixels, the side of a macroblock
constexpr std::uint32_t kNothingNear = kReach << kTopByte;
constexpr std::uint32_t kOneFurther = 1u << kTopByte;

constexpr int kShiftTo10 = kFraction - 2;  // ten bits: four levels for each of eight bits
constexpr int kHalfOf10 = 1 << (kShiftTo10 - 1);
constexpr int kLumaBias10 = (kLumaFloor << kFraction) + kHalfOf10;
constexpr int kChromaBias10 = (kNeutral << kFraction) + kHalfOf10;

void TakeNearer(std::uint32_t& at, std::uint32_t neighbour) {
  neighbour += kOneFurther;
  if (neighbour >> kTopByte < at >> kTopByte) at = neighbour;
}

std::uint16_t* RowOf(AVFrame& frame, int plane, int row) {
  return reinterpret_cast<std::uint16_t*>(frame.data[plane] + std::ptrdiff_t{row} * frame.linesize[plane]);
}

}  // namespace

AlphaConversion::AlphaConversion(int width, int height)
    : m_width(width),
      m_height(height),
      m_matrix(MatrixOfHeight(height)),
      m_spread(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

void AlphaConversion::Convert(const std::uint32_t* drawing, AVFrame& frame) {
  SpreadColours(drawing);
  for (int y = 0; y < m_height; ++y) {
    const std::ptrdiff_t row = std::ptrdiff_t{y} * m_width;
    ConvertRow(drawing + row, m_spread.data() + row, y, frame);
  }
}

/// Once from the upper left and once from the lower right: by then each pixel knows the nearest that is
/// drawn, counted in steps along rows and columns.
void AlphaConversion::SpreadColours(const std::uint32_t* drawing) {
  const std::ptrdiff_t width = m_width, end = width * m_height;
  std::uint32_t* spread = m_spread.data();
  for (std::ptrdiff_t i = 0; i < end; ++i) {
    const bool isFirm = drawing[i] >> kTopByte >= kFirmAlpha;
    spread[i] = isFirm ? drawing[i] & kColourMask : kNothingNear;
    if (i % width != 0) TakeNearer(spread[i], spread[i - 1]);
    if (i >= width) TakeNearer(spread[i], spread[i - width]);
  }
  for (std::ptrdiff_t i = end - 1; i >= 0; --i) {
    if ((i + 1) % width != 0) TakeNearer(spread[i], spread[i + 1]);
    if (i + width < end) TakeNearer(spread[i], spread[i + width]);
  }
}

void AlphaConversion::ConvertRow(const std::uint32_t* drawn, const std::uint32_t* spread, int row,
                                 AVFrame& frame) const {
  const Coefficients c = CoefficientsOf(m_matrix);
  std::uint16_t *luma = RowOf(frame, 0, row), *u = RowOf(frame, 1, row), *v = RowOf(frame, 2, row);
  std::uint16_t* alpha = RowOf(frame, 3, row);
  for (int x = 0; x < m_width; ++x) {
    const std::uint32_t a = drawn[x] >> kTopByte;
    const std::uint32_t colour = a != 0 ? drawn[x] : spread[x];
    const int blue = static_cast<int>(colour & 0xFF);
    const int green = static_cast<int>(colour >> 8 & 0xFF);
    const int red = static_cast<int>(colour >> 16 & 0xFF);
    luma[x] =
        static_cast<std::uint16_t>((c.yr * red + c.yg * green + c.yb * blue + kLumaBias10) >> kShiftTo10);
    u[x] =
        static_cast<std::uint16_t>((c.ur * red + c.ug * green + c.ub * blue + kChromaBias10) >> kShiftTo10);
    v[x] =
        static_cast<std::uint16_t>((c.vr * red + c.vg * green + c.vb * blue + kChromaBias10) >> kShiftTo10);
    alpha[x] = static_cast<std::uint16_t>(a << 2 | a >> 6);
  }
}

}  // namespace vrx::engine
