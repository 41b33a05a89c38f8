#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>

#include "imaging/resample/AdobeRgb.h"
#include "imaging/resample/XpPixmapResample.h"
#include "tests/imaging/RandomPixmap.h"

namespace {

using Line = std::vector<std::int64_t>;
using Size = std::array<std::int32_t, 2>;

/// The overlap of each source sample with each target sample, in units of which both have whole numbers.
Line AreaPlainly(const Line& in, std::int64_t d) {
  const auto s = static_cast<std::int64_t>(in.size());
  const std::int64_t lcm = std::lcm(s, d), from = lcm / s, to = lcm / d;
  Line out;
  for (std::int64_t i = 0; i < d; ++i) {
    __int128 sum = 0;
    for (std::int64_t j = i * to / from; j < s && j * from < (i + 1) * to; ++j) {
      sum += in[static_cast<std::size_t>(j)] *
             (std::min((i + 1) * to, (j + 1) * from) - std::max(i * to, j * from));
    }
    out.push_back(static_cast<std::int64_t>(sum * ((std::int64_t{1} << 32) / to) >> 32));
  }
  return out;
}

/// The polynomial through four samples, with its weights rounded to 1/65536.
Line CubicPlainly(const Line& in, std::int64_t d) {
  const auto s = static_cast<std::int64_t>(in.size());
  const auto at = [&](std::int64_t i) { return in[static_cast<std::size_t>(i)]; };
  Line out;
  for (std::int64_t i = 0; i < d; ++i) {
    const double position = static_cast<double>(i * (s - 1)) / static_cast<double>(d - 1);
    const auto k = static_cast<std::int64_t>(position);
    const double t = position - static_cast<double>(k);
    if (k == s - 1) {
      out.push_back(at(k));
    } else if (k < 1 || k == s - 2) {
      const auto a = static_cast<double>(at(k)), b = static_cast<double>(at(k + 1));
      out.push_back(static_cast<std::int64_t>(a * (1 - t) + b * t + 0.5));
    } else {
      std::int64_t sum = 0x8000;
      for (int tap = -1; tap <= 2; ++tap) {
        long double weight = 65536;
        for (int other = -1; other <= 2; ++other) {
          if (other != tap) weight *= (static_cast<long double>(t) - other) / (tap - other);
        }
        sum += static_cast<std::int64_t>(weight + 0.5L) * at(k + tap);
      }
      out.push_back(std::clamp<std::int64_t>(sum, 0, 0xFF0000) >> 16);
    }
  }
  return out;
}

Line ScaledPlainly(const Line& in, std::int64_t d) {
  const auto s = static_cast<std::int64_t>(in.size());
  if (s == d) return in;
  if (s == 1) return Line(static_cast<std::size_t>(d), in[0]);
  if (s < d) return CubicPlainly(in, d);
  if (s != 2 * d) return AreaPlainly(in, d);
  Line out;
  for (std::size_t i = 0; i < in.size(); i += 2) out.push_back((in[i] + in[i + 1]) / 2);
  return out;
}

/// One channel of a picture, row after row.
struct Channel {
  std::int32_t width, height;
  Line values;

  static Channel Of(const XpPixmapBase& pixmap, std::int32_t channel) {
    Channel result{pixmap.width, pixmap.height, {}};
    for (std::int32_t y = 0; y < pixmap.height; ++y) {
      for (std::int32_t x = 0; x < pixmap.width; ++x) {
        result.values.push_back(pixmap.GetPlane(0)->Row(y)[x * 3 + channel]);
      }
    }
    return result;
  }
  std::int64_t At(std::int32_t x, std::int32_t y) const {
    return values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
  }
  /// Its rows are as long as this channel has rows, and the other way round.
  Channel RowsScaledAndTurned(std::int32_t newWidth) const {
    Channel result{height, newWidth,
                   Line(static_cast<std::size_t>(height) * static_cast<std::size_t>(newWidth))};
    for (std::int32_t y = 0; y < height; ++y) {
      const auto row = values.begin() + std::int64_t{y} * width;
      const Line scaled = ScaledPlainly(Line(row, row + width), newWidth);
      for (std::size_t x = 0; x < scaled.size(); ++x) {
        result.values[x * static_cast<std::size_t>(height) + static_cast<std::size_t>(y)] = scaled[x];
      }
    }
    return result;
  }
  Channel BlocksMeant(std::int32_t side) const {
    Channel result{width / side, height / side, {}};
    for (std::int32_t y = 0; y < height; y += side) {
      for (std::int32_t x = 0; x < width; x += side) {
        std::int64_t sum = 0;
        for (std::int32_t i = 0; i < side * side; ++i) sum += At(x + i % side, y + i / side);
        result.values.push_back(sum / (side * side));
      }
    }
    return result;
  }
  Channel Scaled(const Size& to) const {
    for (const std::int32_t side : {2, 3}) {
      if (width == side * to[0] && height == side * to[1]) return BlocksMeant(side);
    }
    return RowsScaledAndTurned(to[0]).RowsScaledAndTurned(to[1]);
  }
};

void ExpectScaledLikeThePlainWay(const Size& from, const Size& to, std::mt19937& random) {
  SCOPED_TRACE(testing::Message() << from[0] << "x" << from[1] << " to " << to[0] << "x" << to[1]);
  XpPixmap24NoHandle pixmap;
  ASSERT_EQ(pixmap.Allocate(from[0], from[1]), XpOk);
  FillRandom(pixmap, random);
  // White and black next to each other are where a cubic leaves the range of a byte; long bright rows are
  // where sums are largest.
  const int black = from[0] > 500 ? 8 : 128;
  for (std::uint32_t i = 0; i < pixmap.size && from[0] % 4 == 2; ++i) {
    pixmap.data[i] = pixmap.data[i] < black ? 0 : 255;
  }
  std::array<Channel, 3> expected;
  for (std::int32_t c = 0; c < 3; ++c) {
    expected[static_cast<std::size_t>(c)] = Channel::Of(pixmap, c).Scaled(to);
  }
  ASSERT_EQ(ResamplePixmap(pixmap, to[0], to[1]), XpOk);
  ASSERT_EQ(pixmap.width, to[0]);
  ASSERT_EQ(pixmap.height, to[1]);
  for (std::int32_t i = 0; i < 3 * to[0] * to[1]; ++i) {
    const std::int32_t x = i / 3 % to[0], y = i / 3 / to[0];
    ASSERT_EQ(pixmap.GetPlane(0)->Row(y)[x * 3 + i % 3], expected[static_cast<std::size_t>(i % 3)].At(x, y))
        << "column " << x << " row " << y << " byte " << i % 3;
  }
}

TEST(ResampleTest, EachPairOfSizesGivesTheExactArithmetic) {
  std::mt19937 random(3);
  for (const Size& from : kOddSizes) {
    for (const Size& to : kOddSizes) ExpectScaledLikeThePlainWay(from, to, random);
  }
  for (int round = 0; round < 200; ++round) {
    const auto side = [&] { return Between(random, 1, round % 8 == 0 ? 250 : 40); };
    ExpectScaledLikeThePlainWay({side(), side()}, {side(), side()}, random);
  }
  const std::vector<std::array<Size, 2>> special = {
      {{{640, 12}, {320, 6}}},    {{{640, 12}, {320, 12}}}, {{{12, 640}, {12, 320}}},
      {{{390, 270}, {130, 90}}},  {{{9, 9}, {3, 9}}},       {{{3, 3}, {1, 1}}},
      {{{2, 2}, {1, 1}}},         {{{602, 2}, {2, 2}}},     {{{2, 700}, {2, 2}}},
      {{{70001, 1}, {70000, 1}}}, {{{1, 70001}, {1, 3}}},   {{{515, 3}, {2, 3}}},
      {{{1, 1}, {400, 3}}},       {{{4, 4}, {2000, 4}}},    {{{5, 3}, {5, 900}}}};
  for (const auto& [from, to] : special) ExpectScaledLikeThePlainWay(from, to, random);
}

TEST(ResampleTest, WhatCannotBeDoneLeavesThePixmapAsItIs) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  std::mt19937 random(4);
  XpPixmap24NoHandle pixmap;
  EXPECT_EQ(ResamplePixmap(pixmap, 4, 4), XpErrFailed);
  EXPECT_EQ(ResizePixmap(pixmap, 4, 4), XpErrFailed);
  EXPECT_EQ(ResizePixmap(pixmap, 0, 0), XpOk);
  EXPECT_EQ(CropPixmap(pixmap, 0, 0, 0, 0), XpErrFailed);
  ASSERT_EQ(pixmap.Allocate(5, 7), XpOk);
  FillRandom(pixmap, random);
  const Bytes before = BytesOf(pixmap);
  EXPECT_EQ(ResizePixmap(pixmap, 5, 7), XpOk);
  for (const auto& [width, height, expected] : {std::tuple{0, 7, XpErrFailed},
                                                {5, 0, XpErrFailed},
                                                {-5, 7, XpErrFailed},
                                                {5, -1, XpErrFailed},
                                                {kMax, kMax, XpErrFailed},
                                                {1 << 24, 1 << 24, XpErrOutOfMemory}}) {
    SCOPED_TRACE(testing::Message() << width << "x" << height);
    EXPECT_EQ(ResizePixmap(pixmap, width, height), expected);
    EXPECT_TRUE(SamePicture(before, pixmap));
  }
  for (const auto& [left, top, right, bottom] :
       std::vector<std::array<std::int32_t, 4>>{{-1, 0, 5, 7},
                                                {0, -1, 5, 7},
                                                {0, 0, 6, 7},
                                                {0, 0, 5, 8},
                                                {2, 2, 2, 5},
                                                {2, 5, 4, 5},
                                                {4, 0, 3, 7},
                                                {0, kMax, 5, 7},
                                                {-kMax, -kMax, kMax, kMax}}) {
    SCOPED_TRACE(testing::Message() << left << "," << top << " to " << right << "," << bottom);
    EXPECT_EQ(CropPixmap(pixmap, left, top, right, bottom), XpErrFailed);
    EXPECT_TRUE(SamePicture(before, pixmap));
  }
}

TEST(ResampleTest, CropKeepsTheBlock) {
  std::mt19937 random(5);
  for (const auto& [left, top, right, bottom] : std::vector<std::array<std::int32_t, 4>>{
           {0, 0, 67, 41}, {1, 2, 66, 40}, {66, 40, 67, 41}, {0, 5, 3, 6}}) {
    SCOPED_TRACE(testing::Message() << left << "," << top << " to " << right << "," << bottom);
    XpPixmap24NoHandle pixmap;
    ASSERT_EQ(pixmap.Allocate(67, 41), XpOk);
    FillRandom(pixmap, random);
    const Channel before = Channel::Of(pixmap, 1);
    ASSERT_EQ(CropPixmap(pixmap, left, top, right, bottom), XpOk);
    const Channel after = Channel::Of(pixmap, 1);
    ASSERT_EQ(after.width, right - left);
    ASSERT_EQ(after.height, bottom - top);
    for (std::int32_t y = top; y < bottom; ++y) {
      for (std::int32_t x = left; x < right; ++x) ASSERT_EQ(after.At(x - left, y - top), before.At(x, y));
    }
  }
}

using Rgb = std::array<int, 3>;
struct ColourCase {
  Rgb colour, fromAdobe, fromWideGamut;
};

Rgb Converted(const Rgb& colour, void (*convert)(XpPixmap24NoHandle&)) {
  XpPixmap24NoHandle pixmap;
  if (pixmap.Allocate(5, 3) != XpOk) return {};
  std::fill_n(pixmap.data, pixmap.size, static_cast<unsigned char>(7));
  for (std::size_t c = 0; c < 3; ++c)
    pixmap.GetPlane(0)->Row(2)[12 + c] = static_cast<unsigned char>(colour[2 - c]);
  convert(pixmap);
  const unsigned char* pixel = pixmap.GetPlane(0)->Row(2) + 12;
  EXPECT_EQ(pixel[3], 7) << "the padding";
  return {pixel[2], pixel[1], pixel[0]};
}

TEST(AdobeRgbTest, ColoursComeToSrgbAndGreyStaysGrey) {
  XpPixmap24NoHandle empty;
  ConvertAdobeRgbToSrgb(empty);
  EXPECT_EQ(empty.data, nullptr);
  // Each factor shows in one of these.
  const ColourCase cases[] = {
      {{0, 255, 0}, {0, 255, 0}, {0, 255, 0}},
      {{255, 255, 255}, {255, 255, 255}, {255, 255, 255}},
      {{135, 192, 153}, {102, 194, 153}, {10, 205, 151}},
      {{191, 194, 63}, {191, 196, 43}, {195, 201, 12}},
      {{230, 111, 152}, {255, 111, 155}, {255, 42, 155}},
      {{80, 151, 225}, {0, 153, 229}, {0, 156, 231}},
      {{139, 3, 241}, {164, 0, 246}, {177, 0, 250}},
  };
  for (const auto& [colour, fromAdobe, fromWideGamut] : cases) {
    SCOPED_TRACE(testing::PrintToString(colour));
    EXPECT_EQ(Converted(colour, ConvertAdobeRgbToSrgb), fromAdobe);
    EXPECT_EQ(Converted(colour, ConvertWideGamutRgbToSrgb), fromWideGamut);
  }
  for (int level = 0; level < 256; ++level) {
    const Rgb grey = Converted({level, level, level}, ConvertAdobeRgbToSrgb);
    EXPECT_EQ(grey, (Rgb{grey[1], grey[1], grey[1]})) << level;
  }
}

}  // namespace
