#include "engine/PieceLabel.h"

#include <algorithm>
#include <charconv>

#include "vrx/VRXLimits.h"

namespace vrx::engine {
namespace {

constexpr std::string_view kSound = "sound";
constexpr std::string_view kSilent = "silent";

/// Takes the number up to `end` off the front of `text`, and `end` with it.
template <class Number>
bool Take(std::string_view& text, char end, Number& number) {
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const auto length = static_cast<std::size_t>(stop - text.data());
  if (error != std::errc() || length == text.size() || *stop != end) return false;
  text.remove_prefix(length + 1);
  return true;
}

bool MakesSense(const PieceLabel& label) {
  constexpr std::int64_t kMost = limits::kMaxMovieFrames;
  const FrameDuration& duration = label.frameDuration;
  return IsMovieName(label.movie) && label.count > 0 && label.number <= label.count &&
         label.firstFrame >= 0 && label.firstFrame <= kMost && label.frameCount > 0 &&
         label.frameCount <= kMost - label.firstFrame && duration.value > 0 &&
         duration.value <= kMaxTimeScale && duration.scale > 0 && duration.scale <= kMaxTimeScale &&
         (label.hasSound || label.number != 0);
}

}  // namespace

bool IsMovieName(std::string_view name) {
  return !name.empty() && name.size() <= kLongestMovieName &&
         std::all_of(name.begin(), name.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
         });
}

std::string TextOf(const PieceLabel& label) {
  const FrameDuration& duration = label.frameDuration;
  return label.movie + " " + std::to_string(label.number) + "/" + std::to_string(label.count) + " " +
         std::to_string(label.firstFrame) + "+" + std::to_string(label.frameCount) + " " +
         std::to_string(duration.value) + "/" + std::to_string(duration.scale) + " " +
         std::string(label.hasSound ? kSound : kSilent);
}

std::optional<PieceLabel> ReadPieceLabel(std::string_view text) {
  PieceLabel label;
  std::string_view rest = text;
  label.movie = rest.substr(0, rest.find(' '));
  if (label.movie.size() == rest.size()) return std::nullopt;
  rest.remove_prefix(label.movie.size() + 1);
  const bool numbers = Take(rest, '/', label.number) && Take(rest, ' ', label.count) &&
                       Take(rest, '+', label.firstFrame) && Take(rest, ' ', label.frameCount) &&
                       Take(rest, '/', label.frameDuration.value) &&
                       Take(rest, ' ', label.frameDuration.scale);
  label.hasSound = rest == kSound;
  // The text of the label is compared too, so that there is one way only to write each.
  if (!numbers || !MakesSense(label) || TextOf(label) != text) return std::nullopt;
  return label;
}

}  // namespace vrx::engine
