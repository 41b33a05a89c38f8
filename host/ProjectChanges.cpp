#include "host/ProjectChanges.h"

#include "content/plist/PlistReader.h"
#include "content/plist/PlistWriter.h"
#include "content/plist/XpIniDict.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"

namespace vrx::host {
namespace {

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

void ChangeOutput(XpIniElement& output, const ProjectChanges& changes) {
  if (!changes.output.IsEmpty())
    Replace(output, project::kOutputFilePath.name, XpIniType::String, changes.output);
  if (XpIniElement* video = Writable(&output, project::kVideoOutputSettings)) ChangeVideo(*video, changes);
  XpIniElement* audio = changes.soundCodec == 0 ? nullptr : Writable(&output, project::kAudioOutputSettings);
  if (audio != nullptr) ReplaceNumber(*audio, project::kAudioCodecType.name, changes.soundCodec);
}

}  // namespace

std::string ChangeProject(const std::vector<char>& bytes, const XpString& path,
                          const ProjectChanges& changes) {
  std::string unchanged(bytes.begin(), bytes.end());
  XpIniDict document;
  if (plist::ReadBytes(bytes, nullptr, document, nullptr) != XpOk) return unchanged;
  const XpIniElement* wrapper = project::Find(&document, project::kRoot);
  for (const plist::Key& track : {project::kVideoTrack, project::kAudioTrack})
    MakeAllAbsolute(project::Find(wrapper, track), project::kSourceFile, path);
  if (XpIniElement* output = Writable(wrapper, project::kOutputSettings)) {
    MakeAbsolute(output, project::kOutputFilePath, path);
    MakeAbsolute(output, project::kPainterEffect, path);
    ChangeOutput(*output, changes);
  }
  std::string text;
  return plist::WriteDocument(document, text) == XpOk ? text : unchanged;
}

}  // namespace vrx::host
