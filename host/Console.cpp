#include "host/Console.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include "foundation/text/XpPath.h"

namespace vrx::host {
namespace {

struct Character {
  char32_t code = 0;  // of a byte that is no UTF-8: the byte
  std::size_t bytes = 1;
};

/// `text` is not empty.
Character FirstCharacter(std::string_view text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byteAt(0);
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  const Character loneByte{lead, 1};
  if (length == 1 || length > text.size()) return loneByte;
  char32_t code = lead & (0xFF >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return loneByte;
    code = code << 6 | (byteAt(i) & 0x3F);
  }
  return {code, length};
}

bool IsControl(char32_t code) {
  struct Range {
    char32_t first;
    char32_t last;
  };
  static constexpr Range kControls[] = {
      {0x00, 0x1F},      // C0
      {0x7F, 0x9F},      // delete, C1
      {0x2028, 0x202E},  // line separators; embeddings and overrides of the writing direction
      {0x2066, 0x2069},  // isolates
  };
  return std::ranges::any_of(kControls,
                             [=](Range range) { return code >= range.first && code <= range.last; });
}

}  // namespace

std::string Utf8(const XpString& text) { return textcodec::ToUtf8(text.AsView()); }

std::string Masked(std::string_view text, bool keepsLines) {
  std::string masked;
  masked.reserve(text.size());
  while (!text.empty()) {
    const Character next = FirstCharacter(text);
    const bool isKept = keepsLines && (next.code == U'\n' || next.code == U'\t');
    if (IsControl(next.code) && !isKept) {
      masked += '?';
    } else {
      masked += text.substr(0, next.bytes);
    }
    text.remove_prefix(next.bytes);
  }
  return masked;
}

std::string Plain(const XpString& text) { return Masked(Utf8(text)); }

std::string FileName(const XpString& path) {
  XpString stem, extension;
  XpPathSplit(path, nullptr, &stem, &extension);
  return Utf8(stem + extension);
}

std::string CodeText(std::uint32_t code) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%04x", code);
  return text;
}

void Say(std::string_view line) { std::fprintf(stderr, "vrx: %s\n", Masked(line).c_str()); }

void PrintJson(const Json& document, int indent) {
  std::puts(document.dump(indent, ' ', false, Json::error_handler_t::replace).c_str());
}

int Fail(const std::string& cause) {
  Say("error: " + cause);
  return kFailed;
}

int FailForResources(const std::exception& error) {
  Say(std::string("out of resources: ") + error.what());
  return kFailed;
}

bool FlushOutput() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

std::string ClockText(double seconds) {
  constexpr long kPerMinute = 60;
  constexpr long kPerHour = 3600;
  const long whole = std::lround(std::fmax(seconds, 0.0));
  char text[32];
  if (whole >= kPerHour) {
    std::snprintf(text, sizeof(text), "%ld:%02ld:%02ld", whole / kPerHour, whole / kPerMinute % kPerMinute,
                  whole % kPerMinute);
  } else {
    std::snprintf(text, sizeof(text), "%ld:%02ld", whole / kPerMinute, whole % kPerMinute);
  }
  return text;
}

}  // namespace vrx::host
