#include "samples/clipmaker/RgbImage.h"

#include <algorithm>
#include <stdexcept>

namespace vrx::test_support {
namespace {

constexpr int kChannels = 3;
constexpr int kNearBlack = 40;  // luma; lossy codecs ring beside the edge of a picture
constexpr int kBarNoise = 1;    // single pixels above the limit that a row of a bar may hold, in percent

}  // namespace

int Luma(const Rgb& colour) {
  constexpr int kRed = 2126;
  constexpr int kGreen = 7152;
  constexpr int kBlue = 722;
  return (kRed * colour[0] + kGreen * colour[1] + kBlue * colour[2]) / (kRed + kGreen + kBlue);
}

void RgbImage::Resize(int w, int h) {
  if (w < 0 || h < 0) throw std::invalid_argument("negative picture size");
  m_width = w;
  m_height = h;
  // libswscale's vectors reach beyond the last pixel.
  constexpr std::size_t kPadding = 64;
  m_bytes.resize(kChannels * static_cast<std::size_t>(w) * static_cast<std::size_t>(h) + kPadding);
}

Rgb RgbImage::At(int x, int y) const {
  const std::uint8_t* pixel = m_bytes.data() + Offset(x, y);
  return {pixel[0], pixel[1], pixel[2]};
}

void RgbImage::Set(int x, int y, const Rgb& colour) {
  std::copy(colour.begin(), colour.end(), m_bytes.data() + Offset(x, y));
}

void RgbImage::Fill(const PixelRect& rect, const Rgb& colour) {
  for (int y = std::max(rect.top, 0); y < std::min(rect.bottom, m_height); ++y) {
    for (int x = std::max(rect.left, 0); x < std::min(rect.right, m_width); ++x) Set(x, y, colour);
  }
}

Rgb RgbImage::Mean(const PixelRect& rect) const {
  std::array<std::uint64_t, kChannels> sum{};
  std::uint64_t count = 0;
  for (int y = std::max(rect.top, 0); y < std::min(rect.bottom, m_height); ++y) {
    for (int x = std::max(rect.left, 0); x < std::min(rect.right, m_width); ++x, ++count) {
      const std::uint8_t* pixel = m_bytes.data() + Offset(x, y);
      for (std::size_t c = 0; c < sum.size(); ++c) sum[c] += pixel[c];
    }
  }
  if (count == 0) return {};
  const auto mean = [&](std::uint64_t s) { return static_cast<std::uint8_t>((s + count / 2) / count); };
  return {mean(sum[0]), mean(sum[1]), mean(sum[2])};
}

void RgbImage::Turn(int degrees, RgbImage& turned) const {
  const bool quarter = degrees == 90 || degrees == 270;
  if (!quarter && degrees != 0 && degrees != 180) throw std::invalid_argument("not a multiple of 90 degrees");
  turned.Resize(quarter ? m_height : m_width, quarter ? m_width : m_height);
  for (int y = 0; y < m_height; ++y) {
    for (int x = 0; x < m_width; ++x) {
      const Rgb colour = At(x, y);
      switch (degrees) {
        case 90:
          turned.Set(m_height - 1 - y, x, colour);
          break;
        case 180:
          turned.Set(m_width - 1 - x, m_height - 1 - y, colour);
          break;
        case 270:
          turned.Set(y, m_width - 1 - x, colour);
          break;
        default:
          turned.Set(x, y, colour);
      }
    }
  }
}

PixelRect RgbImage::FindPicture() const {
  std::vector<int> columns(static_cast<std::size_t>(m_width));
  std::vector<int> rows(static_cast<std::size_t>(m_height));
  for (int y = 0; y < m_height; ++y) {
    for (int x = 0; x < m_width; ++x) {
      if (Luma(At(x, y)) < kNearBlack) continue;
      ++columns[static_cast<std::size_t>(x)];
      ++rows[static_cast<std::size_t>(y)];
    }
  }
  const auto range = [](const std::vector<int>& bright, int across) {
    const auto picture = [&](int n) { return 100 * n > kBarNoise * across; };
    const auto first = std::find_if(bright.begin(), bright.end(), picture);
    const auto last = std::find_if(bright.rbegin(), bright.rend(), picture);
    return std::pair<int, int>(first - bright.begin(), bright.rend() - last);
  };
  const auto [left, right] = range(columns, m_height);
  const auto [top, bottom] = range(rows, m_width);
  if (left >= right || top >= bottom) return {};
  return {left, top, right, bottom};
}

}  // namespace vrx::test_support
