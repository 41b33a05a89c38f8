#include "host/pieces/CommandQuoting.h"

#include <algorithm>
#include <string_view>

namespace vrx::host {
namespace {

constexpr std::string_view kPlain =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./:,@%+=";

std::string ShellWord(const std::string& word) {
  if (!word.empty() && word.find_first_not_of(kPlain) == word.npos) return word;
  std::string quoted = "'";
  for (const char c : word) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += c;
    }
  }
  return quoted + "'";
}

}  // namespace

std::string ShellLine(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + ShellWord(word);
  return line;
}

std::optional<std::string> MakeTarget(const std::string& path) {
  constexpr std::string_view kImpossible = "%;|\t";
  constexpr std::string_view kEscaped = " #:*?[";
  if (path.find_first_of(kImpossible) != path.npos || path.ends_with('\\')) return {};
  std::string target;
  std::size_t backslashes = 0;  // just before
  for (const char c : path) {
    if (kEscaped.find(c) != kEscaped.npos) {
      // Backslashes count for themselves anywhere but before a character that needs one.
      target.append(backslashes + 1, '\\');
      target += c;
    } else if (c == '$') {
      target += "$$";
    } else if (c == '=') {
      target += kMakeEquals;
    } else {
      target += c;
    }
    backslashes = c == '\\' ? backslashes + 1 : 0;
  }
  return target;
}

std::string MakeRecipe(const std::string& line) {
  std::string recipe;
  for (const char c : line) recipe.append(c == '$' ? 2 : 1, c);
  return recipe;
}

}  // namespace vrx::host
