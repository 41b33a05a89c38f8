#include "samples/clipmaker/PatternClip.h"

#include <filesystem>
#include <limits>
#include <memory>

#include "samples/clipmaker/ClipMuxer.h"
#include "samples/clipmaker/ClipPicture.h"
#include "samples/clipmaker/ClipVoice.h"

namespace vrx::test_support {
namespace {

std::string DefaultSoundCodec(const std::string& extension) {
  return extension == ".mp4" || extension == ".m4a" || extension == ".ts" ? "aac" : "pcm_s16le";
}

void CheckClip(const PatternClip& clip, const std::string& extension) {
  const auto refuse = [](const std::string& why) { throw std::runtime_error("unusable clip: " + why); };
  if (clip.width <= 0 || clip.height <= 0 || clip.width % 2 != 0 || clip.height % 2 != 0) {
    refuse("the size must be even");
  }
  if (clip.rateNum <= 0 || clip.rateDen <= 0) refuse("the frame rate must be above 0");
  if (clip.rotation % 90 != 0 || clip.rotation < 0 || clip.rotation > 270) {
    refuse("the rotation must be 0, 90, 180 or 270");
  }
  if (clip.rotation != 0 && extension != ".mp4" && extension != ".mov") refuse("rotation needs .mp4 or .mov");
  if (clip.hasSound && (clip.sound.rate <= 0 || clip.sound.channels <= 0)) refuse("no such sound format");
  const bool picture = clip.frames > 0 || !clip.timesMs.empty();
  if (!picture && !clip.hasSound) refuse("neither picture nor sound");
  if (!picture && clip.sound.samples < 0) refuse("sound alone needs a length");
}

}  // namespace

void WritePatternClip(const std::string& path, const PatternClip& clip) {
  const std::string extension = std::filesystem::path(path).extension().string();
  CheckClip(clip, extension);
  ClipMuxer muxer(path);
  std::unique_ptr<ClipPicture> picture;
  std::unique_ptr<ClipVoice> voice;
  if (clip.frames > 0 || !clip.timesMs.empty()) picture = std::make_unique<ClipPicture>(clip, muxer);
  const int frames = picture ? picture->FrameCount() : 0;
  const auto samplesAt = [&](int frame) {
    return av_rescale_q(picture->FrameTime(frame), picture->TimeBase(), {1, clip.sound.rate});
  };
  if (clip.hasSound) {
    voice = std::make_unique<ClipVoice>(clip.sound, DefaultSoundCodec(extension),
                                        picture ? samplesAt(frames) : 0, muxer);
  }
  if (!clip.date.empty()) muxer.SetDate(clip.date);
  muxer.Start();
  for (int i = 0; i < frames; ++i) {
    if (voice) voice->WriteUntil(samplesAt(i + 1));
    picture->Write(i);
  }
  if (voice) voice->Finish();
  if (picture) picture->Finish();
  muxer.Finish();
}

}  // namespace vrx::test_support
