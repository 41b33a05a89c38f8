// One stream made of several: where the parameter sets of its parts go, what its header is, and the form of
// its packets. Used by the picture track.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/OutputPlan.h"
#include "engine/ParameterSets.h"
#include "engine/SmartPlan.h"

namespace vrx::engine {

/// The sets of all parts lie in the header of an MP4 or QuickTime file as long as no two contradict each
/// other, and then the packets are those of the parts, byte for byte. Else, and in a transport stream, they
/// come with each key frame ("avc3" and "hev1" of ISO/IEC 14496-15).
class JoinedStream {
 public:
  /// Gives `video` what its encoder needs so that encoded spans go with those that `plan`, or another piece
  /// of its movie, copies: a number for its parameter sets that no source has, and the limits of the sources'
  /// level, which it returns (0 without H.264 to copy).
  static int FitEncoder(const SmartPlan& plan, VideoPlan& video);
  /// For a stream with the spans of `plan`, which must outlive it. `level` is that of the sources in H.264.
  void Prepare(Container container, const SmartPlan& plan, const VideoPlan& video, int level);
  /// `encoder` is null when nothing is encoded. kUnusableSettings, with a logged line, for a stream that its
  /// file cannot hold.
  Result Arrange(const AVCodecContext* encoder);

  const AVCodecParameters& GetParameters() const { return *m_parameters; }
  const ParameterSets& GetEncodedSets() const { return m_encodedSets; }

  /// Brings a packet whose units have `length`, and whose parameter sets are `sets`, into the stream's
  /// form.
  Result Pack(AVPacket& packet, NalLength length, const ParameterSets& sets);

 private:
  bool HasUnits() const;
  void NameColour();
  ParameterSets MostDemanding() const;
  void SetTag();
  Result Replace(AVPacket& packet) const;

  const SmartPlan* m_plan = nullptr;
  Container m_container = Container::Mp4;
  VideoPlan m_video{};
  AVCodecID m_codec = AV_CODEC_ID_NONE;
  int m_level = 0;  // of the sources, in H.264
  bool m_setsInside = false;
  NalLength m_nalLength = kStartCodes;  // of the stream
  ParameterSets m_encodedSets;
  std::shared_ptr<AVCodecParameters> m_parameters;
  std::vector<std::uint8_t> m_bytes;  // of a packet that is put together
  std::vector<Bytes> m_units;
};

}  // namespace vrx::engine
