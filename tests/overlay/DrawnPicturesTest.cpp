// The pictures that the build draws: all are there in the sizes of the layouts, and animations move evenly
// about a place that stays.
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>

#include <gmock/gmock.h>

#include "overlay/resources/LoadResources.h"
#include "overlay/resources/PictureFile.h"
#include "overlay/resources/PictureTable.h"

namespace {

using namespace vrx::overlay;

int AlphaAt(const XpPixmapBase& picture, int x, int y) {
  return picture.data[(y * picture.width + x) * 4 + 3];
}

template <class Visit>
void ForEachPixel(const XpPixmapBase& picture, Visit visit) {
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) visit(x, y);
  }
}

/// Only alpha counts where both are clear.
int CountDifferences(const XpPixmapBase& a, const XpPixmapBase& b) {
  int differences = 0;
  ForEachPixel(a, [&](int x, int y) {
    const bool isVisible = AlphaAt(a, x, y) != 0 || AlphaAt(b, x, y) != 0;
    const auto offset = static_cast<std::size_t>(y * a.width + x) * 4;
    if (isVisible && std::memcmp(a.data + offset, b.data + offset, 4) != 0) ++differences;
  });
  return differences;
}

TEST(DrawnPicturesTest, EachFileHasItsNominalSizeAndSomethingToSee) {
  for (const PictureFile& file : ListPictureFiles()) {
    SCOPED_TRACE(std::string(file.name.ToNarrow().AsView()));
    const PainterPicture picture = LoadResourcePicture(file.name);
    ASSERT_EQ(picture->width, file.width);
    ASSERT_EQ(picture->height, file.height);
    ASSERT_EQ(picture->GetPlaneBitsPerPixel(0), 32u);
    int visible = 0, strongest = 0;
    ForEachPixel(*picture, [&](int x, int y) {
      visible += AlphaAt(*picture, x, y) != 0;
      strongest = std::max(strongest, AlphaAt(*picture, x, y));
    });
    EXPECT_GT(visible, file.width * file.height / 25);
    EXPECT_GT(strongest, 255 / 4);
  }
}

TEST(DrawnPicturesTest, ClearPixelsHaveTheColourOfTheirVisibleNeighbours) {
  for (const char16_t* name : {u"TennisMeta\\blue.bmp", u"GPS\\Theme_Small_D\\ldk_ak_gps_position.bmp",
                               u"TennisMeta\\Mov_TimeTop.bmp"}) {
    const PainterPicture picture = LoadResourcePicture(name);
    int edges = 0;
    ForEachPixel(*picture, [&](int x, int y) {
      if (x == 0 || AlphaAt(*picture, x, y) == 0 || AlphaAt(*picture, x - 1, y) != 0) return;
      // The other visible neighbours of the clear pixel may be nearer in the order of the search.
      const unsigned char* clear = picture->data + (y * picture->width + x - 1) * 4;
      bool isKnown = false;
      for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -2; dx <= 0; ++dx) {
          if (x + dx < 0 || y + dy < 0 || y + dy >= picture->height || AlphaAt(*picture, x + dx, y + dy) == 0)
            continue;
          isKnown |= std::memcmp(clear, picture->data + ((y + dy) * picture->width + x + dx) * 4, 3) == 0;
        }
      }
      EXPECT_TRUE(isKnown) << x << ", " << y;
      ++edges;
    });
    EXPECT_GT(edges, 5);
  }
}

/// Degrees clockwise from the left of what lies between two radii about a place.
double TurnOf(const XpPixmapBase& picture, double centreX, double centreY, double from, double to) {
  double sumX = 0.0, sumY = 0.0;
  ForEachPixel(picture, [&](int x, int y) {
    const double dx = x + 0.5 - centreX, dy = y + 0.5 - centreY;
    const double radius = std::hypot(dx, dy);
    if (radius < from || radius > to) return;
    sumX += dx * AlphaAt(picture, x, y);
    sumY += dy * AlphaAt(picture, x, y);
  });
  return std::atan2(-sumY, -sumX) * 180.0 / std::numbers::pi;
}

TEST(DrawnPicturesTest, NeedleOfTheDialTurnsInEvenStepsAndLeavesTheTextsFree) {
  const auto set = LoadTemplateResource(1);
  ASSERT_EQ(set->meterFrames.size(), 61u);
  for (std::size_t n = 0; n < 61; ++n) {
    const XpPixmapBase& frame = *set->meterFrames[n];
    const double turn = TurnOf(frame, 200.0, 190.0, 152.0, 164.0);
    EXPECT_NEAR(std::remainder(turn - 3.0 * static_cast<double>(n), 360.0), 0.0, 0.3) << n;
    if (n > 0) {
      EXPECT_GT(CountDifferences(frame, *set->meterFrames[n - 1]), 100) << n;
    }
    int inside = 0;
    ForEachPixel(frame, [&](int x, int y) {
      if (std::hypot(x + 0.5 - 200.0, y + 0.5 - 190.0) < 147.0) inside += AlphaAt(frame, x, y);
    });
    EXPECT_EQ(inside, 0) << n;
  }
}

/// Rows, counted from below, up to which the picture has the accent's colour: more red than blue.
int LitRows(const XpPixmapBase& picture) {
  int top = picture.height;
  ForEachPixel(picture, [&](int x, int y) {
    const unsigned char* pixel = picture.data + (y * picture.width + x) * 4;
    if (pixel[3] > 200 && pixel[2] > pixel[0] + 100) top = std::min(top, y);
  });
  return picture.height - top;
}

TEST(DrawnPicturesTest, BowAndStepsFillFromBelow) {
  const auto bow = LoadTemplateResource(2);
  ASSERT_EQ(bow->meterFrames.size(), 31u);
  for (std::size_t n = 1; n < 31; ++n) {
    EXPECT_GT(CountDifferences(*bow->meterFrames[n], *bow->meterFrames[n - 1]), 30) << n;
    EXPECT_GE(LitRows(*bow->meterFrames[n]), LitRows(*bow->meterFrames[n - 1])) << n;
  }
  EXPECT_GT(LitRows(*bow->meterFrames[30]), 240);
  const auto steps = LoadTemplateResource(3);
  ASSERT_EQ(steps->meterFrames.size(), 7u);
  for (std::size_t n = 0; n < 7; ++n) {
    EXPECT_EQ(LitRows(*steps->meterFrames[n]), n == 0 ? 0 : 22 * static_cast<int>(n) - 2) << n;
  }
}

TEST(DrawnPicturesTest, SwingsStayInTheirBoxAndEndOverTheZones) {
  const auto set = LoadTennisMetaResource();
  struct View {
    const std::vector<PainterPicture>& frames;
    double turn;  // degrees clockwise about the middle of the box
  };
  for (const View& view :
       {View{set->racketFrames, 0.0}, View{set->foreFrames, -45.0}, View{set->backFrames, 45.0}}) {
    ASSERT_EQ(view.frames.size(), 8u);
    for (std::size_t n = 0; n < 8; ++n) {
      const XpPixmapBase& frame = *view.frames[n];
      if (n > 0) {
        EXPECT_GT(CountDifferences(frame, *view.frames[n - 1]), 2000) << view.turn << ": " << n;
      }
      for (int i = 0; i < 300; ++i) {
        const int edge = std::max(
            {AlphaAt(frame, i, 0), AlphaAt(frame, i, 299), AlphaAt(frame, 0, i), AlphaAt(frame, 299, i)});
        EXPECT_LT(edge, 8) << view.turn << ": " << n << " at " << i;
      }
    }
    // The strings lie under the middle of the first and the last row of zones of both layouts.
    const double angle = view.turn * std::numbers::pi / 180.0;
    for (const auto& [x, y] : {std::pair{124, 200},
                               {174, 200},
                               {124, 75},
                               {174, 75},
                               {99, 175},
                               {199, 100},
                               {130, 60},
                               {170, 60}}) {
      const double dx = x - 150.0, dy = y - 150.0;
      const int atX = static_cast<int>(150.0 + dx * std::cos(angle) - dy * std::sin(angle));
      const int atY = static_cast<int>(150.0 + dx * std::sin(angle) + dy * std::cos(angle));
      const int alpha = AlphaAt(*view.frames[7], atX, atY);
      EXPECT_TRUE(alpha > 20 && alpha < 200) << view.turn << ": " << x << ", " << y << " is " << alpha;
    }
  }
}

}  // namespace
