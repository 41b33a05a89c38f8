#include "engine/PieceOrder.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

Result Refuse(const std::string& cause) {
  Log(VRXLogError, "the pieces cannot be joined: " + cause);
  return kUnusableSettings;
}

std::string NameOf(const PieceLabel& label) {
  return "piece " + std::to_string(label.number) + " of " + std::to_string(label.count);
}

Result CheckLabels(const std::vector<Piece>& pieces) {
  const PieceLabel& first = pieces.front().label;
  for (const Piece& piece : pieces) {
    const PieceLabel& label = piece.label;
    if (label.movie != first.movie || label.count != first.count)
      return Refuse(piece.path + " is " + NameOf(label) + " of the movie " + label.movie + ", and " +
                    pieces.front().path + " is " + NameOf(first) + " of the movie " + first.movie);
    const FrameDuration& duration = label.frameDuration;
    if (duration.value != first.frameDuration.value || duration.scale != first.frameDuration.scale ||
        label.hasSound != first.hasSound)
      return Refuse(piece.path + " was made with other settings than " + pieces.front().path);
  }
  return kOk;
}

/// Of sorted pieces.
Result CheckNumbers(const std::vector<Piece>& pieces) {
  const PieceLabel& label = pieces.front().label;
  std::uint32_t wanted = label.hasSound ? 0 : 1;
  for (const Piece& piece : pieces) {
    if (piece.label.number < wanted)
      return Refuse(NameOf(piece.label) + " is there twice: " + piece.path + " is one of them");
    if (piece.label.number > wanted) break;
    ++wanted;
  }
  if (wanted > label.count) return kOk;
  return Refuse("piece " + std::to_string(wanted) + " of " + std::to_string(label.count) +
                (wanted == 0 ? ", the sound, is missing" : " is missing"));
}

/// Of pieces that are all there. The sound spans them all.
Result CheckFrames(const std::vector<Piece>& pieces) {
  const bool hasSound = pieces.front().label.hasSound;
  const std::int64_t first = pieces[hasSound ? 1 : 0].label.firstFrame;
  std::int64_t next = first;
  for (const Piece& piece : pieces) {
    if (piece.label.number == 0) continue;
    if (piece.label.firstFrame != next)
      return Refuse(piece.path + " begins with frame " + std::to_string(piece.label.firstFrame) +
                    ", and frame " + std::to_string(next) + " is next");
    next += piece.label.frameCount;
  }
  const PieceLabel& sound = pieces.front().label;
  if (!hasSound || (sound.firstFrame == first && sound.frameCount == next - first)) return kOk;
  return Refuse(pieces.front().path + " has the sound of " + std::to_string(sound.frameCount) +
                " frames from " + std::to_string(sound.firstFrame) + " on, and the pieces have " +
                std::to_string(next - first) + " from " + std::to_string(first) + " on");
}

/// Sources that do not say what is usual may be copied beside encoded pictures that do.
template <class Tag>
bool Contradict(Tag one, Tag other, Tag unknown) {
  return one != other && one != unknown && other != unknown;
}

const char* DifferenceOf(const AVCodecParameters& one, const AVCodecParameters& other) {
  if (one.codec_id != other.codec_id) return "another codec";
  if (one.width != other.width || one.height != other.height) return "another size";
  if (Contradict(one.color_space, other.color_space, AVCOL_SPC_UNSPECIFIED) ||
      Contradict(one.color_primaries, other.color_primaries, AVCOL_PRI_UNSPECIFIED) ||
      Contradict(one.color_trc, other.color_trc, AVCOL_TRC_UNSPECIFIED) ||
      Contradict(one.color_range, other.color_range, AVCOL_RANGE_UNSPECIFIED))
    return "other colours";
  if (one.format != other.format) return "another pixel format";
  if (Contradict(one.field_order, other.field_order, AV_FIELD_UNKNOWN)) return "other fields";
  // Its header is one for the whole movie.
  const bool isOneHeader = one.codec_id == AV_CODEC_ID_AV1;
  if (isOneHeader &&
      (one.extradata_size != other.extradata_size ||
       std::memcmp(one.extradata, other.extradata, static_cast<std::size_t>(one.extradata_size)) != 0))
    return "another header";
  return nullptr;
}

Result CheckPictures(const std::vector<Piece>& pieces) {
  const Piece& first = pieces[pieces.front().label.hasSound ? 1 : 0];
  for (const Piece& piece : pieces) {
    if (piece.label.number == 0) continue;
    const char* difference = DifferenceOf(*piece.source.parameters, *first.source.parameters);
    if (difference != nullptr) return Refuse(piece.path + " has " + difference + " than " + first.path);
  }
  return kOk;
}

}  // namespace

Result ArrangePieces(std::vector<Piece>& pieces) {
  VRX_TRY(CheckLabels(pieces));
  std::ranges::stable_sort(pieces, {}, [](const Piece& piece) { return piece.label.number; });
  VRX_TRY(CheckNumbers(pieces));
  VRX_TRY(CheckFrames(pieces));
  return CheckPictures(pieces);
}

}  // namespace vrx::engine
