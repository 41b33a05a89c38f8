#include "host/make/EditTimeline.h"

#include <algorithm>
#include <span>

#include "content/otio/Timeline.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "host/Console.h"
#include "host/WholeFile.h"

namespace vrx::host {
namespace {

using otio::Item;
using otio::Track;

bool HasClip(const Track& track) {
  return track.isEnabled && std::ranges::any_of(track.items, [](const Item& item) {
           return item.kind == Item::Kind::Clip && item.isEnabled;
         });
}

class EditReader {
 public:
  EditReader(const XpString& path, MovieRequest& request, std::vector<std::string>& leftOut)
      : m_folder(XpPathDirectory(path)), m_request(request), m_leftOut(leftOut) {}

  bool Read(const otio::Timeline& timeline, std::string& cause) {
    m_leftOut = timeline.leftOut;
    if (timeline.furtherLeftOut != 0)
      m_leftOut.push_back(std::to_string(timeline.furtherLeftOut) + " more things");
    const Track* video = Choose(timeline, Track::Kind::Video);
    const Track* audio = Choose(timeline, Track::Kind::Audio);
    if (video == nullptr) {
      cause = "has no video track with clips";
      return false;
    }
    for (const Item& item : video->items) AddClip(item);
    if (audio == nullptr) return true;
    m_request.sound.emplace();
    for (const Item& item : audio->items) AddSound(item);
    return true;
  }

 private:
  /// The lowest track of the kind that has clips; the others are left out.
  const Track* Choose(const otio::Timeline& timeline, Track::Kind kind) {
    const Track* chosen = nullptr;
    for (const Track& track : timeline.tracks) {
      if (track.kind != kind || track.items.empty()) continue;
      if (chosen == nullptr && HasClip(track)) {
        chosen = &track;
        continue;
      }
      const char* what = kind == Track::Kind::Video ? "video track \"" : "audio track \"";
      const char* why =
          chosen != nullptr ? "\": a project has one, and the lowest is taken" : "\": it is off or empty";
      m_leftOut.push_back(what + track.name + why);
    }
    return chosen;
  }

  XpString PathOf(const Item& item) const {
    const XpString path = platform::PathFromNative(item.path);
    return XpPathIsAbsolute(path) ? path : platform::AbsolutePath(XpPathJoin(m_folder, path));
  }

  static bool IsBlack(const Item& item) { return item.kind == Item::Kind::Gap || !item.isEnabled; }

  void AddClip(const Item& item) {
    ClipRequest clip{.name = item.name.empty() ? item.path : item.name};
    if (!IsBlack(item)) clip.path = PathOf(item);
    if (item.kind == Item::Kind::Clip && !item.isEnabled)
      m_leftOut.push_back("clip \"" + item.name + "\": it is off, and black in the movie");
    if (item.seconds > 0.0) {
      clip.range = {MovieTime{.seconds = item.startSeconds},
                    MovieTime{.seconds = item.startSeconds + item.seconds}};
    } else if (item.startSeconds > 0.0) {
      clip.range.from = MovieTime{.seconds = item.startSeconds};
    }
    m_request.clips.push_back(clip);
  }

  void AddSound(const Item& item) {
    SoundRequest sound{.name = item.name.empty() ? item.path : item.name,
                       .startSeconds = item.startSeconds,
                       .seconds = item.seconds};
    if (!IsBlack(item)) sound.path = PathOf(item);
    m_request.sound->push_back(sound);
  }

  const XpString m_folder;
  MovieRequest& m_request;
  std::vector<std::string>& m_leftOut;
};

}  // namespace

bool ReadEdit(const XpString& path, MovieRequest& request, std::vector<std::string>& leftOut,
              std::string& cause) {
  constexpr std::int64_t kMostMiB = otio::kMostBytes >> 20;
  std::string bytes;
  if (!ReadWholeFile(path, kMostMiB, "timeline of an editor", bytes, cause)) return false;
  otio::Timeline timeline;
  const bool isRead = otio::ReadTimeline(std::span(bytes.data(), bytes.size()), timeline, cause) == XpOk &&
                      EditReader(path, request, leftOut).Read(timeline, cause);
  if (!isRead) cause = Utf8(path) + ": " + cause;
  return isRead;
}

}  // namespace vrx::host
