#include "foundation/xml/Utf8Check.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "vrx/XpTextCodec.h"

namespace vrx::xml {
namespace {

/// By its first line; without one, and without a mark of another encoding, a document is in UTF-8.
bool IsUtf8(std::string_view text) {
  if (text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE")) return false;
  const std::string_view declaration = text.substr(0, std::min(text.find('>'), text.size()));
  const auto has = [&](const char* word) { return declaration.find(word) != declaration.npos; };
  return !has("encoding") || has("utf-8") || has("UTF-8");
}

}  // namespace

XmlProblem FindForeignByte(std::span<const char> bytes) {
  std::string_view rest(bytes.data(), bytes.size());
  if (!IsUtf8(rest)) return {};
  XmlProblem place{.line = 1, .column = 1};
  char32_t scalar = 0;
  while (const std::size_t length = textcodec::DecodeOne(rest, scalar)) {
    place.column = scalar == U'\n' ? 1 : place.column + 1;
    if (scalar == U'\n') ++place.line;
    rest.remove_prefix(length);
  }
  if (rest.empty()) return {};
  std::array<char, 32> message{};
  std::snprintf(message.data(), message.size(), "the byte 0x%02X is not UTF-8",
                static_cast<unsigned>(static_cast<unsigned char>(rest.front())));
  place.message = message.data();
  return place;
}

}  // namespace vrx::xml
