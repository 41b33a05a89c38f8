// The arithmetic from a document's milliseconds to frames, and the records that carry it to the engine.
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "src/project/ProjectPath.h"
#include "src/timeline/TimelineBuilder.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using vrx::timeline::ClipSums;
using vrx::timeline::FrameClock;

void AddClip(TKLXOutputXml::Track& track, double start, double end, bool overlay = true,
             std::int32_t type = 0) {
  auto& clip = *track.emplace_back(new TKLXOutputXmlInfo);
  clip.sourceFile = u"/a.mp4";
  clip.sourceType = type;
  clip.startTime = start;
  clip.endTime = end;
  clip.enableOverlay = overlay;
}

TEST(FrameClockTest, TimeIsRoundedDownToAFrame) {
  struct Case {
    std::uint64_t value, scale;
    double milliseconds;
    std::int64_t frameTime;
  };
  for (const Case& c :
       {Case{1001, 30000, 1000, 29 * 1001}, Case{1001, 30000, 1001, 30 * 1001}, Case{1, 25, 999.999, 24},
        Case{1, 25, -1, -1}, Case{0, 25, 40, 0}, Case{1, 0, 40, 0}, Case{1, 25, std::nan(""), 0},
        Case{1, 25, 1e300, std::numeric_limits<std::int64_t>::max()},
        Case{1, 25, -1e300, std::numeric_limits<std::int64_t>::min()}}) {
    EXPECT_EQ(FrameClock({c.value, c.scale}).FloorToFrame(c.milliseconds), c.frameTime)
        << c.value << "/" << c.scale << " " << c.milliseconds;
  }
}

TEST(TimelineBuilderTest, SumsFollowTheFileClipsAlone) {
  const vrx::timeline::TimelineContext context{.projectPath = u"/p/x.vrx", .clock = FrameClock({1, 25})};
  TKLXOutputXml::Track track;
  AddClip(track, 0, 2000);
  AddClip(track, 1000, 3000, false);
  AddClip(track, 0, 500, true, VRXSourceBaseband);
  AddClip(track, 400, 800, true, VRXSourceFileWithGpuBlock);
  VRXTimeline timeline;
  ClipSums sums;
  EXPECT_TRUE(AddVideoTrack(track, context, timeline, sums));
  EXPECT_EQ(sums.overlayDuration, 50 + 10);
  EXPECT_THAT(sums.nonOverlayDurations, ElementsAre(50));
  EXPECT_THAT(sums.clipRanges, ElementsAre(Pair(0, 50), Pair(50, 125), Pair(125, 145)));
  ASSERT_EQ(timeline.video.count, 4u);
  const auto& still = *timeline.video.items[2];
  EXPECT_EQ(still.endTime.value, 500u);
  EXPECT_EQ(still.endTime.scale, 1000u);
}

TEST(ProjectPathTest, RelativePathsCountFromTheDocumentsFolder) {
  for (const auto& [path, resolved] : {std::pair{u"", u""},
                                       {u"clips\\a.mp4", u"/p/clips/a.mp4"},
                                       {u"Z:\\m\\a.mp4", u"/m/a.mp4"},
                                       {u"Q:\\a.mp4", u"Q:\\a.mp4"}}) {
    EXPECT_EQ(vrx::project::ResolvePath(u"/p/x.vrx", path), resolved);
  }
}

TEST(EngineRecordsTest, ArraysGrowAndOwnCopiesOfWhatTheyAreGiven) {
  VRXTimeline timeline;
  VRXFileSourceStreamInfo file(u"/a");
  for (int i = 0; i < 6; ++i) timeline.video.Add(file);
  file.path->Set(u"/changed");
  EXPECT_EQ(dynamic_cast<VRXFileSourceStreamInfo&>(*timeline.video.items[0]).path->Get(), u"/a");

  VRXBasebandSourceStreamInfo still;
  still.reservedTime = {5, 7};
  timeline.audio.Add(still);
  EXPECT_EQ(dynamic_cast<VRXBasebandSourceStreamInfo&>(*timeline.audio.items[0]).reservedTime.value, 0u);

  VRXMetaData item;
  const std::uint8_t bytes[] = {1, 2, 3};
  item.SetData(bytes, sizeof(bytes));
  VRXMetaDataSetting metaData;
  metaData.Add(item);
  const VRXMetaDataSetting copy(metaData);
  EXPECT_NE(copy.items[0]->data, metaData.items[0]->data);
  EXPECT_EQ(copy.items[0]->data[2], 3);
}

}  // namespace
