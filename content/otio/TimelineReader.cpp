#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "content/otio/EditTimes.h"
#include "content/otio/JsonTree.h"
#include "content/otio/MediaPath.h"
#include "content/otio/Schema.h"
#include "content/otio/Timeline.h"

namespace vrx::otio {
namespace {

const char* KindName(Track::Kind kind) { return kind == Track::Kind::Audio ? "Audio" : "Video"; }

/// `parent`, item 5 "name".
std::string PlaceOf(const std::string& parent, const char* what, std::size_t index, const Json& object) {
  std::string place = parent.empty() ? "" : parent + ", ";
  place += std::string(what) + " " + std::to_string(index + 1);
  const std::string name = TextOf(object, "name");
  return name.empty() ? place : place + " " + Quoted(name);
}

/// The name of the schema for messages.
std::string SchemaText(const Json& object) {
  const std::string schema = TextOf(object, "OTIO_SCHEMA");
  if (schema.empty()) return "without a schema";
  return (SchemaOf(object) == Schema::Unknown ? "of the unknown schema " : "of the schema ") + Quoted(schema);
}

/// The media that a clip uses; null when it has none.
const Json& MediaOf(const Json& clip) {
  const Json& all = MemberOf(clip, "media_references");
  if (!all.is_object()) return MemberOf(clip, "media_reference");
  const std::string key = TextOf(clip, "active_media_reference_key");
  return MemberOf(all, key.empty() ? "DEFAULT_MEDIA" : key.c_str());
}

/// In words, why the media is no file; empty when it is one, whose path is then set.
std::string WhyNoFile(const Json& media, Item& item) {
  switch (SchemaOf(media)) {
    case Schema::ExternalReference: {
      item.url = TextOf(media, "target_url");
      const auto path = MediaPath(item.url);
      if (path) item.path = *path;
      if (path) return {};
      return item.url.empty() ? "its media has no URL" : "its media is no file: " + Quoted(item.url);
    }
    case Schema::GeneratorReference:
      return "its media is generated: " + Quoted(TextOf(media, "generator_kind"));
    case Schema::ImageSequence:
      return "its media is a sequence of images: " +
             Quoted(TextOf(media, "target_url_base") + TextOf(media, "name_prefix"));
    case Schema::MissingReference:
      return "its media is missing";
    default:
      return media.is_null() ? "it has no media" : "its media is " + SchemaText(media);
  }
}

class TimelineReader {
 public:
  TimelineReader(Timeline& timeline, std::string& cause) : m_timeline(timeline), m_cause(cause) {}

  XpResult Read(const Json& root) {
    bool isRead = false;
    switch (SchemaOf(root)) {
      case Schema::Timeline:
        isRead = ReadTimelineObject(root);
        break;
      case Schema::Collection: {
        const Json* first = FirstTimeline(root);
        if (first == nullptr) return WrongRoot("the collection holds no timeline");
        isRead = ReadTimelineObject(*first);
        break;
      }
      case Schema::Stack:
        m_timeline.name = TextOf(root, "name");
        isRead = ReadTracks(root);
        break;
      case Schema::Track:
        isRead = ReadLayer(root, 0);
        break;
      default:
        return WrongRoot("the document holds no timeline, but an object " + SchemaText(root));
    }
    return isRead ? XpOk : XpErrInvalidFile;
  }

 private:
  XpResult WrongRoot(std::string why) {
    m_cause = std::move(why);
    return XpErrWrongRoot;
  }

  bool Fail(const std::string& place, const std::string& problem) {
    m_cause = place + ": " + problem;
    return false;
  }

  void LeaveOut(const std::string& place, const std::string& what) {
    if (m_isMeasuring) return;
    if (m_timeline.leftOut.size() < kMostLeftOut) {
      m_timeline.leftOut.push_back(place + ": " + what);
    } else {
      ++m_timeline.furtherLeftOut;
    }
  }

  const Json* FirstTimeline(const Json& collection) {
    const Json* first = nullptr;
    const Json& children = MemberOf(collection, "children");
    if (!children.is_array()) return nullptr;
    for (std::size_t i = 0; i < children.size(); ++i) {
      if (first == nullptr && SchemaOf(children[i]) == Schema::Timeline) {
        first = &children[i];
      } else {
        LeaveOut(PlaceOf("the collection", "item", i, children[i]), "only the first timeline is taken");
      }
    }
    return first;
  }

  bool ReadTimelineObject(const Json& timeline) {
    m_timeline.name = TextOf(timeline, "name");
    std::optional<Rational> start;
    std::string problem;
    if (!ReadTime(timeline, "global_start_time", start, problem)) return Fail("the timeline", problem);
    if (start) m_timeline.globalStartSeconds = start->Seconds();
    const Json& stack = MemberOf(timeline, "tracks");
    if (SchemaOf(stack) != Schema::Stack) return Fail("the timeline", "its tracks are no stack");
    return ReadTracks(stack);
  }

  bool ReadTracks(const Json& stack) {
    const std::string place = "the timeline";
    ListExtras(stack, place);
    std::optional<Range> range;
    std::string problem;
    if (!ReadRange(stack, "source_range", range, problem)) return Fail(place, problem);
    const Json& children = MemberOf(stack, "children");
    if (!children.is_array()) return Fail(place, "its tracks are no list");
    for (std::size_t i = 0; i < children.size(); ++i) {
      if (!ReadLayer(children[i], i)) return false;
    }
    for (Track& track : m_timeline.tracks) {
      if (range && !Cut(*range, track.items))
        LeaveOut(place, "the range, since lengths of clips are not known");
      track.isEnabled = track.isEnabled && IsEnabled(stack);
    }
    return true;
  }

  /// A child of the timeline's stack, which need not be a track.
  bool ReadLayer(const Json& layer, std::size_t index) {
    const std::string place = PlaceOf("", "track", index, layer);
    Track track;
    track.name = TextOf(layer, "name");
    if (SchemaOf(layer) != Schema::Track) {
      if (!ReadChild(layer, place, track.kind, track.items)) return false;
      if (!track.items.empty()) m_timeline.tracks.push_back(std::move(track));
      return true;
    }
    const auto kind = KindOf(layer);
    if (!kind) {
      LeaveOut(place, "a track of the kind " + Quoted(TextOf(layer, "kind")));
      return true;
    }
    track.kind = *kind;
    if (!ReadComposition(layer, place, track.kind, track.items)) return false;
    track.isEnabled = IsEnabled(layer);
    m_timeline.tracks.push_back(std::move(track));
    return true;
  }

  static std::optional<Track::Kind> KindOf(const Json& track) {
    const std::string kind = TextOf(track, "kind");
    if (kind.empty() || kind == "Video") return Track::Kind::Video;
    if (kind == "Audio") return Track::Kind::Audio;
    return {};
  }

  /// What is in a track, cut to the range that it shows. A stack has one layer here.
  bool ReadComposition(const Json& composition, const std::string& place, Track::Kind kind,
                       std::vector<Item>& items) {
    ListExtras(composition, place);
    std::optional<Range> range;
    std::string problem;
    if (!ReadRange(composition, "source_range", range, problem)) return Fail(place, problem);
    const Json& children = MemberOf(composition, "children");
    if (!children.is_array()) return Fail(place, "its children are no list");
    for (std::size_t i = 0; i < children.size(); ++i) {
      if (!ReadChild(children[i], PlaceOf(place, "item", i, children[i]), kind, items)) return false;
    }
    if (range && !Cut(*range, items)) LeaveOut(place, "the range, since lengths of clips are not known");
    return true;
  }

  static bool Cut(const Range& range, std::vector<Item>& items) {
    if (!LengthOf(items)) return false;
    Trim(range.start.Seconds(), range.duration.Seconds(), items);
    return true;
  }

  bool ReadChild(const Json& child, const std::string& place, Track::Kind kind, std::vector<Item>& items) {
    switch (SchemaOf(child)) {
      case Schema::Clip:
        return ReadClip(child, place, kind, items);
      case Schema::Gap:
        return ReadGap(child, place, items);
      case Schema::Transition:
        LeaveOut(place, "the transition " + Quoted(TextOf(child, "transition_type")));
        return true;
      case Schema::Stack:
      case Schema::Track:
        return ReadNested(child, place, kind, items);
      default:
        return PutGap(child, place, "an object " + SchemaText(child), items);
    }
  }

  bool ReadGap(const Json& gap, const std::string& place, std::vector<Item>& items) {
    ListExtras(gap, place);
    std::optional<Range> range;
    std::string problem;
    if (!ReadRange(gap, "source_range", range, problem)) return Fail(place, problem);
    if (!range) LeaveOut(place, "a gap without a length");
    if (range) AppendGap(*range, TextOf(gap, "name"), items);
    return true;
  }

  static void AppendGap(const Range& range, std::string name, std::vector<Item>& items) {
    if (range.duration.value == 0) return;
    items.push_back({.kind = Item::Kind::Gap,
                     .name = std::move(name),
                     .seconds = range.duration.Seconds(),
                     .rate = range.duration.rate});
  }

  /// Leaves `object` out and keeps its time, so that what follows stays where it is.
  bool PutGap(const Json& object, const std::string& place, const std::string& what,
              std::vector<Item>& items) {
    std::optional<Range> range;
    std::string problem;
    if (!ReadRange(object, "source_range", range, problem)) return Fail(place, problem);
    LeaveOut(place, what + (range ? "; a gap takes its place" : "; its length is not known"));
    if (range) AppendGap(*range, TextOf(object, "name"), items);
    return true;
  }

  bool ReadNested(const Json& nested, const std::string& place, Track::Kind kind, std::vector<Item>& items) {
    const Json& children = MemberOf(nested, "children");
    const bool isStack = SchemaOf(nested) == Schema::Stack;
    if (isStack && children.is_array() && children.size() > 1) return PutStack(nested, place, kind, items);
    if (!isStack && KindOf(nested) != kind) {
      return PutGap(nested, place, "a track of another kind in a track of the kind " + Quoted(KindName(kind)),
                    items);
    }
    std::vector<Item> inner;
    if (!ReadComposition(nested, place, kind, inner)) return false;
    const bool isEnabled = IsEnabled(nested);
    for (Item& item : inner) {
      item.isEnabled = item.isEnabled && isEnabled;
      items.push_back(std::move(item));
    }
    return true;
  }

  /// A gap for a nested stack of several layers, as long as the longest of them where it has no range.
  bool PutStack(const Json& stack, const std::string& place, Track::Kind kind, std::vector<Item>& items) {
    const Json& children = MemberOf(stack, "children");
    const std::string what = "a nested stack of " + std::to_string(children.size()) + " layers";
    if (!MemberOf(stack, "source_range").is_null()) return PutGap(stack, place, what, items);
    std::optional<double> longest = 0.0;
    const bool wasMeasuring = std::exchange(m_isMeasuring, true);
    bool isRead = true;
    for (std::size_t i = 0; i < children.size() && isRead; ++i) {
      std::vector<Item> layer;
      const auto layerKind = SchemaOf(children[i]) == Schema::Track ? KindOf(children[i]) : kind;
      isRead =
          ReadChild(children[i], PlaceOf(place, "layer", i, children[i]), layerKind.value_or(kind), layer);
      const auto length = LengthOf(layer);
      longest = longest && length ? std::optional(std::max(*longest, *length)) : std::nullopt;
    }
    m_isMeasuring = wasMeasuring;
    if (!isRead) return false;
    LeaveOut(place, what + (longest ? "; a gap takes its place" : "; its length is not known"));
    if (longest.value_or(0) > 0) items.push_back({.name = TextOf(stack, "name"), .seconds = *longest});
    return true;
  }

  bool ReadClip(const Json& clip, const std::string& place, Track::Kind kind, std::vector<Item>& items) {
    ListExtras(clip, place);
    const Json& media = MediaOf(clip);
    std::optional<Range> source;
    std::optional<Range> available;
    std::string problem;
    if (!ReadRange(clip, "source_range", source, problem)) return Fail(place, problem);
    if (!ReadRange(media, "available_range", available, problem)) return Fail(place, problem);
    if (source && source->duration.value == 0) {
      LeaveOut(place, "a clip without a length");
      return true;
    }
    Item item{.kind = Item::Kind::Clip, .name = TextOf(clip, "name")};
    item.isEnabled = IsEnabled(clip);
    const std::string why = WhyNoFile(media, item);
    if (!why.empty()) return PutMissingClip(place, why, source ? source : available, item.name, items);
    SetTimes(source, available, item);
    if (kind == Track::Kind::Video) CompareRates(place, source, available);
    if (source && available) FitIntoMedia(place, *available, item, items);
    if (item.seconds >= 0) items.push_back(std::move(item));
    return true;
  }

  bool PutMissingClip(const std::string& place, const std::string& why, const std::optional<Range>& range,
                      const std::string& name, std::vector<Item>& items) {
    LeaveOut(place,
             "the clip, since " + why + (range ? "; a gap takes its place" : "; its length is not known"));
    if (range) AppendGap(*range, name, items);
    return true;
  }

  static void SetTimes(const std::optional<Range>& source, const std::optional<Range>& available,
                       Item& item) {
    const std::optional<Range>& used = source ? source : available;
    if (!used) return;
    item.seconds = used->duration.Seconds();
    item.rate = used->duration.rate;
    if (source) item.startSeconds = SecondsBetween(source->start, available ? available->start : Rational{});
  }

  void CompareRates(const std::string& place, const std::optional<Range>& source,
                    const std::optional<Range>& available) {
    constexpr double kSame = 0.0005;  // 23.98 is a common way to write 24000/1001
    if (!source || !available) return;
    const double edit = source->duration.rate;
    const double own = available->duration.rate;
    if (std::abs(edit - own) <= kSame * own) return;
    LeaveOut(place, "the rate of its media, " + NumberText(own) +
                        " a second, differs from that of its range, " + NumberText(edit) +
                        "; times are kept");
  }

  /// What a clip shows before its media begins is a gap. Its end may be after that of the media.
  void FitIntoMedia(const std::string& place, const Range& available, Item& item, std::vector<Item>& items) {
    const double shortest = 0.5 / item.rate;
    const double before = -item.startSeconds;
    if (before > 0) {
      const double missing = std::min(before, item.seconds);
      if (missing > shortest) {
        LeaveOut(place,
                 "the clip begins " + NumberText(before) + " s before its media; a gap takes that place");
        items.push_back(
            {.name = item.name, .seconds = missing, .rate = item.rate, .isEnabled = item.isEnabled});
        item.seconds -= missing;
      }
      item.startSeconds = 0;
      if (item.seconds <= shortest) item.seconds = -1;  // nothing is left
    }
    const double after = item.startSeconds + item.seconds - available.duration.Seconds();
    if (available.duration.value > 0 && after > shortest) {
      LeaveOut(place, "the clip ends " + NumberText(after) + " s after its media, which then stands still");
    }
  }

  void ListExtras(const Json& object, const std::string& place) {
    const Json& effects = MemberOf(object, "effects");
    if (effects.is_array()) {
      for (const Json& effect : effects) LeaveOut(place, EffectText(effect));
    }
    const Json& markers = MemberOf(object, "markers");
    if (markers.is_array()) {
      for (const Json& marker : markers) LeaveOut(place, "the marker " + Quoted(TextOf(marker, "name")));
    }
  }

  static std::string EffectText(const Json& effect) {
    const std::string off = IsEnabled(effect) ? "" : ", which is off";
    const Schema schema = SchemaOf(effect);
    if (schema == Schema::FreezeFrame) return "the freeze frame" + off;
    if (schema == Schema::TimeWarp) {
      const Json& factor = MemberOf(effect, "time_scalar");
      const std::string by = factor.is_number() ? NumberText(factor.get<double>()) : "an unknown factor";
      return "the time warp by " + by + off;
    }
    const std::string kind = TextOf(effect, "effect_name");
    const std::string name = TextOf(effect, "name");
    if (kind.empty() || name.empty()) return "the effect " + Quoted(kind + name) + off;
    return "the effect " + Quoted(kind) + " with the name " + Quoted(name) + off;
  }

  Timeline& m_timeline;
  std::string& m_cause;
  bool m_isMeasuring = false;  // reads only to find out a length
};

}  // namespace

XpResult ReadTimeline(std::span<const char> bytes, Timeline& timeline, std::string& cause) {
  timeline = {};
  Json root;
  if (const XpResult parsed = ParseJson(bytes, root, cause); parsed != XpOk) return parsed;
  const XpResult read = TimelineReader(timeline, cause).Read(root);
  if (read != XpOk) timeline = {};
  return read;
}

}  // namespace vrx::otio
