// Reads a rendered movie back for the tests: frames as RGB with their times, sound as floats on the same
// clock, and the facts in its headers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "samples/clipmaker/AvHandles.h"
#include "samples/clipmaker/RgbImage.h"

namespace vrx::test_support {

/// Facts from the headers; names as libav has them.
struct MovieInfo {
  std::string container;
  double startSeconds = 0;  // the file's first time, which all other times here are counted from
  std::string videoCodec;
  AVRational frameRate{0, 1};
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  std::string audioCodec;  // empty without sound
};

struct MovieFrame {
  RgbImage image;
  double seconds = 0;
  bool interlaced = false;
  bool isKey = false;  // decodes without others
};

struct MovieSound {
  int rate = 0;
  std::int64_t start = 0;      // time of the first sample, in samples
  std::vector<float> samples;  // the mean of all channels

  /// Times of the clicks in samples.
  std::vector<std::int64_t> Clicks() const;
};

/// All operations throw std::runtime_error with a readable cause.
class MovieReader {
 public:
  explicit MovieReader(const std::string& path);

  const MovieInfo& Info() const { return m_info; }

  /// The next picture in order of display; false behind the last. Damaged frames throw.
  bool NextFrame(MovieFrame& frame);
  /// The next picture as the decoder gives it, until the next call; null behind the last.
  const AVFrame* NextDecodedFrame();
  /// The numbers in the patterns of all remaining frames, -1 for a frame that cannot be read or lies turned.
  std::vector<int> RemainingNumbers();

  /// All of the sound, with encoder delay and edit lists honoured. Independent of NextFrame.
  MovieSound ReadSound() const;

 private:
  void Convert(RgbImage& image);

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
