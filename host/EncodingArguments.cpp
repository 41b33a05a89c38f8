#include "host/EncodingArguments.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <vector>

#include "host/ArgumentChecks.h"
#include "vrx/VRXLimits.h"

namespace vrx::host {
namespace {

std::string CheckPreset(const std::string& text) {
  const std::vector<std::string> names(limits::kPresets.begin(), limits::kPresets.end());
  return std::ranges::find(names, text) == names.end() ? NoneOf(text, names) : std::string();
}

const std::map<std::string, VRXVideoCodec>& Codecs() {
  static const std::map<std::string, VRXVideoCodec> codecs{{"h264", VRXVideoCodecH264},
                                                           {"hevc", VRXVideoCodecHevc},
                                                           {"h265", VRXVideoCodecHevc},
                                                           {"av1", VRXVideoCodecAv1}};
  return codecs;
}

const std::map<std::string, VRXSmartRendering>& SmartWays() {
  static const std::map<std::string, VRXSmartRendering> ways{
      {"off", VRXSmartOff}, {"auto", VRXSmartAuto}, {"require", VRXSmartRequire}};
  return ways;
}

constexpr const char* kSoundCodec = "--sound-codec";
constexpr const char* kAc3 = "ac3";

/// As documents count them.
const std::map<std::string, std::int32_t>& SoundCodecs() {
  static const std::map<std::string, std::int32_t> codecs{{"aac", 1}, {kAc3, 2}, {"pcm", 3}};
  return codecs;
}

template <class Value>
std::string NameOf(const std::map<std::string, Value>& names, Value value) {
  const auto found = std::ranges::find_if(names, [=](const auto& entry) { return entry.second == value; });
  return found == names.end() ? std::string() : found->first;
}

/// The shortest text that is read as the same number.
std::string NumberText(double number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof(text), number).ptr};
}

}  // namespace

void EncodingArguments::AddTo(ProjectChanges& changes) const {
  if (!size.empty()) changes.size = ParsePictureSize(size);
  if (!rate.empty()) changes.frameDuration = ParseFrameRate(rate);
  if (!bitrate.empty()) changes.bitrate = ParseBitrate(bitrate);
  changes.soundCodec = soundCodec;
}

VRXRenderOverrides EncodingArguments::GetOverrides() const {
  VRXRenderOverrides overrides;
  overrides.codec = codec;
  overrides.hardware = hardware;
  overrides.preset = preset.empty() ? nullptr : preset.c_str();
  overrides.crf = quality;
  overrides.smart = smart;
  return overrides;
}

std::vector<std::string> EncodingArguments::GetWords() const {
  std::vector<std::string> words;
  const auto add = [&](const char* option, const std::string& value) {
    if (!value.empty()) words.insert(words.end(), {option, value});
  };
  add(kSoundCodec, NameOf(SoundCodecs(), soundCodec));
  add("--size", size);
  add("--rate", rate);
  add("--bitrate", bitrate);
  if (quality >= 0.0) add("--crf", NumberText(quality));
  add("--preset", preset);
  add("--codec", NameOf(Codecs(), codec));
  if (hardware) words.emplace_back("--hardware");
  add("--smart", NameOf(SmartWays(), smart));
  return words;
}

void AddFormatOptions(CLI::App& command, EncodingArguments& arguments) {
  command.add_option("--size", arguments.size, "Size of the picture, as 1920x1080")
      ->check(CheckPictureSize)
      ->option_text("SIZE");
  command.add_option("--rate", arguments.rate, "Frames a second, as 25, 29.97 or 30000/1001")
      ->check(CheckFrameRate)
      ->option_text("RATE");
  command.add_option("--bitrate", arguments.bitrate, "Bits a second of the picture, as 8M or 8000k")
      ->check(CheckBitrate)
      ->option_text("BITS");
}

void AddEncodingOptions(CLI::App& command, EncodingArguments& arguments) {
  AddFormatOptions(command, arguments);
  command
      .add_option("--crf", arguments.quality,
                  "Constant quality instead of a bitrate: 0 is without loss, 18 very good, 28 small")
      ->check(NumberWithin(0.0, limits::kMaxAv1Quality))
      ->option_text("NUMBER")
      ->excludes(command.get_option("--bitrate"));
  command.add_option("--preset", arguments.preset, "ultrafast to veryslow: slower makes smaller files")
      ->check(CheckPreset)
      ->option_text("NAME");
  command.add_option("--codec", arguments.codec, "h264 (plays everywhere), hevc or av1 (smaller, slower)")
      ->transform(NamedValues(Codecs()))
      ->type_name("CODEC")
      ->option_text("CODEC");
  command.add_flag("--hardware", arguments.hardware,
                   "Encode in hardware where that works; a line says why when it does not");
  command
      .add_option("--smart", arguments.smart,
                  "Copy what the movie shows unchanged: off, auto, or require (fail where a clip cannot be)")
      ->transform(NamedValues(SmartWays()))
      ->type_name("WAY")
      ->option_text("WAY");
}

void AddSoundCodecOption(CLI::App& command, EncodingArguments& arguments) {
  command
      .add_option(kSoundCodec, arguments.soundCodec,
                  "The sound as aac, ac3 or pcm, whatever the document says")
      ->transform(NamedValues(SoundCodecs()))
      ->type_name("CODEC")
      ->option_text("CODEC");
}

std::vector<std::string> Ac3Words() { return {kSoundCodec, kAc3}; }

void CheckEncoding(const EncodingArguments& arguments) {
  if (arguments.quality > limits::kMaxQuality && arguments.codec != VRXVideoCodecAv1)
    throw CLI::ValidationError("--crf", "goes up to 51 (with --codec av1 to 63)");
}

bool AsksForAnything(const VRXRenderOverrides& overrides) {
  return overrides.codec != VRXVideoCodecOfRecord || overrides.hardware || overrides.preset != nullptr ||
         overrides.crf >= 0.0 || overrides.firstFrame != 0 || overrides.frameCount != 0 ||
         overrides.overlays != VRXOverlayInMovie || overrides.smart != VRXSmartByRecord ||
         overrides.tracks != VRXAllTracks || overrides.pieceOf != nullptr;
}

}  // namespace vrx::host
