// vrx-make-clip: writes a test or demonstration clip from the command line.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <map>

#include "samples/clipmaker/PatternClip.h"

namespace {

using vrx::test_support::ClipSoundStyle;
using vrx::test_support::ClipStyle;
using vrx::test_support::PatternClip;
using vrx::test_support::RouteNames;

constexpr int kLargestRate = 1000000;
constexpr int kMaxSide = 8192;

// "A<separator>B", or "A" alone when `second` may keep its value.
CLI::callback_t PairInto(int& first, int& second, char separator, bool secondNeeded) {
  return [&first, &second, separator, secondNeeded](const CLI::results_t& words) {
    const std::string& word = words.front();
    const std::size_t at = word.find(separator);
    if (at == std::string::npos) return !secondNeeded && CLI::detail::lexical_cast(word, first);
    return CLI::detail::lexical_cast(word.substr(0, at), first) &&
           CLI::detail::lexical_cast(word.substr(at + 1), second);
  };
}

struct Arguments {
  std::string path;
  std::string audio = "click";
  PatternClip clip;
};

void DescribePicture(CLI::App& app, PatternClip& clip) {
  app.add_option("--size", PairInto(clip.width, clip.height, 'x', true), "Stored size, both even")
      ->type_name("WxH")
      ->default_str("640x360");
  app.add_option("--rate", PairInto(clip.rateNum, clip.rateDen, '/', false), "Frames a second")
      ->type_name("NUM[/DEN]")
      ->default_str("25");
  app.add_option("--frames", clip.frames, "Number of frames; 0 writes sound only")
      ->check(CLI::Range(0, kLargestRate))
      ->capture_default_str();
  app.add_option("--codec", clip.codec, "Picture codec")
      ->check(CLI::IsMember({"h264", "mpeg2video", "mpeg4", "ffv1"}))
      ->capture_default_str();
  app.add_option("--gop", clip.gop, "Frames from key frame to key frame")->check(CLI::Range(1, kLargestRate));
  app.add_option("--b-frames", clip.bFrames, "Longest run of B-frames")->check(CLI::Range(0, 16));
  app.add_option("--crf", clip.crf, "Quality of h264, lower is better")->check(CLI::Range(0, 51));
  app.add_option("--rotate", clip.rotation, "Clockwise turn that the file asks for")
      ->check(CLI::IsMember({0, 90, 180, 270}));
  app.add_option("--sar", PairInto(clip.sarNum, clip.sarDen, ':', true), "Sample aspect ratio")
      ->type_name("A:B");
  app.add_option("--date", clip.date, "When it was recorded, as 2024-05-01T14:00:00+0200");
  app.add_flag("--full-range", clip.fullRange, "Luma from 0 to 255");
  app.add_flag("--bt601", clip.bt601, "Colour matrix of BT.601 instead of BT.709");
}

void DescribeContent(CLI::App& app, PatternClip& clip) {
  const std::map<std::string, ClipStyle> styles = {{"pattern", ClipStyle::kPattern},
                                                   {"scene", ClipStyle::kScene},
                                                   {"court", ClipStyle::kCourt},
                                                   {"road", ClipStyle::kRoad}};
  app.add_option("--style", clip.style, "What is drawn")
      ->transform(CLI::CheckedTransformer(styles))
      ->default_str("pattern");
  app.add_option("--first-number", clip.firstNumber, "Number in the first frame's pattern")
      ->capture_default_str();
  app.add_option("--seed", clip.seed, "Which landscape the scene shows")->capture_default_str();
  app.add_option("--route", clip.route, "Way of the road style, as vrx-make-log has it")
      ->transform(CLI::CheckedTransformer(RouteNames()))
      ->default_str("drive");
  app.add_option("--from", clip.routeSecond, "Second of the way at which the clip begins")
      ->check(CLI::Range(0, 86400))
      ->capture_default_str();
}

void DescribeSound(CLI::App& app, Arguments& arguments) {
  app.add_option("--audio", arguments.audio, "Sound: click (one a second), click-tone, tone or none")
      ->check(CLI::IsMember({"click", "click-tone", "tone", "none"}))
      ->capture_default_str();
  vrx::test_support::ClipSound& sound = arguments.clip.sound;
  app.add_option("--audio-codec", sound.codec, "Encoder; by default aac or PCM, by container");
  app.add_option("--audio-rate", sound.rate, "Hz")
      ->check(CLI::Range(1000, kLargestRate))
      ->capture_default_str();
  app.add_option("--audio-channels", sound.channels, "Channels")
      ->check(CLI::Range(1, 8))
      ->capture_default_str();
  app.add_option("--audio-samples", sound.samples, "Length of the sound; by default the picture's");
}

void ApplySound(const std::string& audio, PatternClip& clip) {
  clip.hasSound = audio != "none";
  if (audio == "tone") clip.sound.style = ClipSoundStyle::kTone;
  if (audio == "click-tone") clip.sound.style = ClipSoundStyle::kClickOverTone;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Writes a clip of numbered test pictures or of a synthetic scene.", "vrx-make-clip");
  Arguments arguments;
  arguments.clip.width = 640;
  arguments.clip.height = 360;
  app.add_option("out", arguments.path, "File to write: .mp4, .mkv, .ts, .mov, .avi, .wav, ...")->required();
  DescribePicture(app, arguments.clip);
  DescribeContent(app, arguments.clip);
  DescribeSound(app, arguments);
  CLI11_PARSE(app, argc, argv);
  try {
    PatternClip& clip = arguments.clip;
    ApplySound(arguments.audio, clip);
    if (clip.width > kMaxSide || clip.height > kMaxSide) throw std::runtime_error("the size is too large");
    vrx::test_support::WritePatternClip(arguments.path, clip);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vrx-make-clip: %s\n", error.what());
    return 1;
  }
  return 0;
}
