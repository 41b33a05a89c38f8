// Where a movie is cut into pieces: places that cost no quality, and pieces of about equal work.
#include <algorithm>
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "host/pieces/JobRun.h"
#include "host/pieces/PieceCuts.h"

namespace {

using namespace vrx::host;
using testing::ElementsAre;

EngineSpan Encoded(std::int64_t first, std::int64_t frames) {
  return {.firstFrame = first, .frames = frames, .reason = "overlay"};
}

EngineSpan Copied(std::int64_t first, std::int64_t frames, std::int64_t between) {
  EngineSpan span{.copied = true, .firstFrame = first, .frames = frames};
  for (std::int64_t start = first; start < first + frames; start += between) span.starts.push_back(start);
  return span;
}

std::vector<std::int64_t> CutsOf(const std::vector<EngineSpan>& spans, std::int64_t count) {
  std::vector<std::int64_t> cuts;
  for (const FrameRange& range : PieceCuts(spans).Cut(count)) cuts.push_back(range.first);
  return cuts;
}

TEST(PieceCutsTest, PiecesHaveEqualWorkNotEqualLength) {
  EXPECT_THAT(CutsOf({Encoded(0, 1000)}, 4), ElementsAre(0, 250, 500, 750));
  // A hundred encoded frames are as much work as five thousand copied ones.
  EXPECT_THAT(CutsOf({Copied(0, 5000, 50), Encoded(5000, 100)}, 2), ElementsAre(0, 5000));
  EXPECT_THAT(CutsOf({Encoded(0, 300), Copied(300, 5000, 250), Encoded(5300, 100)}, 5),
              ElementsAre(0, 100, 200, 300, 5300));
  const PieceCuts cuts({Encoded(0, 300), Copied(300, 5000, 250)});
  EXPECT_EQ(cuts.GetWork({299, 302}), PieceCuts::kEncodedWork + 2 * PieceCuts::kCopiedWork);
}

TEST(PieceCutsTest, PlacesToCutDecideHowManyPiecesThereAre) {
  struct Case {
    std::vector<EngineSpan> spans;
    std::int64_t count;
    std::vector<std::int64_t> cuts;
  };
  const EngineSpan sound{.track = VRXAudioTrack, .frames = 500};
  for (const Case& c : {Case{{Encoded(0, 23)}, 3, {0}},
                        {{Encoded(0, 24)}, 3, {0, 8, 16}},
                        {{Encoded(0, 24)}, 30, {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,
                                                12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23}},
                        {{Copied(0, 500, 1000)}, 4, {0}},
                        {{Copied(0, 500, 200)}, 4, {0, 200, 400}},
                        {{Encoded(0, 10), Encoded(10, 10), Copied(20, 300, 400)}, 9, {0, 10, 20}},
                        // All places lie at the end, and each of the pieces still gets one.
                        {{Copied(0, 900, 1000), Encoded(900, 1), Encoded(901, 1)}, 3, {0, 900, 901}},
                        {{Encoded(0, 500), sound}, 1, {0}},
                        {{Encoded(0, 500), sound}, 2, {0, 250}}}) {
    EXPECT_EQ(CutsOf(c.spans, c.count), c.cuts);
  }
}

TEST(PieceCutsTest, JobsHaveTenSecondsToEncodeEach) {
  EXPECT_EQ(UsefulPieces(8, 749, {1, 25}), 2u);
  EXPECT_EQ(UsefulPieces(8, 750, {1, 25}), 3u);
  EXPECT_EQ(UsefulPieces(2, 750, {1, 25}), 2u);
  EXPECT_EQ(UsefulPieces(8, 0, {1, 25}), 1u);
  EXPECT_EQ(UsefulPieces(8, 750, {1, 0}), 1u);
}

TEST(PieceCutsTest, AnyMovieIsCoveredWithCutsWhereTheyCostNothing) {
  std::mt19937 random(18);
  const auto upTo = [&](int most) { return std::uniform_int_distribution(1, most)(random); };
  for (int round = 0; round < 500; ++round) {
    std::vector<EngineSpan> spans;
    std::set<std::int64_t> places;
    std::int64_t frames = 0;
    for (int i = upTo(6); i > 0; --i) {
      const int length = upTo(200);
      spans.push_back(upTo(2) == 1 ? Encoded(frames, length) : Copied(frames, length, upTo(90)));
      const EngineSpan& span = spans.back();
      places.insert(frames);
      places.insert(span.starts.begin(), span.starts.end());
      for (int frame = 1; !span.copied && length >= 24 && frame < length; ++frame)
        places.insert(frames + frame);
      frames += length;
    }
    const PieceCuts cuts(spans);
    const int count = upTo(7);
    const std::vector<FrameRange> ranges = cuts.Cut(count);
    ASSERT_EQ(ranges.size(), std::min<std::size_t>(static_cast<std::size_t>(count), places.size()));
    std::int64_t next = 0, most = 0;
    for (const FrameRange& range : ranges) {
      EXPECT_EQ(range.first, next);
      EXPECT_LT(range.first, range.end);
      EXPECT_TRUE(places.contains(range.first)) << range.first;
      next = range.end;
      most = std::max(most, cuts.GetWork(range));
    }
    EXPECT_EQ(next, frames);
    std::int64_t widest = 0;  // work between two places
    places.insert(frames);
    for (auto place = std::next(places.begin()); place != places.end(); ++place)
      widest = std::max(widest, cuts.GetWork({*std::prev(place), *place}));
    EXPECT_LE(most, cuts.GetWork({0, frames}) / count + 2 * widest);
  }
}

}  // namespace
