#include "content/otio/MediaPath.h"

#include <algorithm>
#include <cstddef>

namespace vrx::otio {
namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// True when `text` begins with `small`, in any case.
bool Begins(std::string_view text, std::string_view small) {
  if (text.size() < small.size()) return false;
  return std::ranges::equal(text.substr(0, small.size()), small, [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
  });
}

/// -1 for what is no digit of base 16.
int HexDigit(char c) {
  constexpr int kTen = 10;
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + kTen;
  if (c >= 'A' && c <= 'F') return c - 'A' + kTen;
  return -1;
}

/// A "%" that begins no escape stays.
std::string Decoded(std::string_view text) {
  constexpr std::size_t kEscape = 3;
  constexpr int kHex = 16;
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isEscape = text[at] == '%' && text.size() - at >= kEscape && HexDigit(text[at + 1]) >= 0 &&
                          HexDigit(text[at + 2]) >= 0;
    if (isEscape) {
      decoded += static_cast<char>(HexDigit(text[at + 1]) * kHex + HexDigit(text[at + 2]));
      at += kEscape - 1;
    } else {
      decoded += text[at];
    }
  }
  return decoded;
}

bool HasDrive(std::string_view path) {
  return path.size() >= 2 && IsLetter(path[0]) && (path[1] == ':' || path[1] == '|');
}

/// "\\server\share\clip.mov".
std::string OnServer(std::string_view server, std::string_view path) {
  std::string joined = "\\\\" + std::string(server) + std::string(path);
  std::ranges::replace(joined, '/', '\\');
  return joined;
}

/// What comes after "file:".
std::string FilePath(std::string_view rest) {
  std::string_view server;
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    if (!HasDrive(rest)) {
      server = rest.substr(0, rest.find('/'));
      rest.remove_prefix(server.size());
    }
  }
  if (rest.starts_with('/') && HasDrive(rest.substr(1))) {
    std::string path(rest.substr(1));
    path[1] = ':';
    return path;
  }
  const bool isHere = server.empty() || (Begins(server, "localhost") && server.size() == 9);
  return isHere ? std::string(rest) : OnServer(server, rest);
}

/// "https" of "https://..."; a single letter is a drive.
bool HasOtherScheme(std::string_view url) {
  const std::size_t colon = url.find("://");
  return colon != std::string_view::npos && colon > 1 &&
         std::ranges::all_of(url.substr(0, colon), [](char c) {
           return IsLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
         });
}

}  // namespace

std::optional<std::string> MediaPath(std::string_view url) {
  constexpr std::string_view kFile = "file:";
  const bool isEscaped = url.find_first_of(" \\") == std::string_view::npos;
  const auto decode = [isEscaped](std::string_view text) {
    return isEscaped ? Decoded(text) : std::string(text);
  };
  std::string path;
  if (Begins(url, kFile)) {
    path = FilePath(decode(url.substr(kFile.size())));
  } else if (HasOtherScheme(url)) {
    return {};
  } else {
    path = decode(url);
  }
  if (path.empty() || path.find('\0') != std::string::npos) return {};
  return path;
}

}  // namespace vrx::otio
