// Still pictures that a host lays onto frames: where they land, how they are scaled, and what lies on top.
#include <atomic>
#include <thread>

#include <gmock/gmock.h>

#include "imaging/pixmap/XpPixmapBilinear.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "overlay/contentimage/KVSContentImagePainterPlugIn.h"
#include "tests/imaging/RandomPixmap.h"

namespace {

using vrx::drawing::Rect;

XpSharedPtr<XpPixmapBase> Solid(int width, int height, std::uint8_t red, std::uint8_t green,
                                std::uint8_t blue) {
  auto* picture = new XpPixmap24;
  EXPECT_EQ(picture->Allocate(width, height), XpOk);
  FillPixmap(*picture, red, green, blue);
  return XpSharedPtr<XpPixmapBase>(picture);
}

std::uint32_t PixelOf(const XpPixmap32& pixmap, int x, int y) {
  const unsigned char* p = pixmap.GetPlane(0)->Row(y) + x * 4;
  return static_cast<std::uint32_t>(p[3]) << 24 | static_cast<std::uint32_t>(p[2]) << 16 |
         static_cast<std::uint32_t>(p[1]) << 8 | p[0];
}

/// The equations, one sample after the other.
unsigned char PlainBilinear(const XpPixmap24& source, int dw, int dh, int x, int y, int c) {
  const auto at = [&](std::int64_t column, std::int64_t row) -> std::uint32_t {
    return source.GetPlane(0)->Row(static_cast<std::int32_t>(row))[column * 3 + c];
  };
  const auto axis = [](std::int64_t i, std::int64_t from, std::int64_t to, std::int64_t& k,
                       std::uint32_t& f) {
    const std::int64_t p = i * ((from << 11) / to) + 5;
    k = p >> 11;
    f = static_cast<std::uint32_t>(p & 0x7FF);
    if (k > from - 2) {
      k = from - 2;
      f = 2047;
    }
  };
  std::int64_t kx = 0, ky = 0;
  std::uint32_t fx = 0, fy = 0;
  axis(x, source.width, dw, kx, fx);
  axis(y, source.height, dh, ky, fy);
  return static_cast<unsigned char>((at(kx, ky) * (2048 - fx) * (2048 - fy) +
                                     at(kx + 1, ky) * fx * (2048 - fy) + at(kx, ky + 1) * (2048 - fx) * fy +
                                     at(kx + 1, ky + 1) * fx * fy) >>
                                    22);
}

TEST(PixmapBilinearTest, ShrinksAndGrowsLikeTheEquationsWhereverThePictureLies) {
  std::mt19937 random(11);
  for (int round = 0; round < 400; ++round) {
    const int sw = Between(random, 2, 40), sh = Between(random, 2, 40);
    const int dw = Between(random, 1, 60), dh = Between(random, 1, 60);
    const int x0 = Between(random, -30, 30), y0 = Between(random, -30, 30);
    if (dw == sw && dh == sh) continue;
    XpPixmap24 source, dest;
    ASSERT_EQ(source.Allocate(sw, sh), XpOk);
    ASSERT_EQ(dest.Allocate(Between(random, 1, 40), Between(random, 1, 40)), XpOk);
    FillRandom(source, random);
    FillRandom(dest, random);
    const Bytes before(dest.data, dest.data + dest.size);
    StretchPixmapBilinear(dest, x0, y0, dw, dh, source);
    for (int y = 0; y < dest.height; ++y) {
      for (int i = 0; i < dest.width * 3; ++i) {
        const int x = i / 3;
        const bool isInside = x >= x0 && x < x0 + dw && y >= y0 && y < y0 + dh;
        const auto expected = isInside ? PlainBilinear(source, dw, dh, x - x0, y - y0, i % 3)
                                       : before[static_cast<std::size_t>(y * dest.GetPlane(0)->rowBytes + i)];
        ASSERT_EQ(dest.GetPlane(0)->Row(y)[i], expected)
            << sw << "x" << sh << " to " << dw << "x" << dh << " at " << x << "," << y;
      }
    }
  }
}

TEST(PixmapBilinearTest, PicturesOfOnePixelAndWrongPixmapsAreSafe) {
  const auto one = Solid(1, 1, 10, 20, 30);
  XpPixmap24 dest;
  ASSERT_EQ(dest.Allocate(3, 2), XpOk);
  StretchPixmapBilinear(dest, 0, 0, 3, 2, *one);
  EXPECT_THAT(Bytes(dest.GetPlane(0)->Row(1), dest.GetPlane(0)->Row(1) + 9),
              testing::ElementsAre(30, 20, 10, 30, 20, 10, 30, 20, 10));
  const Bytes before(dest.data, dest.data + dest.size);
  XpPixmap32 other;
  StretchPixmapBilinear(dest, 0, 0, 3, 2, other);
  ASSERT_EQ(other.Allocate(2, 2), XpOk);
  StretchPixmapBilinear(dest, 0, 0, 3, 2, other);
  StretchPixmapBilinear(dest, 0, 0, 0, 2, *one);
  StretchPixmapBilinear(dest, 0, 0, 3, -1, *one);
  StretchPixmapBilinear(dest, 100, 0, 3, 2, *one);
  EXPECT_EQ(before, Bytes(dest.data, dest.data + dest.size));
  EXPECT_EQ(MakeOpaquePixmap32(other), nullptr);
  EXPECT_EQ(MakeOpaquePixmap32(XpPixmap24()), nullptr);
  EXPECT_EQ(PixelOf(*MakeOpaquePixmap32(*one), 0, 0), 0xFF0A141Eu);
}

class ContentImageTest : public testing::Test {
 protected:
  ContentImageTest() {
    m_info.videoWidth = 96;
    m_info.videoHeight = 54;  // 1/20 of the layout's frame
  }
  void Add(const XpSharedPtr<XpPixmapBase>& picture, const Rect& rect) {
    m_record.images.Add({picture, rect});
  }
  const XpPixmap32& Drawn(int width = 96, int height = 54) {
    m_holder = PixmapHolder(new XpPixmap32);
    EXPECT_EQ(m_holder->Allocate(width, height), XpOk);
    EXPECT_TRUE(m_painter.SetPainterInfo(&m_info, &m_record));
    EXPECT_TRUE(m_painter.DrawForVideo(1, 2, 3, 4, m_holder));
    return *m_holder;
  }

  PainterInfo m_info;
  ContentImageInfo m_record;
  KVSContentImagePainterPlugIn m_painter;
  PixmapHolder m_holder;
};

constexpr std::uint32_t kRed = 0xFFFF0000, kBlue = 0xFF0000FF, kClear = 0;

TEST_F(ContentImageTest, PicturesFillTheirPlacesInOrderAndEmptyOnesAreSkipped) {
  for (const bool useOverlayImages : {false, true}) {
    m_record = ContentImageInfo();
    m_record.useOverlayImages = useOverlayImages;
    Add(Solid(7, 5, 255, 0, 0), {200, 100, 800, 500});
    Add({}, {0, 0, 1920, 1080});
    Add(Solid(40, 40, 0, 0, 255), {400, 300, 1000, 700});
    const XpPixmap32& frame = Drawn();
    EXPECT_EQ(PixelOf(frame, 9, 5), kClear);
    EXPECT_EQ(PixelOf(frame, 10, 4), kClear);
    EXPECT_EQ(PixelOf(frame, 10, 5), kRed);
    EXPECT_EQ(PixelOf(frame, 39, 14), kRed);
    EXPECT_EQ(PixelOf(frame, 20, 15), kBlue) << "the later one lies on top";
    EXPECT_EQ(PixelOf(frame, 49, 34), kBlue);
    EXPECT_EQ(PixelOf(frame, 50, 34), kClear);
    EXPECT_EQ(PixelOf(frame, 49, 35), kClear);
  }
}

TEST_F(ContentImageTest, PlacesFollowTheSizeOfTheFrameAndAreClippedToIt) {
  Add(Solid(30, 30, 255, 0, 0), {-960, -540, 960, 540});
  Add(Solid(3, 3, 0, 0, 255), {1900, 1000, 4000, 4000});
  const XpPixmap32& frame = Drawn(192, 108);
  EXPECT_EQ(PixelOf(frame, 0, 0), kRed);
  EXPECT_EQ(PixelOf(frame, 95, 53), kRed);
  EXPECT_EQ(PixelOf(frame, 96, 53), kClear);
  EXPECT_EQ(PixelOf(frame, 191, 107), kBlue);
  m_record.images.Clear();
  Add(Solid(2, 2, 255, 0, 0), {0, 0, 1920, 1080});
  const XpPixmap32& small = Drawn(13, 7);
  EXPECT_EQ(PixelOf(small, 0, 0), kRed);
  EXPECT_EQ(PixelOf(small, 12, 6), kRed);
  for (const bool useOverlayImages : {false, true}) {
    m_record.useOverlayImages = useOverlayImages;
    m_record.images.Clear();
    Add(Solid(3, 3, 255, 0, 0), {0, 0, 1919, 1079});
    const XpPixmap32& inside = Drawn();
    EXPECT_EQ(PixelOf(inside, 94, 52), kRed);
    EXPECT_EQ(PixelOf(inside, 95, 52), kClear) << "parts of a pixel are left out";
    EXPECT_EQ(PixelOf(inside, 94, 53), kClear);
  }
}

TEST_F(ContentImageTest, OnlyPicturesThatShrinkInBothDirectionsAreSmoothed) {
  auto* stripes = new XpPixmap24;
  ASSERT_EQ(stripes->Allocate(40, 40), XpOk);
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 40; ++x) std::fill_n(stripes->GetPlane(0)->Row(y) + x * 3, 3, x % 2 == 0 ? 0 : 255);
  }
  const XpSharedPtr<XpPixmapBase> picture(stripes);
  const auto isSmoothed = [&](const Rect& rect) {
    m_record.images.Clear();
    Add(picture, rect);
    const XpPixmap32& frame = Drawn();
    for (int x = 0; x < 20; ++x) {
      const std::uint32_t blue = PixelOf(frame, x, 10) & 0xFF;
      if (blue != 0 && blue != 255) return true;
    }
    return false;
  };
  EXPECT_TRUE(isSmoothed({0, 0, 600, 600}));   // 30 by 30
  EXPECT_FALSE(isSmoothed({0, 0, 600, 900}));  // 30 by 45
  EXPECT_FALSE(isSmoothed({0, 0, 800, 600}));  // 40 by 30
  EXPECT_FALSE(isSmoothed({0, 0, 800, 800}));  // its own size
  EXPECT_FALSE(isSmoothed({0, 0, 1600, 1000}));
}

TEST_F(ContentImageTest, ForeignRecordsAndEmptyHoldersChangeNothing) {
  Add(Solid(2, 2, 255, 0, 0), {0, 0, 1920, 1080});
  Drawn();
  const CaptionInfo caption;
  EXPECT_TRUE(m_painter.SetPainterInfo(&m_info, &caption));
  EXPECT_TRUE(m_painter.SetPainterInfo(nullptr, &m_record));
  const PainterStamp stamp = m_painter.GetContentStamp({});
  EXPECT_TRUE(stamp.isKnown);
  PixmapHolder empty;
  EXPECT_FALSE(m_painter.Draw(0, 0, 0, empty));
  EXPECT_TRUE(m_painter.Draw(0, 0, 0, m_holder));
  EXPECT_EQ(PixelOf(*m_holder, 0, 0), kRed);
  EXPECT_EQ(m_painter.GetContentStamp({.captionMs = 9}), stamp);
  m_painter.SetPainterInfo(&m_info, &m_record);
  EXPECT_NE(m_painter.GetContentStamp({}), stamp);
}

TEST_F(ContentImageTest, PicturesMayBeExchangedBetweenFramesByAnotherThread) {
  ContentImageInfo other;
  for (int i = 0; i < 32; ++i) {
    Add(Solid(2, 2, 255, 0, 0), {i * 60, 0, i * 60 + 60, 1080});
    other.images.Add({Solid(2, 2, 0, 0, 255), {i * 60, 0, i * 60 + 60, 1080}});
  }
  m_record.useOverlayImages = other.useOverlayImages = true;  // copies that the painter alone holds
  Drawn();
  std::atomic<int> configured = 0;
  const std::jthread host([&](const std::stop_token& stop) {
    for (; !stop.stop_requested(); ++configured) {
      m_painter.Configure(&m_info, configured % 2 == 0 ? &other : &m_record);
    }
  });
  for (int i = 0; i < 50 || configured < 500; ++i) {
    FillPixmap(*m_holder, 0, 0, 0, 0);
    m_painter.Draw(0, 0, 0, m_holder);
    const std::uint32_t pixel = PixelOf(*m_holder, 0, 5);
    ASSERT_TRUE(pixel == kRed || pixel == kBlue);
    for (int x = 1; x < 96; ++x) ASSERT_EQ(PixelOf(*m_holder, x, 5), pixel) << "one list a frame, at " << x;
  }
}

}  // namespace
