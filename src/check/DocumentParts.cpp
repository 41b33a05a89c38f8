#include "src/check/DocumentParts.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "overlay/document/PainterKeys.h"
#include "src/project/ProjectKeys.h"

namespace vrx::check {
namespace {

using View = std::u16string_view;
using plist::Key;

constexpr std::array kProjectKey{project::kRoot};
constexpr std::array kPainterKey{overlay::kPainterInfo};

constexpr DictPart kProjectParts[] = {
    {u"", u"the document", kProjectKey},
    {u"VRXWrapper", u"VRXWrapper", project::kWrapperKeys},
    {u"VRXWrapper/OutputSettings", u"OutputSettings", project::kOutputKeys},
    {u"VRXWrapper/OutputSettings/VideoOutputSettings", u"VideoOutputSettings", project::kVideoKeys},
    {u"VRXWrapper/OutputSettings/AudioOutputSettings", u"AudioOutputSettings", project::kAudioKeys},
    {u"VRXWrapper/VideoTrack", u"a clip of VideoTrack", project::kClipKeys},
};

constexpr DictPart kPainterParts[] = {
    {u"", u"the document", kPainterKey},
    {u"PainterInfo", u"PainterInfo", overlay::kPainterInfoKeys},
    {u"PainterInfo/CaptionInfo", u"CaptionInfo", overlay::kCaptionKeys},
    {u"PainterInfo/GeneralInfo", u"GeneralInfo", overlay::kGeneralKeys},
    {u"PainterInfo/TemplateInfo", u"TemplateInfo", overlay::kTemplateKeys},
    {u"PainterInfo/TennisMetaInfo", u"TennisMetaInfo", overlay::kTennisKeys},
    {u"PainterInfo/TemplateInfo/LogDataArray", u"LogDataArray", overlay::kLogDataKeys},
};

/// As far along the path as the document goes.
const XpIniElement& Deepest(const XpIniDict& document, View path) {
  const XpIniElement* at = &document;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find(u'/'), path.size());
    const XpIniElement* next = at->Get(XpString(path.substr(0, end)));
    if (next == nullptr) break;
    at = next;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return *at;
}

/// The part that a problem's key belongs into: "TemplateInfo/Valid" names it, "VideoWidth" leaves it open.
const DictPart* FindPart(std::span<const DictPart> parts, View key) {
  const std::size_t slash = key.find(u'/');
  const View name = slash == key.npos ? key : key.substr(slash + 1);
  const auto isPart = [&](const DictPart& part) {
    if (slash != key.npos && part.name != key.substr(0, slash)) return false;
    return std::ranges::any_of(part.keys, [&](const Key& known) { return known.name == name; });
  };
  const auto found = std::ranges::find_if(parts, isPart);
  return found == parts.end() ? nullptr : &*found;
}

}  // namespace

std::span<const DictPart> ProjectParts() { return kProjectParts; }
std::span<const DictPart> PainterParts() { return kPainterParts; }

DocumentLines::DocumentLines(const XpIniDict& document, std::span<const DictPart> parts)
    : m_document(document), m_parts(parts) {
  const XpIniElement* wrapper = Find(&document, project::kRoot);
  for (const Key& key : {project::kVideoTrack, project::kAudioTrack}) {
    Track& track = m_tracks.emplace_back(Track{key.name, {}});
    const XpIniElement* array = Find(wrapper, key);
    for (std::uint32_t i = 0; array != nullptr && i < array->GetCount(); ++i) {
      const XpIniElement* element = array->GetAt(i);
      if (element->GetType() == XpIniType::Dict) track.clips.push_back(element);
    }
  }
}

const XpIniElement* DocumentLines::FindDict(const Problem& problem) const {
  if (problem.clip == 0) {
    const DictPart* part = FindPart(m_parts, problem.key.AsView());
    return part == nullptr ? nullptr : &Deepest(m_document, part->path);
  }
  const auto track = std::ranges::find(m_tracks, problem.track, &Track::name);
  return track == m_tracks.end() || problem.clip > track->clips.size() ? nullptr
                                                                       : track->clips[problem.clip - 1];
}

std::uint64_t DocumentLines::LineOf(const Problem& problem) const {
  const XpIniElement* dict = FindDict(problem);
  if (dict == nullptr) return 0;
  const View key = problem.key.AsView();
  const XpIniElement* element =
      dict->GetType() == XpIniType::Dict ? dict->Get(XpString(key.substr(key.find(u'/') + 1))) : nullptr;
  return (element == nullptr ? dict : element)->GetLines().element;
}

void DocumentLines::Fill(const XpString& file, std::vector<Problem>& problems) const {
  for (Problem& problem : problems) {
    if (problem.line == 0 && problem.file == file) problem.line = LineOf(problem);
  }
}

void DocumentLines::FindClipOf(Problem& problem) const {
  if (problem.key.IsEmpty()) return;
  for (const Track& track : m_tracks) {
    const auto isOf = [&](const XpIniElement* clip) {
      const XpIniElement* element = clip->Get(problem.key);
      return element != nullptr && element->GetLines().element == problem.line;
    };
    const auto found = std::ranges::find_if(track.clips, isOf);
    if (found == track.clips.end()) continue;
    problem.track = track.name;
    problem.clip = static_cast<std::uint32_t>(found - track.clips.begin() + 1);
    return;
  }
}

}  // namespace vrx::check
