#include "engine/OutputPlan.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "engine/EncoderTable.h"
#include "engine/EngineLog.h"
#include "engine/SourcePath.h"
#include "vrx/VRXLimits.h"

namespace vrx::engine {
namespace {

// By avcEncoderMode. Slower presets look further ahead, which takes hundreds of MiB of full HD frames.
constexpr std::array<const char*, 3> kPresets{"veryfast", "superfast", "medium"};
constexpr std::uint32_t kMaxTimeZoneBytes = 4096;
constexpr std::uint16_t kNotSet = 0xFFFF;  // hosts fill a number that a project leaves out with -1

Result Unusable(const std::string& what) {
  Log(VRXLogError, "output setting not usable: " + what);
  return kUnusableSettings;
}

Result MakeFrameDuration(const VRXTimeInfo& time, FrameDuration& duration) {
  const std::string text =
      "frameDuration is " + std::to_string(time.value) + "/" + std::to_string(time.scale) + " seconds";
  if (time.value == 0 || time.scale == 0) return Unusable(text);
  const std::uint64_t divisor = std::gcd(time.value, time.scale);
  const std::uint64_t value = time.value / divisor;
  const std::uint64_t scale = time.scale / divisor;
  if (value > static_cast<std::uint64_t>(kMaxTimeScale) ||
      scale > static_cast<std::uint64_t>(kMaxTimeScale)) {
    return Unusable(text + ", which no movie file can hold");
  }
  if (!limits::IsUsableFrameLength(value, scale)) return Unusable(text + ", outside 1/1000 to 10 seconds");
  duration = {static_cast<std::int64_t>(value), static_cast<std::int64_t>(scale)};
  return kOk;
}

Result MakeVideoPlan(const VRXVideoOutputSetting& setting, VideoPlan& plan) {
  if (setting.codecType != 0 && setting.codecType != 1) {
    return Unusable("video codecType is " + std::to_string(setting.codecType) + ", not 0 or 1");
  }
  if (setting.avcEncoderMode < 0 || setting.avcEncoderMode >= static_cast<int>(kPresets.size())) {
    return Unusable("avcEncoderMode is " + std::to_string(setting.avcEncoderMode) + ", not 0 to 2");
  }
  for (const auto& [name, side] : {std::pair{"width", setting.width}, {"height", setting.height}}) {
    if (limits::IsUsableSide(side)) continue;
    return Unusable(std::string(name) + " is " + std::to_string(side) + ", not an even number from " +
                    std::to_string(limits::kMinSide) + " to " + std::to_string(limits::kMaxSide));
  }
  plan.codec = setting.codecType == 0 ? VideoCodec::H264 : VideoCodec::Mpeg2;
  plan.width = setting.width;
  plan.height = setting.height;
  plan.bitrate = std::max(setting.averageBitrate, 0);
  plan.interlaced = setting.interlace;
  plan.preset = kPresets[static_cast<std::size_t>(setting.avcEncoderMode)];
  return MakeFrameDuration(setting.frameDuration, plan.frameDuration);
}

void Override(const RenderOverrides& overrides, OutputPlan& plan) {
  VideoPlan& video = plan.video;
  video.codec = overrides.codec.value_or(video.codec);
  if (overrides.preset != nullptr) video.preset = overrides.preset;
  video.quality = overrides.quality;
  if (video.quality) video.bitrate = 0;
  video.hardware = overrides.hardware;
  plan.firstFrame = overrides.firstFrame;
  plan.frameCount = overrides.frameCount;
  plan.overlaysAlone = overrides.overlaysAlone;
  plan.tracks = overrides.tracks;
  plan.piece = overrides.piece;
}

/// Who asks for a quality wants the movie to be as small as that makes it.
SmartRendering ChooseSmartRendering(const VRXVideoOutputSetting& setting, const RenderOverrides& overrides) {
  if (overrides.smart != SmartRendering::ByRecord) return overrides.smart;
  return setting.forceRerendering || overrides.quality ? SmartRendering::Off : SmartRendering::Auto;
}

Result ChooseContainer(std::int32_t systemType, const std::string& path, Container& container) {
  container = Container::Mp4;
  if (systemType == VRXSystemMp4 || systemType == VRXSystemMp4Broadcast) return kOk;
  if (systemType != VRXSystemByExtension) {
    return Unusable("systemType is " + std::to_string(systemType) + ", not 1 to 3");
  }
  container = ContainerOf(path);
  return kOk;
}

Result ChoosePcm(std::uint16_t bitsPerSample, AudioCodec& codec) {
  switch (bitsPerSample) {
    case 0:
    case kNotSet:
    case 16:
      codec = AudioCodec::Pcm16;
      return kOk;
    case 24:
      codec = AudioCodec::Pcm24;
      return kOk;
    default:
      return Unusable("bitsPerSample is " + std::to_string(bitsPerSample) + ", not 16 or 24");
  }
}

Result ChooseAudioCodec(const VRXAudioOutputSetting& setting, Container container, AudioCodec& codec) {
  switch (setting.codecType) {
    case 0:
      codec = container == Container::MpegTs ? AudioCodec::Ac3 : AudioCodec::Aac;
      return kOk;
    case 1:
      codec = AudioCodec::Aac;
      return kOk;
    case 2:
      codec = AudioCodec::Ac3;
      return kOk;
    case 3:
      return ChoosePcm(setting.bitsPerSample, codec);
    default:
      return Unusable("audio codecType is " + std::to_string(setting.codecType) + ", not 0 to 3");
  }
}

Result MakeAudioPlan(const VRXAudioOutputSetting& setting, Container container, AudioPlan& plan) {
  if (!limits::IsUsableChannelCount(setting.channels)) {
    return Unusable("audio channels is " + std::to_string(setting.channels) + ", not 1, 2 or 6");
  }
  if (!limits::IsUsableSampleRate(setting.samplingRate)) {
    return Unusable("samplingRate is " + std::to_string(setting.samplingRate) + " Hz, outside " +
                    std::to_string(limits::kMinSampleRate) + " to " + std::to_string(limits::kMaxSampleRate));
  }
  plan.channels = setting.channels;
  plan.sampleRate = static_cast<int>(setting.samplingRate);
  return ChooseAudioCodec(setting, container, plan.codec);
}

Result FindTimeZone(const VRXMetaDataSetting& setting, std::string& hex) {
  constexpr const char* kDigits = "0123456789abcdef";
  if (setting.count != 0 && setting.items == nullptr) return kInvalidArgument;
  for (std::uint32_t i = 0; i < setting.count; ++i) {
    const VRXMetaData* item = setting.items[i];
    if (item == nullptr || (item->size != 0 && item->data == nullptr)) return kInvalidArgument;
    if (item->kind != VRXMetaData::kTimeZone) continue;
    if (item->size > kMaxTimeZoneBytes) return Unusable("the time-zone item has more than 4096 bytes");
    hex.clear();
    for (std::uint32_t b = 0; b < item->size; ++b) {
      hex.push_back(kDigits[item->data[b] >> 4]);
      hex.push_back(kDigits[item->data[b] & 0xF]);
    }
  }
  return kOk;
}

}  // namespace

Result MakeOutputPlan(const VRXSystemOutputSetting& setting, const RenderOverrides& overrides,
                      OutputPlan& plan) {
  if (setting.video == nullptr || setting.outputFilePath == nullptr) return kInvalidArgument;
  plan = {};
  plan.path = NativePath(setting.outputFilePath->Get());
  if (plan.path.empty()) {
    Log(VRXLogError, "the output path is empty or names an unknown drive");
    return kOutputFailed;
  }
  VRX_TRY(MakeVideoPlan(*setting.video, plan.video));
  Override(overrides, plan);
  plan.smart = ChooseSmartRendering(*setting.video, overrides);
  VRX_TRY(ChooseContainer(setting.systemType, plan.path, plan.container));
  if (setting.audio != nullptr && plan.tracks != Tracks::Picture) {
    AudioPlan audio{};
    VRX_TRY(MakeAudioPlan(*setting.audio, plan.container, audio));
    plan.audio = audio;
    VRX_TRY(FitSound(plan));
  }
  if (!plan.overlaysAlone) VRX_TRY(CheckCodec(plan));
  if (plan.piece) {
    if (plan.container == Container::MpegTs) return Unusable("a piece of a movie is no transport stream");
    plan.piece->frameDuration = plan.video.frameDuration;
    plan.piece->hasSound = setting.audio != nullptr;
  }
  return setting.metaData == nullptr ? kOk : FindTimeZone(*setting.metaData, plan.timeZone);
}

Container ContainerOf(const std::string& path) {
  const std::string extension = LowerExtension(path);
  if (extension == "ts" || extension == "m2ts" || extension == "mts") return Container::MpegTs;
  return extension == "mov" ? Container::QuickTime : Container::Mp4;
}

Result FitSound(OutputPlan& plan) {
  if (!IsPcm(plan.audio->codec)) return kOk;
  if (plan.container == Container::MpegTs) return Unusable("an MPEG transport stream holds no PCM sound");
  // The MP4 muxer does not take PCM, and the QuickTime muxer does.
  plan.container = Container::QuickTime;
  return kOk;
}

std::int64_t SamplesOfFrames(std::int64_t frames, FrameDuration duration, int sampleRate) {
  return static_cast<std::int64_t>(RoundDivide(Int128{frames} * duration.value * sampleRate, duration.scale));
}

}  // namespace vrx::engine
