#include "host/ProjectChanges.h"

#include "content/plist/PlistReader.h"
#include "content/plist/PlistWriter.h"
#include "content/plist/XpIniDict.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"

namespace vrx::host {
namespace {

constexpr plist::Key kPainterInfo{u"PainterInfo", XpIniType::Dict};
constexpr plist::Key kGeneralInfo{u"GeneralInfo", XpIniType::Dict};
constexpr plist::Key kTemplateInfo{u"TemplateInfo", XpIniType::Dict};
constexpr plist::Key kLogDataArray{u"LogDataArray", XpIniType::Array};
constexpr plist::Key kLogPath{u"GPSLogFilePath", XpIniType::String};
constexpr const char16_t* kVideoWidth = u"VideoWidth";
constexpr const char16_t* kVideoHeight = u"VideoHeight";

void MakeAbsolute(const XpIniElement* dict, const plist::Key& key, const XpString& from) {
  if (project::Find(dict, key) == nullptr) return;
  XpIniElement* element = dict->Get(key.name);
  XpString path;
  element->GetString(path);
  element->SetString(project::ResolvePath(from, path));
}

void MakeAllAbsolute(const XpIniElement* array, const plist::Key& key, const XpString& from) {
  for (std::uint32_t i = 0; array != nullptr && i < array->GetCount(); ++i) {
    if (array->GetAt(i)->GetType() == XpIniType::Dict) MakeAbsolute(array->GetAt(i), key, from);
  }
}

/// Puts a value in the place of the one that is there, whatever its type.
void Replace(XpIniElement& dict, const char16_t* key, XpIniType type, const XpIniValue& value) {
  dict.Remove(key);
  dict.Add(key, type, value);
}

void ReplaceNumber(XpIniElement& dict, const char16_t* key, std::int64_t number) {
  Replace(dict, key, XpIniType::Int, number);
}

/// A dict that can be changed; null when there is none.
XpIniElement* Writable(const XpIniElement* dict, const plist::Key& key) {
  return project::Find(dict, key) == nullptr ? nullptr : dict->Get(key.name);
}

/// Overlays have the size of the movie from their own document. It stays as it is where it cannot be read.
void ChangePainter(XpIniElement& output, const PictureSize& size, ChangedProject& changed) {
  if (project::Find(&output, project::kPainterEffect) == nullptr) return;
  XpString path;
  output.Get(project::kPainterEffect.name)->GetString(path);
  XpIniDict document;
  if (document.Load(path) != XpOk) return;
  const XpIniElement* info = project::Find(&document, kPainterInfo);
  if (XpIniElement* general = Writable(info, kGeneralInfo)) {
    ReplaceNumber(*general, kVideoWidth, size.width);
    ReplaceNumber(*general, kVideoHeight, size.height);
  }
  MakeAllAbsolute(project::Find(project::Find(info, kTemplateInfo), kLogDataArray), kLogPath, path);
  std::string text;
  if (plist::WriteDocument(document, text) != XpOk) return;
  changed.painter = std::make_unique<platform::MemoryFile>(text);
  if (changed.painter->GetPath().IsEmpty()) return;
  changed.painterPath = path;
  Replace(output, project::kPainterEffect.name, XpIniType::String, changed.painter->GetPath());
}

void ChangeVideo(XpIniElement& video, const ProjectChanges& changes) {
  if (changes.size) {
    ReplaceNumber(video, project::kWidth.name, changes.size->width);
    ReplaceNumber(video, project::kHeight.name, changes.size->height);
  }
  if (changes.frameDuration) {
    ReplaceNumber(video, project::kTimeValue.name, static_cast<std::int64_t>(changes.frameDuration->value));
    ReplaceNumber(video, project::kTimeScale.name, static_cast<std::int64_t>(changes.frameDuration->scale));
  }
  if (changes.bitrate) ReplaceNumber(video, project::kAverageBitrate.name, *changes.bitrate);
}

void ChangeOutput(XpIniElement& output, const ProjectChanges& changes, ChangedProject& changed) {
  if (!changes.output.IsEmpty())
    Replace(output, project::kOutputFilePath.name, XpIniType::String, changes.output);
  if (XpIniElement* video = Writable(&output, project::kVideoOutputSettings)) ChangeVideo(*video, changes);
  if (changes.size) ChangePainter(output, *changes.size, changed);
}

}  // namespace

ChangedProject ChangeProject(const std::vector<char>& bytes, const XpString& path,
                             const ProjectChanges& changes) {
  ChangedProject changed;
  changed.project.assign(bytes.begin(), bytes.end());
  XpIniDict document;
  if (plist::ReadBytes(bytes, nullptr, document, nullptr) != XpOk) return changed;
  const XpIniElement* wrapper = project::Find(&document, project::kRoot);
  for (const plist::Key& track : {project::kVideoTrack, project::kAudioTrack})
    MakeAllAbsolute(project::Find(wrapper, track), project::kSourceFile, path);
  if (XpIniElement* output = Writable(wrapper, project::kOutputSettings)) {
    MakeAbsolute(output, project::kOutputFilePath, path);
    MakeAbsolute(output, project::kPainterEffect, path);
    ChangeOutput(*output, changes, changed);
  }
  std::string text;
  if (plist::WriteDocument(document, text) == XpOk) changed.project = std::move(text);
  return changed;
}

}  // namespace vrx::host
