#include "host/ModdEdit.h"

#include <cstdio>

#include "content/formats/XpFormatChecker.h"
#include "content/modd/SfModdXML.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Paths.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/ModdValues.h"

namespace vrx::host {

namespace {

/// Other programs read it as an integer, minutes ahead of UTC.
constexpr char kTimeZoneKey[] = "FileTimeZoneOffset";

bool IsSidecar(const XpString& path) { return XpFormatChecker::GetFormatFromName(path) == formats::kModd; }

/// The exit status of a sidecar that could not be opened.
int FailToOpen(const SfModdXML& modd, const ModdEdit& edit, XpResult result) {
  if (!modd.FileExists())
    return Fail(edit.file + ": it has no sidecar of metadata (" + CodeText(result) + ")");
  const std::string cause =
      result == XpErrFailed ? "it is no sidecar of metadata (" + CodeText(result) + ")" : ReadCause(result);
  return Fail(Utf8(modd.GetModdPath()) + ": " + cause);
}

bool IsContainer(XpIniType type) {
  return type == XpIniType::Dict || type == XpIniType::Array || type == XpIniType::MemChunk;
}

/// The type that the new value shall have; false, with the reason said, when there can be none.
bool ChooseType(const ModdEdit& edit, const XpIniElement* old, XpIniType& type) {
  if (old != nullptr && IsContainer(old->GetType())) {
    Fail(edit.key + ": it is no single value, which could be set");
    return false;
  }
  XpIniValue ignored;
  if (!FindValueType(edit.type, type)) {
    const bool isInteger = ParseValue(edit.value, XpIniType::Int, ignored);
    type = old != nullptr ? old->GetType() : isInteger ? XpIniType::Int : XpIniType::String;
  }
  if (edit.key == kTimeZoneKey) {
    std::int32_t minutes = 0;
    const bool isZone = type == XpIniType::Int && std::sscanf(edit.value.c_str(), "%7d", &minutes) == 1 &&
                        std::to_string(minutes) == edit.value;
    if (!isZone) Fail(edit.key + ": " + edit.value + " is no number of minutes from UTC");
    return isZone;
  }
  return true;
}

XpResult PutValue(XpIniElement& metadata, const XpString& key, XpIniType type, const XpIniValue& value) {
  if (metadata.Get(key) != nullptr) {
    if (const XpResult result = metadata.Remove(key)) return result;
  }
  return metadata.Add(key, type, value);
}

}  // namespace

int GetModdValue(const ModdEdit& edit, bool asJson) {
  const XpString path = platform::AbsolutePath(platform::PathFromNative(edit.file));
  SfModdXML modd(path);
  const XpResult result = IsSidecar(path) ? modd.OpenSidecar(path) : modd.Open(SfModdRead);
  if (result != XpOk) return FailToOpen(modd, edit, result);
  const XpIniElement* value = modd.GetMetaDict()->Get(XpNarrowString(edit.key.c_str()).ToWide());
  if (value == nullptr) return Fail(Utf8(modd.GetModdPath()) + ": " + edit.key + ": it is not set");
  const Json json = ValueJson(*value);
  if (asJson) {
    PrintJson(json, 2);
    return kDone;
  }
  std::printf("%s\n", json.is_string() ? Masked(json.get<std::string>()).c_str() : InOneLine(json).c_str());
  return kDone;
}

int SetModdValue(const ModdEdit& edit) {
  const XpString path = platform::AbsolutePath(platform::PathFromNative(edit.file));
  if (IsSidecar(path)) return Fail(edit.file + ": name the media file, whose own sidecar is then written");
  if (!XpPathIsFile(path)) return Fail(edit.file + ": " + ReadCause(XpErrFileNotFound));
  SfModdXML modd(path);
  if (const XpResult result = modd.Open(SfModdReadWrite)) return FailToOpen(modd, edit, result);
  const XpString key = XpNarrowString(edit.key.c_str()).ToWide();
  XpIniElement& metadata = *modd.GetMetaDict();
  XpIniType type = XpIniType::String;
  if (!ChooseType(edit, metadata.Get(key), type)) return kFailed;
  XpIniValue value;
  if (!ParseValue(edit.value, type, value)) {
    return Fail(edit.key + ": " + edit.value + " is no value of the type " + ValueTypeName(type));
  }
  if (const XpResult result = PutValue(metadata, key, type, value)) {
    return Fail(edit.key + ": there is nothing that could hold this value (" + CodeText(result) + ")");
  }
  if (const XpResult result = modd.SaveSidecar())
    return Fail(Utf8(modd.GetModdPath()) + ": " + WriteCause(result));
  std::printf("%s: %s = %s\n", Plain(modd.GetModdPath()).c_str(), Masked(edit.key).c_str(),
              InOneLine(ValueJson(*metadata.Get(key))).c_str());
  return kDone;
}

}  // namespace vrx::host
