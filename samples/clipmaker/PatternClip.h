// Writes the movies that tests and demonstrations take as their sources: numbered test pictures or a
// synthetic landscape, with clicks on the whole seconds as sound, in the usual codecs and containers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "samples/route/RoutePlan.h"

namespace vrx::test_support {

enum class ClipStyle { kPattern, kScene, kCourt, kRoad };
enum class ClipSoundStyle { kClick, kClickOverTone, kTone };

/// From sample `at` on (counted on the sound's clock), the timestamps jump by `by` samples: forward leaves a
/// hole, back (by less than a packet, 1024) repeats what was there.
/// Only in containers that keep a time for each packet (.mkv, .ts).
struct SoundJump {
  std::int64_t at;
  std::int64_t by;
};

struct ClipSound {
  ClipSoundStyle style = ClipSoundStyle::kClick;
  int rate = 48000;           // Hz
  int channels = 2;           // all carry the same
  std::string codec;          // libav's encoder name; empty: aac in .mp4, .ts and .m4a, pcm_s16le elsewhere
  std::int64_t start = 0;     // time of the first sample, in samples
  std::int64_t samples = -1;  // on the sound's clock; -1: as long as the picture
  std::vector<SoundJump> jumps;  // in rising order, each after the end of the previous one; PCM only
};

/// The same description gives the same bytes on every run.
struct PatternClip {
  int width = 160;  // as stored; both even
  int height = 96;
  int rateNum = 25;  // frames a second
  int rateDen = 1;
  int frames = 50;  // 0: no picture, sound only
  /// When not empty: the time of each frame in milliseconds, rising, for `frames`. The last lasts 40 ms.
  std::vector<std::int64_t> timesMs;
  int hidden = 0;  // of the frames, the first, which an edit list takes away. .mp4 and .mov only

  std::string codec = "h264";  // h264, hevc, mpeg2video, mpeg4 or ffv1
  int gop = 12;  // frames from one key frame to the next at most; a movie of 1 has key frames only
  int bFrames = 2;
  int crf = 18;            // quality of h264, as libx264 counts it
  std::string x264;        // options of its own, such as "open-gop=1:ref=3"
  int quantizer = 3;       // quality of the other lossy codecs, 1 to 31, lower is better
  bool fullRange = false;  // luma 0 to 255 instead of 16 to 235
  bool bt601 = false;      // matrix of ITU-R BT.601 instead of BT.709
  bool saysHlg = false;    // names HLG as its transfer, with the same samples
  /// Clockwise turn that the file asks of its player. The picture is stored turned the other way, so that it
  /// comes out upright; 90 and 270 show height x width. .mp4 and .mov only.
  int rotation = 0;
  int sarNum = 1;  // sample aspect ratio
  int sarDen = 1;

  ClipStyle style = ClipStyle::kPattern;
  std::uint32_t firstNumber = 0;        // the number in the first frame's pattern; later ones count up
  std::uint32_t seed = 0;               // which landscape
  RouteKind route = RouteKind::kDrive;  // of the road style
  int routeSecond = 0;                  // of the route, at which the clip begins
  std::string date;                     // of the recording, ISO 8601; empty: none. .mp4 and .mov only

  bool hasSound = false;
  ClipSound sound;
};

/// Writes the clip to `path`; its extension picks the container. Throws std::runtime_error with a readable
/// cause and leaves no promise about the file then.
void WritePatternClip(const std::string& path, const PatternClip& clip);

}  // namespace vrx::test_support
