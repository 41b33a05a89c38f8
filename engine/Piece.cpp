#include "engine/Piece.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "engine/AudioDecoder.h"
#include "engine/CopyConditions.h"
#include "engine/MovieWriter.h"
#include "engine/SourcePackets.h"

namespace vrx::engine {
namespace {

constexpr std::size_t kLongestTimeZone = 8192;  // hexadecimal digits

std::string Frames(std::int64_t count) { return std::to_string(count) + (count == 1 ? " frame" : " frames"); }

Refusal ReadMetadata(const std::string& path, const StopSignal& stop, Piece& piece) {
  std::unique_ptr<MediaInput> input;
  VRX_TRY(MediaInput::Open(path, stop, input));
  const AVDictionary* metadata = input->GetDemuxer().metadata;
  const AVDictionaryEntry* text = av_dict_get(metadata, kPieceKey, nullptr, 0);
  const std::optional<PieceLabel> label = text == nullptr ? std::nullopt : ReadPieceLabel(text->value);
  if (!label) return {kUnusableSettings, "is no piece of a movie"};
  piece.label = *label;
  const AVDictionaryEntry* zone = av_dict_get(metadata, kTimeZoneKey, nullptr, 0);
  if (zone == nullptr) return {};
  piece.timeZone = zone->value;
  const bool isHex = piece.timeZone.find_first_not_of("0123456789abcdef") == std::string::npos;
  if (isHex && piece.timeZone.size() <= kLongestTimeZone) return {};
  return {kUnusableSettings, "has a time-zone item that is none"};
}

/// Takes the pictures of a piece in the order of its file.
class PictureReader {
 public:
  explicit PictureReader(Piece& piece) : m_piece(piece) {}

  Refusal Read(SourcePackets& packets) {
    const AVStream& stream = packets.GetFile().GetStream();
    VRX_TRY(ReadHeader(stream));
    while (AVPacket* packet = packets.Next()) {
      VRX_TRY(Add(*packet));
    }
    const auto count = static_cast<std::int64_t>(m_piece.run.pictures.size());
    if (count == m_piece.label.frameCount) return {};
    return Damaged("it has " + Frames(count) + " of its " + std::to_string(m_piece.label.frameCount));
  }

 private:
  static Refusal Damaged(const std::string& cause) { return {kSourceUnreadable, "is damaged: " + cause}; }

  Refusal ReadHeader(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    m_codec = parameters.codec_id;
    constexpr VideoCodec kCodecs[] = {VideoCodec::H264, VideoCodec::Mpeg2, VideoCodec::Hevc, VideoCodec::Av1};
    const auto* codec = std::find_if(std::begin(kCodecs), std::end(kCodecs),
                                     [&](auto one) { return CodecIdOf(one) == m_codec; });
    if (codec == std::end(kCodecs)) return Damaged("its pictures have a codec that movies do not have");
    m_piece.codec = *codec;
    m_hasUnits = *codec == VideoCodec::H264 || *codec == VideoCodec::Hevc;
    m_piece.source.path = m_piece.path;
    m_piece.source.timeBase = stream.time_base;
    m_piece.source.parameters = CopyParameters(parameters);
    if (m_piece.source.parameters == nullptr) return RefuseForMemory();
    if (!m_hasUnits || m_piece.source.sets.ReadHeader(parameters, m_piece.source.nalLength)) return {};
    return Damaged("its header makes no sense");
  }

  Refusal Add(const AVPacket& packet) {
    const auto number = static_cast<std::int64_t>(m_piece.run.pictures.size());
    const bool isKey = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    const bool isWhole = (packet.flags & (AV_PKT_FLAG_CORRUPT | AV_PKT_FLAG_DISCARD)) == 0;
    std::int64_t frame = 0;
    if (!isWhole || (number == 0 && !isKey) || !FrameAt(packet.pts, frame) || !IsNew(frame))
      return Damaged("picture " + std::to_string(number + 1) + " is not as it was written");
    if (isKey && m_hasUnits && !AddSets(packet)) return Damaged("a key frame is not as it was written");
    m_piece.run.delay = std::max(m_piece.run.delay, number - frame);
    m_piece.run.pictures.push_back({packet.pts, frame});
    return {};
  }

  /// False where the picture begins with no frame of the piece.
  bool FrameAt(std::int64_t ticks, std::int64_t& frame) const {
    if (ticks == AV_NOPTS_VALUE || ticks < 0) return false;
    const AVRational base = m_piece.source.timeBase;
    const FrameDuration duration = m_piece.label.frameDuration;
    const Int128 time = Int128{ticks} * base.num * duration.scale;
    const Int128 length = Int128{base.den} * duration.value;
    if (time % length != 0 || time / length >= m_piece.label.frameCount) return false;
    frame = static_cast<std::int64_t>(time / length);
    return true;
  }

  /// Memory follows the pictures that are there, not the label.
  bool IsNew(std::int64_t frame) {
    const auto at = static_cast<std::size_t>(frame);
    if (at > m_piece.run.pictures.size() + kDeepestReordering) return false;
    if (m_seen.size() <= at) m_seen.resize(at + 1);
    if (m_seen[at]) return false;
    return m_seen[at] = true;
  }

  bool AddSets(const AVPacket& packet) {
    m_units.clear();
    const Bytes data(packet.data, static_cast<std::size_t>(packet.size));
    if (!SplitNalUnits(data, m_piece.source.nalLength, m_units)) return false;
    if (!m_piece.source.sets.Add(m_units)) m_piece.source.setsChange = true;
    return true;
  }

  static constexpr std::size_t kDeepestReordering = 64;  // frames

  Piece& m_piece;
  AVCodecID m_codec = AV_CODEC_ID_NONE;
  bool m_hasUnits = false;
  std::vector<bool> m_seen;  // by frame
  std::vector<Bytes> m_units;
};

Refusal ReadPictures(const StopSignal& stop, Piece& piece) {
  std::unique_ptr<SourcePackets> packets;
  VRX_TRY(SourcePackets::Open(piece.path, stop, packets));
  return PictureReader(piece).Read(*packets);
}

Result ReadSound(const StopSignal& stop, Piece& piece) {
  std::unique_ptr<AudioDecoder> decoder;
  VRX_TRY(AudioDecoder::Open(piece.path, stop, decoder));
  const Refusal none{kUnusableSettings, "has no sound that a movie can have"};
  if (!decoder->HasSound()) return Report(piece.path, none);
  piece.sound.sampleRate = decoder->GetRate();
  piece.sound.channels = decoder->GetParameters().ch_layout.nb_channels;
  switch (decoder->GetParameters().codec_id) {
    case AV_CODEC_ID_AAC:
      piece.sound.codec = AudioCodec::Aac;
      return kOk;
    case AV_CODEC_ID_AC3:
      piece.sound.codec = AudioCodec::Ac3;
      return kOk;
    case AV_CODEC_ID_PCM_S16LE:
      piece.sound.codec = AudioCodec::Pcm16;
      return kOk;
    case AV_CODEC_ID_PCM_S24LE:
      piece.sound.codec = AudioCodec::Pcm24;
      return kOk;
    default:
      return Report(piece.path, none);
  }
}

}  // namespace

Result ReadPiece(const std::string& path, const StopSignal& stop, Piece& piece) {
  piece = {};
  piece.path = path;
  VRX_TRY(Report(path, ReadMetadata(path, stop, piece)));
  return piece.label.number == 0 ? ReadSound(stop, piece) : Report(path, ReadPictures(stop, piece));
}

}  // namespace vrx::engine
