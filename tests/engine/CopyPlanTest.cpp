// Which frames of a clip are copied, by numbers alone: coded pictures in, runs of frames out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <string_view>

#include "engine/CopyPlan.h"

namespace vrx::engine {

void PrintTo(const FrameInterval& interval, std::ostream* out) {
  *out << interval.first << "-" << interval.end;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kTicks = 10;  // of a frame

/// Pictures in decoding order by their places in the order of display; a start has a bar before it, a
/// picture that is not whole a question mark: "|0 3 1 2 |4". Picture n has the time n * kTicks.
PacketIndex Index(std::string_view text) {
  PacketIndex index;
  index.isFromBeginning = true;
  for (std::size_t at = 0; at < text.size();) {
    CodedPicture picture{0, false, true};
    for (; text[at] == '|' || text[at] == '?'; ++at)
      (text[at] == '|' ? picture.isStart : picture.isWhole) ^= true;
    for (; at < text.size() && text[at] != ' '; ++at)
      picture.ticks = picture.ticks * 10 + (text[at] - '0') * kTicks;
    at += at < text.size() ? 1 : 0;
    index.pictures.push_back(picture);
  }
  return index;
}

ClipToCopy Clip(std::int64_t count, std::int64_t firstTick = 0, std::int64_t step = kTicks) {
  ClipToCopy clip;
  clip.frameCount = count;
  clip.tickOfFrame = [=](std::int64_t frame) { return firstTick + frame * step; };
  return clip;
}

std::vector<CopyRun> Runs(const PacketIndex& index, const ClipToCopy& clip) {
  return FindCopyRuns(index, FramesOfPictures(index, clip), clip);
}

std::vector<FrameInterval> Intervals(const std::vector<CopyRun>& runs) {
  std::vector<FrameInterval> intervals;
  for (const CopyRun& run : runs)
    intervals.push_back({run.firstFrame, run.firstFrame + static_cast<std::int64_t>(run.pictures.size())});
  return intervals;
}

struct Case {
  const char* what;
  const char* pictures;
  ClipToCopy clip;
  std::vector<FrameInterval> copied;
};

ClipToCopy Changed(ClipToCopy clip, std::vector<FrameInterval> changed) {
  clip.changed = std::move(changed);
  return clip;
}
ClipToCopy FromOpenGroups(ClipToCopy clip) {
  clip.startsAtOpenGroups = true;
  return clip;
}
ClipToCopy AtLeast(ClipToCopy clip, std::int64_t frames) {
  clip.leastFrames = frames;
  return clip;
}

TEST(CopyPlanTest, RunsBeginAtStartsAndEndWhereAllPicturesBeforeAreThere) {
  const std::vector<Case> cases{
      {"the whole source", "|0 3 1 2 |4 7 5 6", Clip(8), {{0, 8}}},
      {"an overlay on frame 2 ends the run before the picture that comes early",
       "|0 3 1 2 |4 7 5 6",
       Changed(Clip(8), {{2, 3}}),
       {{0, 1}, {4, 8}}},
      {"an overlay on the key frame",
       "|0 3 1 2 |4 7 5 6 |8 9",
       Changed(Clip(10), {{4, 5}}),
       {{0, 4}, {8, 10}}},
      {"a cut behind a key frame goes to the next", "|0 1 2 |3 4 5", Clip(5, 10), {{2, 5}}},
      {"a cut at a key frame", "|0 1 2 |3 4 5", Clip(3, 30), {{0, 3}}},
      {"a cut in the middle of a group ends with what needs nothing later",
       "|0 4 2 1 3 8 6 5 7",
       Clip(7),
       {{0, 5}}},
      {"a group that needs the one before is copied with it", "|0 2 1 |5 3 4 7 6", Clip(8), {{0, 8}}},
      {"but no run begins there", "|0 2 1 |5 3 4 7 6", AtLeast(Changed(Clip(8), {{0, 1}}), 2), {}},
      {"unless what comes before can be left out",
       "|0 2 1 |5 3 4 7 6",
       FromOpenGroups(Changed(Clip(8), {{0, 1}})),
       {{5, 8}}},
      {"no start at all", "0 1 2 3", Clip(4), {}},
      {"a picture that the container hides", "|0 ?1 2 |3 4", Clip(5), {{0, 1}, {3, 5}}},
      {"runs that are too short", "|0 1 2 |3 4 5 6", AtLeast(Changed(Clip(7), {{2, 3}}), 3), {{3, 7}}},
      {"a short run that is the whole clip", "|0 1 2", AtLeast(Clip(2), 12), {{0, 2}}},
      {"two pictures of one time", "|0 1 |1 2 |3 4", Clip(5), {{0, 1}, {3, 5}}},
      {"the deepest reordering", "|0 17 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16", Clip(18), {{0, 18}}},
      {"one that is deeper", "|0 18 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17", Clip(19), {{0, 1}}},
      {"a source that ends early", "|0 1 2", Clip(6), {{0, 2}}},
  };
  for (const Case& one : cases)
    EXPECT_EQ(Intervals(Runs(Index(one.pictures), one.clip)), one.copied) << one.what << ": " << one.pictures;
}

TEST(CopyPlanTest, OtherFrameTimesAreNotCopied) {
  const PacketIndex index = Index("|0 1 2 3 |4 5 6 7");
  EXPECT_THAT(Runs(index, Clip(16, 0, kTicks / 2)), IsEmpty()) << "each picture twice";
  EXPECT_THAT(Runs(index, AtLeast(Clip(4, 0, kTicks * 2), 2)), IsEmpty()) << "every second picture";
  PacketIndex late = index;
  for (CodedPicture& picture : late.pictures) picture.ticks += 2 * kTicks;
  EXPECT_THAT(Intervals(Runs(late, Clip(11))), ElementsAre(FrameInterval{6, 9}))
      << "the first picture also shows before its time, and the last is held";
  late.isFromBeginning = false;
  EXPECT_THAT(Intervals(Runs(late, Clip(11))), ElementsAre(FrameInterval{2, 9}))
      << "pictures that were not read show before";
  EXPECT_THAT(Intervals(Runs(index, Clip(8, 4))), ElementsAre(FrameInterval{0, 8})) << "frames between ticks";
}

TEST(CopyPlanTest, RunsKnowTheirDelayAndWhereOthersCouldBegin) {
  const auto runs = Runs(Index("|0 4 2 1 3 |5 8 6 7 |11 9 10 12"), Clip(13));
  ASSERT_EQ(runs.size(), 1u);
  EXPECT_EQ(runs[0].delay, 2);
  EXPECT_THAT(runs[0].starts, ElementsAre(0, 5)) << "11 needs what is shown before it";
  EXPECT_THAT(Runs(Index("|0 3 |2 1"), Clip(4)).at(0).starts, ElementsAre(0)) << "3 needs what is before 2";
  EXPECT_EQ(Runs(Index("|0 4 2 1 3"), Changed(Clip(5), {{3, 4}})).at(0).delay, 0) << "1 is not copied";
  std::vector<std::int64_t> frames;
  for (const CopyRun::Picture& picture : runs[0].pictures) {
    frames.push_back(picture.frame);
    EXPECT_EQ(picture.ticks, picture.frame * kTicks);
  }
  EXPECT_THAT(frames, ElementsAre(0, 4, 2, 1, 3, 5, 8, 6, 7, 11, 9, 10, 12));
}

TEST(CopyPlanTest, LongClipsOfAFewPicturesArePlannedAtOnce) {
  constexpr std::int64_t kLongest = 0x7FFFFFFF;
  EXPECT_THAT(Intervals(Runs(Index("|0 1 2 3"), Clip(kLongest))), ElementsAre(FrameInterval{0, 3}));
  EXPECT_THAT(Runs(Index("|0 1 2 3"), Clip(kLongest, 0, 0)), IsEmpty());
}

/// Random groups, closed and open, with hidden pictures and overlays: what every run has to keep.
TEST(CopyPlanTest, RandomRunsAreWholeAndUntouched) {
  std::mt19937 random(7);
  const auto pick = [&](std::int64_t most) {
    return static_cast<std::int64_t>(random() % static_cast<unsigned>(most + 1));
  };
  std::int64_t copied = 0;
  for (int round = 0; round < 2000; ++round) {
    PacketIndex index;
    index.isFromBeginning = pick(1) == 0;
    std::int64_t place = 0;
    while (place < 60) {
      const std::int64_t leading = pick(3) == 0 ? pick(2) : 0;  // shown before the start, decoded after it
      index.pictures.push_back({(place + leading) * kTicks, true, pick(40) != 0});
      for (std::int64_t i = 0; i < leading; ++i)
        index.pictures.push_back({(place + i) * kTicks, false, true});
      place += leading + 1;
      for (std::int64_t anchors = pick(4); anchors > 0; --anchors) {
        const std::int64_t between = pick(3);
        index.pictures.push_back({(place + between) * kTicks, false, true});
        for (std::int64_t i = 0; i < between; ++i)
          index.pictures.push_back({(place + i) * kTicks, false, pick(60) != 0});
        place += between + 1;
      }
    }
    ClipToCopy clip = Clip(pick(70) + 1, pick(20) * kTicks);
    clip.startsAtOpenGroups = pick(1) == 0;
    clip.leastFrames = pick(6) + 1;
    for (std::int64_t at = pick(30); at < clip.frameCount; at += 10 + pick(30))
      clip.changed.push_back({at, at + 1 + pick(5)});
    std::int64_t end = 0;
    for (const CopyRun& run : Runs(index, clip)) {
      ASSERT_GE(run.firstFrame, end);
      end = run.firstFrame + static_cast<std::int64_t>(run.pictures.size());
      ASSERT_LE(end, clip.frameCount);
      copied += end - run.firstFrame;
      // The pictures are a stretch of the decoding order, but for those left out after an open start.
      auto at = std::ranges::find(index.pictures, run.pictures[0].ticks, &CodedPicture::ticks);
      ASSERT_TRUE(at->isStart);
      std::vector<std::int64_t> frames;
      for (const CopyRun::Picture& picture : run.pictures) {
        while (clip.startsAtOpenGroups && at->ticks != picture.ticks && at->ticks < run.pictures[0].ticks)
          ++at;
        ASSERT_EQ(at->ticks, picture.ticks);
        ASSERT_TRUE(at++->isWhole);
        ASSERT_EQ(picture.ticks, clip.tickOfFrame(picture.frame));
        ASSERT_TRUE(std::ranges::none_of(clip.changed, [&](const FrameInterval& one) {
          return picture.frame >= one.first && picture.frame < one.end;
        }));
        ASSERT_LE(static_cast<std::int64_t>(frames.size()) - run.delay, picture.frame - run.firstFrame);
        frames.push_back(picture.frame);
      }
      std::ranges::sort(frames);
      for (std::size_t i = 0; i < frames.size(); ++i)
        ASSERT_EQ(frames[i], run.firstFrame + static_cast<std::int64_t>(i));
    }
  }
  EXPECT_GT(copied, 20'000);
}

}  // namespace
}  // namespace vrx::engine
