#include "engine/RenderOverrides.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>

#include "engine/EngineLog.h"
#include "vrx/VRXLimits.h"

namespace vrx::engine {
namespace {

struct KeptOverrides {
  std::mutex lock;
  RenderOverrides overrides;  // guarded
};

KeptOverrides& TheKeptOverrides() {
  static KeptOverrides kept;
  return kept;
}

Result UnusableOverride(const std::string& what) {
  Log(VRXLogError, "override not usable: " + what);
  return kUnusableSettings;
}

Result ReadCodec(VRXVideoCodec wanted, std::optional<VideoCodec>& codec) {
  switch (wanted) {
    case VRXVideoCodecOfRecord:
      return kOk;
    case VRXVideoCodecH264:
      codec = VideoCodec::H264;
      return kOk;
    case VRXVideoCodecHevc:
      codec = VideoCodec::Hevc;
      return kOk;
    case VRXVideoCodecAv1:
      codec = VideoCodec::Av1;
      return kOk;
  }
  return UnusableOverride("codec is " + std::to_string(static_cast<std::int32_t>(wanted)) + ", not 0 to 3");
}

Result ReadPreset(const char* wanted, const char*& preset) {
  if (wanted == nullptr) return kOk;
  const auto found = std::find(limits::kPresets.begin(), limits::kPresets.end(), std::string_view(wanted));
  if (found == limits::kPresets.end()) return UnusableOverride(std::string("preset is ") + wanted);
  preset = *found;
  return kOk;
}

Result ReadQuality(const VRXRenderOverrides& wanted, std::optional<double>& quality) {
  if (wanted.crf < 0.0) return kOk;
  const double most = wanted.codec == VRXVideoCodecAv1 ? limits::kMaxAv1Quality : limits::kMaxQuality;
  if (!(wanted.crf <= most)) return UnusableOverride("crf is " + std::to_string(wanted.crf));
  quality = wanted.crf;
  return kOk;
}

Result ReadFrames(const VRXRenderOverrides& wanted, RenderOverrides& read) {
  constexpr std::uint64_t kMost = limits::kMaxMovieFrames;
  if (wanted.firstFrame > kMost || wanted.frameCount > kMost) return UnusableOverride("the range of frames");
  read.firstFrame = static_cast<std::int64_t>(wanted.firstFrame);
  read.frameCount = static_cast<std::int64_t>(wanted.frameCount);
  return kOk;
}

Result ReadPiece(const VRXRenderOverrides& wanted, std::optional<PieceLabel>& piece) {
  if (wanted.pieceOf == nullptr) return kOk;
  const std::string movie(wanted.pieceOf, strnlen(wanted.pieceOf, kLongestMovieName + 1));
  if (!IsMovieName(movie))
    return UnusableOverride("the name of the movie in pieces is not 1 to 64 letters and digits");
  const bool isSound = wanted.tracks == VRXSoundAlone;
  if (wanted.pieceCount == 0 || wanted.piece > wanted.pieceCount || isSound != (wanted.piece == 0) ||
      wanted.tracks == VRXAllTracks)
    return UnusableOverride("piece " + std::to_string(wanted.piece) + " of " +
                            std::to_string(wanted.pieceCount) + (isSound ? " with sound" : " without sound"));
  piece = PieceLabel{.movie = movie, .number = wanted.piece, .count = wanted.pieceCount};
  return kOk;
}

/// Enumerators have the same order on both sides.
template <class Enumeration, class Wanted>
Result ReadChoice(Wanted wanted, Enumeration last, const char* name, Enumeration& read) {
  const auto number = static_cast<std::int32_t>(wanted);
  if (number < 0 || number > static_cast<std::int32_t>(last))
    return UnusableOverride(std::string(name) + " is " + std::to_string(number));
  read = static_cast<Enumeration>(number);
  return kOk;
}

}  // namespace

Result SetRenderOverrides(const VRXRenderOverrides* overrides) {
  RenderOverrides read;
  if (overrides != nullptr) {
    if (overrides->structSize < sizeof(VRXRenderOverrides)) return kInvalidArgument;
    if (overrides->overlays != VRXOverlayInMovie && overrides->overlays != VRXOverlayAlone)
      return UnusableOverride("overlays is neither in the movie nor alone");
    VRX_TRY(ReadCodec(overrides->codec, read.codec));
    VRX_TRY(ReadPreset(overrides->preset, read.preset));
    VRX_TRY(ReadQuality(*overrides, read.quality));
    VRX_TRY(ReadFrames(*overrides, read));
    VRX_TRY(ReadChoice(overrides->smart, SmartRendering::Require, "smart", read.smart));
    VRX_TRY(ReadChoice(overrides->tracks, Tracks::Sound, "tracks", read.tracks));
    VRX_TRY(ReadPiece(*overrides, read.piece));
    read.hardware = overrides->hardware;
    read.overlaysAlone = overrides->overlays == VRXOverlayAlone;
  }
  KeptOverrides& kept = TheKeptOverrides();
  const std::scoped_lock lock(kept.lock);
  kept.overrides = read;
  return kOk;
}

RenderOverrides CurrentRenderOverrides() {
  KeptOverrides& kept = TheKeptOverrides();
  const std::scoped_lock lock(kept.lock);
  return kept.overrides;
}

}  // namespace vrx::engine
