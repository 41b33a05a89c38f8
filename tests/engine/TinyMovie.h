// Small movies whose frames carry their own number, and the numbers of a movie's frames read back. Used by
// the engine's render tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vrx::engine::test {

struct TinyMovie {
  std::string path;
  int frames = 50;
  int width = 64;
  int height = 48;
  int rate = 25;               // frames per second
  const char* format = "mp4";  // the muxer's name
  const char* codec = "libx264";
  const char* codecOptions = "";  // "key=value:key=value"
  int bFrames = 2;
  int group = 12;               // frames from key to key
  std::vector<int> ticks = {};  // of each frame in units of 1 / rate; empty for even spacing
  int pixelFormat = 0;          // AV_PIX_FMT_YUV420P
};

void Write(const TinyMovie& movie);

struct MovieFrame {
  int number;                      // as carried by the picture; -1 when it carries none, as a black one
  double time;                     // seconds
  std::vector<std::uint8_t> luma;  // tightly packed
  int interlaced;
};

struct MovieContent {
  std::vector<MovieFrame> frames;
  int width = 0, height = 0;
  int colorSpace = 0, colorRange = 0;
  bool hasSound = false;
  std::int64_t soundSamples = 0;
  std::string timeZone;  // the metadata entry
  std::string format;

  std::vector<int> Numbers() const;
};

MovieContent ReadMovie(const std::string& path);

}  // namespace vrx::engine::test
