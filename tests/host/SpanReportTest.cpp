// What is said of the frames that are copied and of those that are encoded.
#include <gmock/gmock.h>

#include "host/SpanReport.h"

namespace {

using namespace vrx;
using namespace vrx::host;
using testing::HasSubstr;

VRXRenderSpan Span(bool copied, std::uint64_t first, std::uint64_t frames, const char* reason = "") {
  return {VRXVideoTrack, copied, false, first, frames, 1, reason, nullptr, 0};
}

check::ProjectReport Report() {
  check::ProjectReport report;
  report.clips.push_back({.track = u"VideoTrack", .clip = 2, .source = u"/a/walk.mp4"});
  report.clips.push_back({.track = u"AudioTrack", .clip = 1, .source = u"/a/music.mp4"});
  report.clips.push_back({.track = u"VideoTrack", .clip = 1, .source = u"/a/ride.mp4"});
  report.videoSettings = std::make_unique<VRXVideoOutputSetting>();
  report.videoSettings->frameDuration = {1, 25};
  return report;
}

TEST(SpanReportTest, SharesAreRoundedButNeverToNothingOrAll) {
  struct Case {
    std::int64_t frames, of;
    const char* text;
  };
  for (const Case& c : {Case{17850, 18000, "99.2 %"},
                        {0, 18000, "0.0 %"},
                        {1, 18000, "0.1 %"},
                        {17999, 18000, "99.9 %"},
                        {18000, 18000, "100 %"},
                        {0, 0, "0.0 %"}}) {
    EXPECT_EQ(ShareText(c.frames, c.of), c.text);
  }
}

TEST(SpanReportTest, FewSpansAreListedAndManyAreSummedUpByReason) {
  EngineSpans spans;
  spans.Add(Span(true, 0, 50));
  spans.Add(Span(false, 50, 25, "overlay\x1b"));
  EXPECT_EQ(SpanLines(spans, Report()),
            "  frames 0 to 49, 0.000 s to 2.000 s: copied (ride.mp4)\n"
            "  frames 50 to 74, 2.000 s to 3.000 s: encoded: overlay? (ride.mp4)\n");
  EXPECT_EQ(PlanText(spans), "50 of 75 frames (66.7 %) are copied");
  spans.Add({VRXAudioTrack, true, false, 0, 75, 0, nullptr, nullptr, 0});
  EXPECT_EQ(PlanText(spans), "50 of 75 frames (66.7 %) are copied, the sound is copied");
  for (std::uint64_t first = 75; first < 115; first += 2) spans.Add(Span(false, first, 2, "seam"));
  EXPECT_EQ(SpanLines(spans, Report()),
            "  1 span, 50 frames: copied\n  20 spans, 40 frames: encoded: seam\n"
            "  1 span, 25 frames: encoded: overlay?\n");
}

TEST(SpanReportTest, MoreSpansThanAreKeptAreCounted) {
  EngineSpans spans;
  const std::vector<std::uint64_t> starts(EngineSpans::kMostStarts / 2 + 1);
  for (std::uint64_t first = 0; first < EngineSpans::kMostSpans + 3; ++first) {
    VRXRenderSpan span = Span(first < 3, first, 2, "seam");
    if (span.copied) span.starts = starts.data();
    if (span.copied) span.startCount = static_cast<std::uint32_t>(starts.size());
    spans.Add(span);
  }
  spans.Add({VRXAudioTrack, false, false, 0, 100, 0, "mixed", nullptr, 0});
  EXPECT_EQ(spans.GetSpans().size(), EngineSpans::kMostSpans + 1);
  ASSERT_NE(spans.FindSound(), nullptr);
  EXPECT_EQ(spans.FindSound()->reason, "mixed");
  EXPECT_EQ(spans.GetSpans()[0].starts.size(), starts.size());
  EXPECT_EQ(spans.GetSpans()[1].starts.size(), starts.size() - 2);
  EXPECT_TRUE(spans.GetSpans()[2].starts.empty());
  EXPECT_EQ(spans.GetCopiedFrames(), 6);
  EXPECT_EQ(spans.GetEncodedFrames(), 2 * static_cast<std::int64_t>(EngineSpans::kMostSpans));
  EXPECT_THAT(SpanLines(spans, Report()), HasSubstr("  3 spans more\n"));
  Json json;
  AddSpans(spans, json);
  EXPECT_EQ(json["spansLeftOut"], 3);
  EXPECT_EQ(json["spans"].size(), EngineSpans::kMostSpans + 1);
  EXPECT_EQ(json["spans"][0].dump(), R"({"track":"video","copied":true,"firstFrame":0,"frames":2,"clip":1})");
  EXPECT_EQ(json["spans"].back().dump(),
            R"({"track":"audio","copied":false,"firstFrame":0,"frames":100,"reason":"mixed"})");
}

}  // namespace
