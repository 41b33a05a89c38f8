// Timelines of editors: what becomes a list of clips, what is left out and said so, and documents that are
// refused.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "content/otio/MediaPath.h"
#include "content/otio/Timeline.h"

namespace {

using namespace vrx::otio;

using Lines = std::vector<std::string>;

std::string Time(const std::string& value, const std::string& rate = "25.0") {
  return R"({"OTIO_SCHEMA": "RationalTime.1", "rate": )" + rate + R"(, "value": )" + value + "}";
}

std::string Range(const std::string& start, const std::string& duration, const std::string& rate = "25.0") {
  return R"({"OTIO_SCHEMA": "TimeRange.1", "duration": )" + Time(duration, rate) + R"(, "start_time": )" +
         Time(start, rate) + "}";
}

std::string Media(const std::string& range, const std::string& url = "a.mov") {
  return R"({"OTIO_SCHEMA": "ExternalReference.1", "metadata": {"source_range": 1}, "name": "", "available_range": )" +
         range + R"(, "available_image_bounds": null, "target_url": ")" + url + "\"}";
}

/// An item with `fields` of its own, in the order in which the format's library writes them.
std::string Object(const std::string& schema, const std::string& name, const std::string& range,
                   const std::string& fields = "",
                   const std::string& extras = R"("effects": [], "markers": [])") {
  return R"({"OTIO_SCHEMA": ")" + schema + R"(", "metadata": {"x": [{"value": -1}]}, "name": ")" + name +
         R"(", "source_range": )" + range + ", " + extras + R"(, "enabled": true)" + fields + "}";
}

std::string Clip(const std::string& name, const std::string& range, const std::string& media = Media("null"),
                 const std::string& extras = R"("effects": [], "markers": [])") {
  return Object("Clip.2", name, range,
                R"(, "media_references": {"DEFAULT_MEDIA": )" + media +
                    R"(}, "active_media_reference_key": "DEFAULT_MEDIA")",
                extras);
}

std::string Gap(const std::string& duration) { return Object("Gap.1", "", Range("0.0", duration)); }

std::string TrackOf(const std::string& name, const std::string& children, const std::string& kind = "Video",
                    const std::string& range = "null") {
  return Object("Track.1", name, range, R"(, "children": [)" + children + R"(], "kind": ")" + kind + "\"");
}

std::string StackOf(const std::string& children, const std::string& range = "null") {
  return Object("Stack.1", "tracks", range, R"(, "children": [)" + children + "]");
}

std::string Edit(const std::string& tracks, const std::string& start = "null") {
  return R"({"OTIO_SCHEMA": "Timeline.1", "metadata": {}, "name": "Edit", "global_start_time": )" + start +
         R"(, "tracks": )" + StackOf(tracks) + "}";
}

Timeline Read(const std::string& document) {
  Timeline timeline;
  std::string cause;
  EXPECT_EQ(ReadTimeline(document, timeline, cause), XpOk) << cause << "\n" << document.substr(0, 2000);
  return timeline;
}

std::string Short(double number) {
  std::string text = std::to_string(number);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

/// "a 1+2" for a clip of 2 seconds from second 1, "gap 2", with "off" where an item is.
Lines Shown(const Track& track) {
  Lines shown;
  for (const Item& item : track.items) {
    const bool isClip = item.kind == Item::Kind::Clip;
    std::string text = isClip ? item.name + " " + Short(item.startSeconds) + "+" : "gap ";
    shown.push_back(text + Short(item.seconds) + (item.isEnabled ? "" : " off"));
  }
  return shown;
}

TEST(OtioTest, ClipsAndGapsOfAllTracksAreRead) {
  const std::string video =
      Clip("a", Range("50", "25"), Media(Range("25.0", "250.0"), "file:///clips/a%20b.mov")) + "," +
      Gap("10") + "," + Clip("b", "null", Media(Range("90000", "75"))) + "," + Clip("c", "null") + "," +
      Clip("d", Range("5", "50"));
  std::string off = Clip("off", Range("0", "48000", "48000"));
  off.replace(off.find("true"), 4, "false");
  std::string silent = TrackOf("A1", off, "Audio");
  silent.replace(silent.rfind("true"), 4, "false");
  const Timeline timeline = Read(Edit(TrackOf("V1", video) + "," + silent, Time("90000")));
  EXPECT_EQ(timeline.name, "Edit");
  EXPECT_EQ(timeline.globalStartSeconds, 3600);
  EXPECT_EQ(timeline.leftOut, Lines{});
  ASSERT_EQ(timeline.tracks.size(), 2u);
  EXPECT_EQ(Shown(timeline.tracks[0]), (Lines{"a 1+1", "gap 0.4", "b 0+3", "c 0+0", "d 0.2+2"}));
  const Item& first = timeline.tracks[0].items[0];
  EXPECT_EQ(first.url, "file:///clips/a%20b.mov");
  EXPECT_EQ(first.path, "/clips/a b.mov");
  EXPECT_EQ(first.rate, 25);
  EXPECT_EQ(timeline.tracks[0].kind, Track::Kind::Video);
  EXPECT_TRUE(timeline.tracks[0].isEnabled);
  EXPECT_EQ(timeline.tracks[1].kind, Track::Kind::Audio);
  EXPECT_EQ(timeline.tracks[1].name, "A1");
  EXPECT_FALSE(timeline.tracks[1].isEnabled);
  EXPECT_EQ(Shown(timeline.tracks[1]), Lines{"off 0+1 off"});
}

TEST(OtioTest, OlderFormsAndOtherRootsAreRead) {
  const std::string old = Object("Clip.1", "a", Range("0", "25"), R"(, "media_reference": )" + Media("null"));
  const std::string chosen = Object("Clip.2", "a", Range("0", "25"),
                                    R"(, "media_references": {"DEFAULT_MEDIA": null, "proxy": )" +
                                        Media("null") + R"(}, "active_media_reference_key": "proxy")");
  const std::string sequence = Object("Sequence.1", "V", "null", R"(, "children": [)" + old + "]");
  const std::string documents[] = {
      Edit(TrackOf("V", old)),
      Edit(TrackOf("V", chosen)),
      Edit(sequence),
      Edit(old),
      StackOf(TrackOf("V", old)),
      TrackOf("V", old),
      Object("SerializableCollection.1", "bin", "null", R"(, "children": [)" + Edit(TrackOf("V", old)) + "]"),
      "\xEF\xBB\xBF" + Edit(TrackOf("V", old)),
  };
  for (const std::string& document : documents) {
    const Timeline timeline = Read(document);
    ASSERT_EQ(timeline.tracks.size(), 1u) << document;
    EXPECT_EQ(Shown(timeline.tracks[0]), Lines{"a 0+1"}) << document;
    EXPECT_EQ(timeline.leftOut, Lines{}) << document;
  }
}

TEST(OtioTest, WhatHasNoPlaceInAListIsNamedAndKeepsItsTime) {
  const std::string range = Range("0", "25");
  const auto effects = [](const std::string& list) {
    return R"("effects": [)" + list + R"(], "markers": [])";
  };
  struct Case {
    std::string item;
    Lines shown;
    Lines leftOut;
  };
  const Case cases[] = {
      {R"({"OTIO_SCHEMA": "Transition.1", "name": "", "transition_type": "SMPTE_Dissolve", "in_offset": null})",
       {},
       {"the transition \"SMPTE_Dissolve\""}},
      {Clip("a", range, Media("null"), effects(R"({"OTIO_SCHEMA": "LinearTimeWarp.1", "time_scalar": 2.0},
            {"OTIO_SCHEMA": "FreezeFrame.1", "time_scalar": 0}, {"OTIO_SCHEMA": "Effect.1", "name": "soft",
            "effect_name": "Blur", "enabled": false}, {"OTIO_SCHEMA": "Glow.3", "effect_name": "Glow"})")),
       {"a 0+1"},
       {"the time warp by 2", "the freeze frame", "the effect \"Blur\" with the name \"soft\", which is off",
        "the effect \"Glow\""}},
      {Clip("a", range, Media("null"),
            R"("effects": [], "markers": [{"OTIO_SCHEMA": "Marker.2", "name": "here\n"}])"),
       {"a 0+1"},
       {"the marker \"here?\""}},
      {Clip("a", range, R"({"OTIO_SCHEMA": "MissingReference.1", "available_range": null})"),
       {"gap 1"},
       {"the clip, since its media is missing; a gap takes its place"}},
      {Clip("a", "null", R"({"OTIO_SCHEMA": "MissingReference.1", "available_range": )" + range + "}"),
       {"gap 1"},
       {"the clip, since its media is missing; a gap takes its place"}},
      {Clip("a", "null", "null"), {}, {"the clip, since it has no media; its length is not known"}},
      {Clip("a", range, R"({"OTIO_SCHEMA": "GeneratorReference.1", "generator_kind": "SMPTEBars"})"),
       {"gap 1"},
       {"the clip, since its media is generated: \"SMPTEBars\"; a gap takes its place"}},
      {Clip("a", range,
            R"({"OTIO_SCHEMA": "ImageSequenceReference.1", "target_url_base": "x/", "name_prefix": "f."})"),
       {"gap 1"},
       {"the clip, since its media is a sequence of images: \"x/f.\"; a gap takes its place"}},
      {Clip("a", range, Media("null", "https://host/a.mov")),
       {"gap 1"},
       {"the clip, since its media is no file: \"https://host/a.mov\"; a gap takes its place"}},
      {Clip("a", range, Media("null", "a\\u0000b")),
       {"gap 1"},
       {"the clip, since its media is no file: \"a?b\"; a gap takes its place"}},
      {Object("Title.1", "a", range),
       {"gap 1"},
       {"an object of the unknown schema \"Title.1\"; a gap takes its place"}},
      {Object("Clip.3", "a", "null"),
       {},
       {"an object of the unknown schema \"Clip.3\"; its length is not known"}},
      {"7", {}, {"an object without a schema; its length is not known"}},
      {Clip("a", Range("0", "0")), {}, {"a clip without a length"}},
      {Object("Gap.1", "", "null"), {}, {"a gap without a length"}},
      {Clip("a", Range("0", "50"), Media(Range("25", "100"))),
       {"gap 1", "a 0+1"},
       {"the clip begins 1 s before its media; a gap takes that place"}},
      {Clip("a", Range("0", "25"), Media(Range("50", "100"))),
       {"gap 1"},
       {"the clip begins 2 s before its media; a gap takes that place"}},
      {Clip("a", Range("50", "100"), Media(Range("0", "100"))),
       {"a 2+4"},
       {"the clip ends 2 s after its media, which then stands still"}},
      {Clip("a", Range("0", "25"), Media(Range("0", "300", "30"))),
       {"a 0+1"},
       {"the rate of its media, 30 a second, differs from that of its range, 25; times are kept"}},
  };
  for (const Case& c : cases) {
    // Without the clip after it, a gap at the end of a track would not matter.
    const Timeline timeline = Read(Edit(TrackOf("V1", c.item + "," + Clip("z", range))));
    Lines shown = c.shown;
    shown.emplace_back("z 0+1");
    EXPECT_EQ(Shown(timeline.tracks.at(0)), shown) << c.item;
    Lines leftOut;
    for (const std::string& line : timeline.leftOut) {
      EXPECT_TRUE(line.starts_with("track 1 \"V1\", item 1")) << line;
      leftOut.push_back(line.substr(line.find(": ") + 2));
    }
    EXPECT_EQ(leftOut, c.leftOut) << c.item;
  }
  const Timeline subtitled = Read(Edit(TrackOf("S1", "", "Subtitle") + "," + TrackOf("V1", "")));
  EXPECT_EQ(subtitled.leftOut, Lines{"track 1 \"S1\": a track of the kind \"Subtitle\""});
  EXPECT_EQ(subtitled.tracks.size(), 1u);
  const Timeline two = Read(Object("SerializableCollection.1", "", "null",
                                   R"(, "children": [)" + Edit("") + "," + Edit(TrackOf("V", "")) + "]"));
  EXPECT_EQ(two.leftOut, Lines{"the collection, item 2 \"Edit\": only the first timeline is taken"});
}

TEST(OtioTest, NestedTracksBecomeItemsWhereThatShowsTheSame) {
  const std::string three = Clip("a", Range("0", "50")) + "," + Gap("50") + "," +
                            Clip("b", Range("25", "50"), Media(Range("0", "500")));
  const std::string fitting = Clip("c", Range("0", "25"));
  const std::string marked = R"("effects": [], "markers": [{"OTIO_SCHEMA": "Marker.2", "name": "m"}])";
  std::string disabled = TrackOf("", fitting);
  disabled.replace(disabled.find("true"), 4, "false");
  struct Case {
    const char* name;
    std::string item;
    Lines shown;
    Lines leftOut;
  };
  const Case cases[] = {
      {"track", TrackOf("", three), {"a 0+2", "gap 2", "b 1+2"}, {}},
      {"stack of one track", StackOf(TrackOf("", three)), {"a 0+2", "gap 2", "b 1+2"}, {}},
      {"stack of one clip", StackOf(fitting), {"c 0+1"}, {}},
      {"cut inside of clips",
       TrackOf("", three, "Video", Range("25", "100")),
       {"a 1+1", "gap 2", "b 1+1"},
       {}},
      {"cut twice",
       StackOf(TrackOf("", three, "Video", Range("25", "100")), Range("80", "10")),
       {"b 1.2+0.4"},
       {}},
      {"longer than its content", TrackOf("", three, "Video", Range("125", "50")), {"b 2+1", "gap 1"}, {}},
      {"beyond its content",
       TrackOf("", fitting, "Video", Range("-25", "100")),
       {"gap 1", "c 0+1", "gap 2"},
       {}},
      {"disabled", disabled, {"c 0+1 off"}, {}},
      {"several layers",
       StackOf(TrackOf("", three) + "," + TrackOf("", fitting)),
       {"gap 6"},
       {"track 1, item 1 \"tracks\": a nested stack of 2 layers; a gap takes its place"}},
      {"things to leave out in layers and after them",
       StackOf(fitting + "," + Clip("e", Range("0", "75"), Media("null"), marked)) + "," +
           Clip("f", Range("0", "25"), Media("null"), marked),
       {"gap 3", "f 0+1"},
       {"track 1, item 1 \"tracks\": a nested stack of 2 layers; a gap takes its place",
        "track 1, item 2 \"f\": the marker \"m\""}},
      {"several layers with a range",
       StackOf(fitting + "," + fitting, Range("5", "10")),
       {"gap 0.4"},
       {"track 1, item 1 \"tracks\": a nested stack of 2 layers; a gap takes its place"}},
      {"several layers of unknown length",
       StackOf(fitting + "," + Clip("d", "null")),
       {},
       {"track 1, item 1 \"tracks\": a nested stack of 2 layers; its length is not known"}},
      {"a cut through unknown lengths",
       TrackOf("", Clip("d", "null"), "Video", Range("5", "10")),
       {"d 0+0"},
       {"track 1, item 1: the range, since lengths of clips are not known"}},
      {"sound among pictures",
       TrackOf("", fitting, "Audio", Range("0", "25")),
       {"gap 1"},
       {"track 1, item 1: a track of another kind in a track of the kind \"Video\"; a gap takes its place"}},
  };
  for (const Case& c : cases) {
    const Timeline timeline = Read(Edit(TrackOf("", c.item)));
    EXPECT_EQ(Shown(timeline.tracks.at(0)), c.shown) << c.name;
    EXPECT_EQ(timeline.leftOut, c.leftOut) << c.name;
  }
  const Timeline cut =
      Read(StackOf(TrackOf("", three) + "," + TrackOf("", fitting, "Audio"), Range("0", "75")));
  EXPECT_EQ(Shown(cut.tracks.at(0)), (Lines{"a 0+2", "gap 1"}));
  EXPECT_EQ(Shown(cut.tracks.at(1)), (Lines{"c 0+1", "gap 2"}));
  EXPECT_TRUE(cut.tracks.at(1).isEnabled);
  std::string off = StackOf(TrackOf("", three));
  off.replace(off.find("true"), 4, "false");
  EXPECT_FALSE(Read(off).tracks.at(0).isEnabled);
}

TEST(OtioTest, MediaUrlsBecomePaths) {
  const std::pair<std::string, std::string> cases[] = {
      {"file:///a/b%20c%c3%A9.mov", "/a/b c\xC3\xA9.mov"},
      {"file://localhost/a.mov", "/a.mov"},
      {"FILE:/a.mov", "/a.mov"},
      {"file:///C:/a/b.mov", "C:/a/b.mov"},
      {"file://C:/a.mov", "C:/a.mov"},
      {"file:///c%7C/a.mov", "c:/a.mov"},
      {"file://server/share/a.mov", "\\\\server\\share\\a.mov"},
      {"file:///a b%20c.mov", "/a b%20c.mov"},
      {"clips/a%20b.mov", "clips/a b.mov"},
      {"../a#1?.mov", "../a#1?.mov"},
      {"C:\\a%20b.mov", "C:\\a%20b.mov"},
      {"/100%.mov", "/100%.mov"},
      {"%4", "%4"},
      {"%zz%", "%zz%"},
      {"a%00b", ""},
      {"file:", ""},
      {"file://localhost", ""},
      {"s3://bucket/a.mov", ""},
      {"", ""},
  };
  for (const auto& [url, path] : cases) EXPECT_EQ(MediaPath(url).value_or(""), path) << url;
}

TEST(OtioTest, DocumentsThatCannotBeAreRefusedWithTheirPlace) {
  const auto clip = [](const std::string& range) {
    return Edit(TrackOf("V1", Gap("5") + "," + Clip("a", range)));
  };
  const std::string place = "track 1 \"V1\", item 2 \"a\": ";
  struct Case {
    std::string document;
    std::string cause;
    XpResult result = XpErrInvalidFile;
  };
  const Case cases[] = {
      {clip(Range("0", "-1")), place + "the duration is negative (in its source_range)"},
      {clip(Range("0", "NaN")), place + "the value of duration is no number (in its source_range)"},
      {clip(Range("-Infinity", "5")), place + "the value of start_time is no number (in its source_range)"},
      {clip(Range("0", "\"5\"")), place + "the value of duration is no number (in its source_range)"},
      {clip(Range("0", "5", "0")), place + "the rate of start_time is 0 (in its source_range)"},
      {clip(Range("0", "5", "-25")), place + "the rate of start_time is -25 (in its source_range)"},
      {clip(Range("0", "5", "1e7")), place + "the rate of start_time is 1e+07 (in its source_range)"},
      {clip(Range("0", "1e300")), place + "duration is more than 1e+07 seconds (in its source_range)"},
      {clip(Range("0", "1e300", "1e-300")),
       place + "duration is more than 1e+07 seconds (in its source_range)"},
      {clip("7"), place + "the value of start_time is no number (in its source_range)"},
      {Edit(TrackOf("V1", Clip("a", "null", Media(Range("0", "-1"))))),
       "track 1 \"V1\", item 1 \"a\": the duration is negative (in its available_range)"},
      {Edit(TrackOf("", StackOf(Gap("1") + "," + TrackOf("", Gap("-1"))))),
       "track 1, item 1 \"tracks\", layer 2, item 1: the duration is negative (in its source_range)"},
      {Edit("", Time("1e300")), "the timeline: global_start_time is more than 1e+07 seconds"},
      {R"({"OTIO_SCHEMA": "Timeline.1", "tracks": null})", "the timeline: its tracks are no stack"},
      {Edit(Object("Track.1", "V1", "null")), "track 1 \"V1\": its children are no list"},
      {Clip("a", "null"), "the document holds no timeline, but an object of the schema \"Clip.2\"",
       XpErrWrongRoot},
      {"[]", "the document holds no timeline, but an object without a schema", XpErrWrongRoot},
      {R"({"OTIO_SCHEMA": "SerializableCollection.1", "children": []})", "the collection holds no timeline",
       XpErrWrongRoot},
      {"{\n  \"a\": x}", "line 2, column 8: the text is no JSON from here on", XpErrNotWellFormed},
      {"", "line 1, column 1: the text is no JSON from here on", XpErrNotWellFormed},
      {std::string(1000, '['), "the document is nested more than 64 deep"},
      {R"({"metadata": )" + std::string(1000, '['), "the document is nested more than 64 deep"},
      {std::string(kMostBytes + 1, ' '), "the document is larger than 128 MiB"},
  };
  for (const Case& c : cases) {
    Timeline timeline;
    std::string cause;
    EXPECT_EQ(ReadTimeline(c.document, timeline, cause), c.result) << c.document.substr(0, 1000);
    EXPECT_EQ(cause, c.cause);
    EXPECT_TRUE(timeline.tracks.empty()) << c.cause;
  }
}

TEST(OtioTest, MetadataMayHoldAnything) {
  const std::string metadata =
      R"({"OTIO_SCHEMA": "Track.1", "metadata": {"b": [NaN, Infinity, -Infinity],
      "c": {"OTIO_SCHEMA": "Clip.2", "children": [[{}]]}, "metadata": 1}, "name": "\" NaN \\", "kind": "Video", "children": [)" +
      Clip("a", Range("0", "25")) + "]}";
  const Timeline timeline = Read(Edit(metadata));
  EXPECT_EQ(timeline.tracks.at(0).name, "\" NaN \\");
  EXPECT_EQ(Shown(timeline.tracks.at(0)), Lines{"a 0+1"});
}

TEST(OtioTest, TooManyValuesAreRefusedAndManyLinesCounted) {
  std::string many = "[0";
  for (std::size_t i = 0; i < kMostValues; ++i) many += ",0";
  Timeline timeline;
  std::string cause;
  EXPECT_EQ(ReadTimeline(many + "]", timeline, cause), XpErrInvalidFile);
  EXPECT_EQ(cause, "the document has more than 1000000 values");
  std::string children = "1";
  for (std::size_t i = 0; i < kMostLeftOut + 4; ++i) children += ",1";
  timeline = Read(Edit(TrackOf("", children)));
  EXPECT_EQ(timeline.leftOut.size(), kMostLeftOut);
  EXPECT_EQ(timeline.furtherLeftOut, 5u);
}

TEST(OtioTest, DocumentsThatAreCutAnywhereAreRefused) {
  const std::string whole = Edit(TrackOf("V1", Clip("a", Range("0", "25"))));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Timeline timeline;
    std::string cause;
    ASSERT_EQ(ReadTimeline({whole.data(), size}, timeline, cause), XpErrNotWellFormed) << size;
  }
}

}  // namespace
