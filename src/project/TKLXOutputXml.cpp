#include "src/project/TKLXOutputXml.h"

#include <algorithm>
#include <array>

#include "foundation/file/XpFileOperations.h"
#include "src/project/ProjectKeys.h"

namespace {

using namespace vrx::project;

constexpr std::int64_t kAbsent = -1;

XpString ReadString(const XpIniElement& dict, const Key& key) {
  XpString text;
  Read(dict, key, text, XpString(), &XpIniElement::GetString);
  return text;
}

std::int64_t ReadInteger(const XpIniElement& dict, const Key& key) {
  std::int64_t value = kAbsent;
  Read(dict, key, value, kAbsent, &XpIniElement::GetInt64);
  return value;
}

double ReadReal(const XpIniElement& dict, const Key& key) {
  double value = 0.0;
  Read(dict, key, value, -1.0, &XpIniElement::GetReal);
  return value;
}

bool ReadBool(const XpIniElement& dict, const Key& key, bool absent) {
  bool value = absent;
  Read(dict, key, value, absent, &XpIniElement::GetBool);
  return value;
}

/// `value` where it is one of 1 to `last`, else 0.
std::int32_t OneTo(std::int32_t last, std::int64_t value) {
  return value >= 1 && value <= last ? static_cast<std::int32_t>(value) : 0;
}

/// From the document's number of a specification, which counts from 1, to the engine's.
std::int32_t EngineSpecification(std::int64_t inDocument) {
  constexpr std::array<std::int32_t, 8> kEngineNumber{0, 1, 3, 4, 6, 8, 9, 7};
  const bool known = inDocument >= 1 && inDocument < std::ssize(kEngineNumber);
  return known ? kEngineNumber[static_cast<std::size_t>(inDocument)] : 0;
}

XpSharedPtr<TKLXOutputXmlInfo> ReadClip(const XpIniElement& dict) {
  XpSharedPtr<TKLXOutputXmlInfo> clip(new TKLXOutputXmlInfo);
  clip->sourceFile = ReadString(dict, kSourceFile);
  clip->sourceType = OneTo(VRXSourceBaseband, ReadInteger(dict, kSourceType));
  clip->startTime = ReadReal(dict, kStartTime);
  clip->endTime = ReadReal(dict, kEndTime);
  clip->inPosition = ReadReal(dict, kInPosition);
  clip->outPosition = ReadReal(dict, kOutPosition);
  clip->enableOverlay = ReadBool(dict, kEnableOverlay, true);
  return clip;
}

void ReadTrack(const XpIniElement& wrapper, const Key& key, TKLXOutputXml::Track& track) {
  track.clear();
  const XpIniElement* array = Find(&wrapper, key);
  if (array == nullptr) return;
  for (std::uint32_t i = 0; i < array->GetCount(); ++i) {
    const XpIniElement* element = array->GetAt(i);
    if (element->GetType() == XpIniType::Dict) track.push_back(ReadClip(*element));
  }
}

}  // namespace

XpResult TKLXOutputXml::LoadXmlFile(const XpString& path, vrx::plist::Findings* findings) {
  if (path.IsEmpty() || !XpPathIsFile(path)) return XpErrFileNotFound;
  const XpResult result = vrx::plist::ReadFile(path, *document, findings);
  return result == XpOk ? ReadDocument() : result;
}

XpResult TKLXOutputXml::LoadXmlBytes(std::span<const char> bytes, vrx::plist::Findings* findings) {
  const XpResult result = vrx::plist::ReadBytes(bytes, nullptr, *document, findings);
  return result == XpOk ? ReadDocument() : result;
}

XpResult TKLXOutputXml::ReadDocument() {
  const XpIniElement* wrapper = Find(document.get(), kRoot);
  if (wrapper == nullptr) return XpErrFileNotFound;
  ReadTrack(*wrapper, kVideoTrack, videoTracks);
  ReadTrack(*wrapper, kAudioTrack, audioTracks);
  const XpIniElement* output = Find(wrapper, kOutputSettings);
  if (output == nullptr) return XpErrFileNotFound;
  outputFilePath = ReadString(*output, kOutputFilePath);
  painterEffect = ReadString(*output, kPainterEffect);
  ReadVideoSettings(*output);
  return ReadAudioSettings(*output);
}

XpResult TKLXOutputXml::ReadVideoSettings(const XpIniElement& output) {
  const XpIniElement* dict = Find(&output, kVideoOutputSettings);
  if (dict == nullptr) return XpErrNoObject;
  if (!videoSettings) videoSettings = std::make_unique<VRXVideoOutputSetting>();
  videoSettings->codecType = OneTo(1, ReadInteger(*dict, kVideoCodecType));
  videoSettings->specificationType = EngineSpecification(ReadInteger(*dict, kVideoSpecificationType));
  videoSettings->width = static_cast<std::int32_t>(ReadInteger(*dict, kWidth));
  videoSettings->height = static_cast<std::int32_t>(ReadInteger(*dict, kHeight));
  videoSettings->frameDuration.value = static_cast<std::uint64_t>(ReadInteger(*dict, kTimeValue));
  videoSettings->frameDuration.scale = static_cast<std::uint64_t>(ReadInteger(*dict, kTimeScale));
  videoSettings->averageBitrate = static_cast<std::int32_t>(ReadInteger(*dict, kAverageBitrate));
  videoSettings->interlace = ReadBool(*dict, kInterlace, false);
  videoSettings->avcEncoderMode = OneTo(2, ReadInteger(*dict, kAvcEncoderMode));
  videoSettings->forceRerendering = ReadBool(*dict, kForceRerendering, false);
  return XpOk;
}

XpResult TKLXOutputXml::ReadAudioSettings(const XpIniElement& output) {
  const XpIniElement* dict = Find(&output, kAudioOutputSettings);
  if (dict == nullptr) return XpErrNoObject;
  auto settings = std::make_unique<VRXAudioOutputSetting>();
  settings->codecType = OneTo(3, ReadInteger(*dict, kAudioCodecType));
  settings->channels = static_cast<std::uint16_t>(ReadInteger(*dict, kChannel));
  settings->bitsPerSample = static_cast<std::uint16_t>(ReadInteger(*dict, kBitPerSample));
  settings->samplingRate = static_cast<std::uint32_t>(ReadInteger(*dict, kSamplingRate));
  audioSettings = std::move(settings);
  return XpOk;
}
