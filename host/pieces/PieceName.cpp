#include "host/pieces/PieceName.h"

#include <algorithm>
#include <string_view>

#include "host/ReadNumber.h"

namespace vrx::host {
namespace {

constexpr std::size_t kMostLetters = 64;

bool IsLetterOrDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

std::string PieceNameText(const PieceName& name) {
  return std::to_string(name.piece) + "/" + std::to_string(name.count) + ":" + name.plan;
}

std::optional<PieceName> ParsePieceName(const std::string& text) {
  const std::string_view view = text;
  const std::size_t slash = view.find('/');
  const std::size_t colon = view.find(':');
  if (slash == view.npos || colon == view.npos || colon < slash) return {};
  PieceName name;
  name.plan = view.substr(colon + 1);
  const bool isRead = ReadNumber(view.substr(0, slash), name.piece) &&
                      ReadNumber(view.substr(slash + 1, colon - slash - 1), name.count);
  const bool isPossible = name.count >= 1 && name.count <= PieceName::kMostPieces && name.piece <= name.count;
  const bool isPlan = !name.plan.empty() && name.plan.size() <= kMostLetters &&
                      std::ranges::all_of(name.plan, &IsLetterOrDigit);
  return isRead && isPossible && isPlan ? std::optional(name) : std::nullopt;
}

std::string CheckPieceName(const std::string& text) {
  return ParsePieceName(text) ? "" : text + " is no piece of a plan such as 3/8:PLAN, as vrx plan prints it";
}

}  // namespace vrx::host
