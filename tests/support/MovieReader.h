// Reads a movie back for the tests: frames as RGB with their times, sound as floats on the same clock, and
// the facts in its headers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "samples/clipmaker/AvHandles.h"
#include "samples/clipmaker/RgbImage.h"

namespace vrx::test_support {

/// Facts from the headers. Fields about a stream that is not there keep their defaults.
struct MovieInfo {
  std::string container;    // libav's name of the format
  double startSeconds = 0;  // the file's first time, which all other times here are counted from
  double durationSeconds = 0;

  bool hasVideo = false;
  std::string videoCodec;
  int width = 0;  // as stored
  int height = 0;
  AVRational frameRate{0, 1};
  AVRational sampleAspect{0, 1};  // 0/1: unknown
  int rotation = 0;               // clockwise turn that the file asks of its player
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  std::int64_t videoBitRate = 0;

  bool hasAudio = false;
  std::string audioCodec;
  int sampleRate = 0;
  int channels = 0;
};

struct MovieFrame {
  RgbImage image;  // as stored: no rotation, no sample aspect
  double seconds = 0;
  bool keyFrame = false;
  bool interlaced = false;
};

struct MovieSound {
  int rate = 0;
  std::int64_t start = 0;  // time of the first sample, in samples
  std::vector<std::vector<float>> channels;
  std::int64_t largestJump =
      0;  // samples by which a packet's time differs most from the end of what came before

  /// One channel: the mean of all.
  std::vector<float> Mono() const;
  /// Times of the clicks in samples, found in Mono().
  std::vector<std::int64_t> Clicks() const;
};

/// All operations throw std::runtime_error with a readable cause.
class MovieReader {
 public:
  explicit MovieReader(const std::string& path);

  const MovieInfo& Info() const { return m_info; }

  /// The next picture in order of display; false behind the last. Damaged frames throw.
  bool NextFrame(MovieFrame& frame);
  /// The numbers in the patterns of all remaining frames, -1 for a frame that cannot be read.
  std::vector<int> RemainingNumbers();

  /// All of the sound, with encoder delay and edit lists honoured. Independent of NextFrame.
  MovieSound ReadSound() const;

 private:
  void FillInfo();
  void Convert(MovieFrame& frame);

  std::string m_path;
  MovieInfo m_info;
  DemuxerPtr m_demuxer;
  int m_video = -1;  // stream numbers
  int m_audio = -1;
  CodecPtr m_decoder;
  ScalerPtr m_scaler;
  PacketPtr m_packet;
  FramePtr m_frame;
};

}  // namespace vrx::test_support
