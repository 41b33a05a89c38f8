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

const XpIniElement* FindClip(const XpIniDict& document, const XpString& track, std::uint32_t clip) {
  const XpIniElement* array = document.Get(XpString(project::kRoot.name) + u"/" + track);
  if (array == nullptr || array->GetType() != XpIniType::Array) return nullptr;
  for (std::uint32_t i = 0; i < array->GetCount(); ++i) {
    const XpIniElement* element = array->GetAt(i);
    if (element->GetType() == XpIniType::Dict && --clip == 0) return element;
  }
  return nullptr;
}

std::uint64_t LineOf(const XpIniDict& document, std::span<const DictPart> parts, const Problem& problem) {
  const XpIniElement* dict = nullptr;
  if (problem.clip != 0) {
    dict = FindClip(document, problem.track, problem.clip);
  } else if (const DictPart* part = FindPart(parts, problem.key.AsView())) {
    dict = &Deepest(document, part->path);
  }
  if (dict == nullptr) return 0;
  const View key = problem.key.AsView();
  const XpIniElement* element =
      dict->GetType() == XpIniType::Dict ? dict->Get(XpString(key.substr(key.find(u'/') + 1))) : nullptr;
  return (element == nullptr ? dict : element)->GetLines().element;
}

void FillLines(const XpIniDict& document, std::span<const DictPart> parts, const XpString& file,
               std::vector<Problem>& problems) {
  for (Problem& problem : problems) {
    if (problem.line == 0 && problem.file == file) problem.line = LineOf(document, parts, problem);
  }
}

}  // namespace vrx::check
