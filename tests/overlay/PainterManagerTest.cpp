// Painters are made once a kind, configured, and drawn from the lowest layer to the highest.
#include <gmock/gmock.h>

#include "tests/overlay/FakePainter.h"

namespace {

using testing::ElementsAre;

class PainterManagerTest : public FakePaintersTest {
 protected:
  PainterManagerTest() { EXPECT_EQ(holder->Allocate(4, 4), XpOk); }
  std::vector<std::string> DrawAll() {
    journal.clear();
    EXPECT_TRUE(painters->DrawAllForVideo(0, 0, 0, 0, holder));
    return journal;
  }

  PixmapHolder holder{new XpPixmap32};
  std::int32_t id = -7;
};

TEST_F(PainterManagerTest, LayersDecideTheOrderOfThoseThatAreEnabled) {
  for (const std::int32_t type : {-1, 2, 4, INT32_MAX, INT32_MIN}) {
    EXPECT_FALSE(painters->CreatePainter(id, type, 1)) << type << ", which nobody makes";
  }
  EXPECT_EQ(id, -7);
  ASSERT_TRUE(painters->CreatePainter(id, 3, 5));
  ASSERT_TRUE(painters->CreatePainter(id, 0, 1));
  ASSERT_TRUE(painters->CreatePainter(id, 1, 1));
  EXPECT_EQ(id, 2);
  EXPECT_FALSE(painters->IsAnyDrawable());
  for (std::int32_t i = 0; i < 3; ++i) EXPECT_TRUE(painters->EnablePainter(i, true));
  EXPECT_THAT(DrawAll(), ElementsAre("0video", "1video", "3video"));
  painters->EnablePainter(1, false);
  EXPECT_THAT(DrawAll(), ElementsAre("1video", "3video"));
  PixmapHolder empty;
  EXPECT_FALSE(painters->DrawAllForVideo(0, 0, 0, 0, empty));
  EXPECT_TRUE(painters->DrawPainter(1, 0, 0, 0, holder));
  EXPECT_FALSE(painters->DrawPainter(1, 0, 0, 0, empty));
  EXPECT_FALSE(painters->DrawPainter(9, 0, 0, 0, holder));
  Painter(0).drawable = false;
  EXPECT_TRUE(painters->IsAnyDrawable());
  Painter(2).drawable = false;
  EXPECT_FALSE(painters->IsAnyDrawable());
}

TEST_F(PainterManagerTest, ConfigurationMakesEachPainterOnce) {
  painters->SetPainterInfo(nullptr);
  PainterInfo info;
  painters->SetPainterInfo(&info);
  EXPECT_EQ(painters->GetPainter(0), nullptr);
  EXPECT_THAT(DrawAll(), ElementsAre());
  info.captionInfo.valid = info.templateInfo.valid = info.tennisMetaInfo.valid = info.contentImageInfo.valid =
      true;
  journal.clear();
  painters->SetPainterInfo(&info);
  painters->SetPainterInfo(&info);
  EXPECT_THAT(journal, ElementsAre("1info", "3info", "1info", "3info"));
  EXPECT_EQ(painters->FindPainterByType(3), painters->GetPainter(1));
  info.captionInfo.valid = false;
  painters->SetPainterInfo(&info);
  EXPECT_THAT(DrawAll(), ElementsAre("1video", "3video"));  // stays enabled

  painters->ClearPainters();
  EXPECT_EQ(painters->FindPainterByType(3), nullptr);
  ASSERT_TRUE(painters->CreatePainter(id, 3, 1));
  EXPECT_EQ(id, 2);
}

TEST_F(PainterManagerTest, VideoPlacesFollowLayoutSizeAndOutput) {
  using vrx::drawing::Rect;
  painters->SetOutputSize(1280, 720);
  Rect rect;
  painters->SetVideoLayout(2, 0);
  EXPECT_TRUE(painters->GetVideoRect(1, rect, true));
  EXPECT_EQ(rect, (Rect{986, 543, 1253, 693}));
  painters->SetVideoLayout(2, 2);
  EXPECT_TRUE(painters->GetVideoRect(1, rect, false));
  EXPECT_EQ(rect, (Rect{1280, 702, 1880, 1040}));
  bool hasSizes = true;
  for (const std::int32_t unknown : {16, 99}) {
    painters->SetVideoLayout(unknown, 0);
    EXPECT_TRUE(painters->GetVideoRect(0, rect, true));
    EXPECT_EQ(rect, (Rect{1280, 702, 1880, 1040})) << "stays as it is";
    EXPECT_FALSE(painters->GetVideoLayoutFlag(hasSizes));
    EXPECT_TRUE(hasSizes);
  }
  painters->SetVideoLayout(7, 0);
  EXPECT_TRUE(painters->GetVideoRect(9, rect, true));
  EXPECT_TRUE(painters->GetVideoLayoutFlag(hasSizes));
  EXPECT_FALSE(hasSizes);
}

}  // namespace
