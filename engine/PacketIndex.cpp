#include "engine/PacketIndex.h"

extern "C" {
#include <libavutil/mathematics.h>
}

#include <algorithm>

namespace vrx::engine {
namespace {

constexpr std::size_t kMostPictures = 8'000'000;  // three days of 30 a second
constexpr std::int64_t kReadOnSeconds = 1;        // pictures come at most this much after their time

/// Whether an MPEG-2 picture comes with the header of its sequence, as decoding without what came before
/// needs (ISO/IEC 13818-2 6.2).
bool HasSequenceHeader(Bytes packet) {
  constexpr std::uint8_t kSequenceHeader = 0xB3;
  constexpr std::uint8_t kPicture = 0x00;
  for (std::size_t i = 0; i + 3 < packet.size(); ++i) {
    if (packet[i] != 0 || packet[i + 1] != 0 || packet[i + 2] != 1) continue;
    if (packet[i + 3] == kSequenceHeader) return true;
    if (packet[i + 3] == kPicture) return false;
  }
  return false;
}

bool IsStartUnit(Bytes unit, AVCodecID codec) {
  const int type = TypeOfNal(unit, codec);
  // Other key frames do not begin the numbering of pictures again, which decoders rely on in the middle of a
  // stream; and at a CRA picture of HEVC they would drop pictures of the span before.
  if (codec == AV_CODEC_ID_HEVC) return type == hevc::kIdrWithLeading || type == hevc::kIdr;
  return type == h264::kIdrSlice;
}

class IndexReader {
 public:
  IndexReader(SourcePackets& source, PacketIndex& index)
      : m_source(source), m_index(index), m_codec(source.GetFile().GetStream().codecpar->codec_id) {}

  std::string Read(std::int64_t first, std::int64_t last) {
    const AVStream& before = m_source.GetFile().GetStream();
    const std::int64_t end = last + av_rescale_q(kReadOnSeconds, AVRational{1, 1}, before.time_base);
    if (const Refusal refusal = m_source.GoTo(first); !IsOk(refusal)) return refusal.cause;
    if (HasUnits() && !m_index.sets.ReadHeader(*m_source.GetFile().GetStream().codecpar, m_index.nalLength))
      return "has a header that is damaged";
    m_index.isFromBeginning = m_source.IsAtBeginning();
    while (const AVPacket* packet = m_source.Next()) {
      if (const char* cause = Add(*packet)) return cause;
      if (packet->dts != AV_NOPTS_VALUE && packet->dts > end) break;
    }
    return HasUnits() && m_index.sets.IsEmpty() ? "has no parameter sets" : "";
  }

 private:
  bool HasUnits() const { return m_codec == AV_CODEC_ID_H264 || m_codec == AV_CODEC_ID_HEVC; }

  const char* Add(const AVPacket& packet) {
    if (av_packet_get_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, nullptr) != nullptr)
      return "changes its header on the way";
    if (packet.pts == AV_NOPTS_VALUE) return "has pictures without a time, or coded as single fields";
    if (m_index.pictures.size() >= kMostPictures) return "has too many pictures";
    bool isStart = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    const Bytes data(packet.data, static_cast<std::size_t>(packet.size));
    if (isStart) {
      if (HasUnits()) {
        if (const char* cause = LookInside(data, isStart)) return cause;
      } else {
        isStart = HasSequenceHeader(data);
      }
    }
    const bool isWhole =
        (packet.flags & (AV_PKT_FLAG_DISCARD | AV_PKT_FLAG_CORRUPT)) == 0 && HasItsUnits(data);
    m_index.pictures.push_back({packet.pts, isStart, isWhole});
    m_index.bytes += packet.size;
    return nullptr;
  }

  /// False for a picture whose lengths of units do not fit, as damage leaves them.
  bool HasItsUnits(Bytes data) {
    if (!HasUnits() || m_index.nalLength == kStartCodes) return true;
    m_units.clear();
    return SplitNalUnits(data, m_index.nalLength, m_units);
  }

  const char* LookInside(Bytes data, bool& isStart) {
    m_units.clear();
    if (!SplitNalUnits(data, m_index.nalLength, m_units)) return "has pictures that are damaged";
    isStart =
        std::any_of(m_units.begin(), m_units.end(), [&](Bytes unit) { return IsStartUnit(unit, m_codec); });
    return m_index.sets.Add(m_units) ? nullptr : "changes its parameter sets on the way";
  }

  SourcePackets& m_source;
  PacketIndex& m_index;
  const AVCodecID m_codec;
  std::vector<Bytes> m_units;
};

}  // namespace

std::string ReadPacketIndex(SourcePackets& source, std::int64_t first, std::int64_t last,
                            PacketIndex& index) {
  index = {};
  return IndexReader(source, index).Read(first, last);
}

}  // namespace vrx::engine
