// The container side of the clip writer: takes packets from the encoders and interleaves them into one file.
#pragma once

#include <string>

#include "samples/clipmaker/AvHandles.h"

namespace vrx::test_support {

struct MuxerDelete {
  void operator()(AVFormatContext* muxer) const;
};

class ClipMuxer {
 public:
  /// Opens `path` for writing; the extension picks the container.
  explicit ClipMuxer(const std::string& path);

  /// Whether codecs must keep their headers out of the packets.
  bool WantsGlobalHeader() const { return (m_muxer->oformat->flags & AVFMT_GLOBALHEADER) != 0; }

  /// When it was recorded, in ISO 8601. Before Start.
  void SetDate(const std::string& date);
  /// A stream for an opened encoder. All come before Start.
  AVStream* AddStream(const AVCodecContext& encoder);
  void Start();

  /// Hands `frame` (null: the end) to the encoder and writes what comes out. `encoder` belongs to `stream`.
  /// `duration`, in the encoder's time base, is for packets that the encoder gives none.
  void Encode(AVCodecContext& encoder, AVStream& stream, const AVFrame* frame, std::int64_t duration);

  void Finish();

 private:
  std::unique_ptr<AVFormatContext, MuxerDelete> m_muxer;
  PacketPtr m_packet;
};

}  // namespace vrx::test_support
