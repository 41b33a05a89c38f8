#include "content/otio/Schema.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vrx::otio {
namespace {

struct SchemaRow {
  std::string_view name;
  Schema schema;
  int newest;
};
/// Names of the first releases of the format are still read, as its own library does.
constexpr SchemaRow kSchemas[] = {
    {"Timeline", Schema::Timeline, 1},
    {"SerializableCollection", Schema::Collection, 1},
    {"SerializeableCollection", Schema::Collection, 1},
    {"Stack", Schema::Stack, 1},
    {"Track", Schema::Track, 1},
    {"Sequence", Schema::Track, 1},
    {"Clip", Schema::Clip, 2},
    {"Gap", Schema::Gap, 1},
    {"Filler", Schema::Gap, 1},
    {"Transition", Schema::Transition, 1},
    {"ExternalReference", Schema::ExternalReference, 1},
    {"MissingReference", Schema::MissingReference, 1},
    {"GeneratorReference", Schema::GeneratorReference, 1},
    {"ImageSequenceReference", Schema::ImageSequence, 1},
    {"LinearTimeWarp", Schema::TimeWarp, 1},
    {"FreezeFrame", Schema::FreezeFrame, 1},
};

constexpr std::size_t kLongestQuote = 60;

}  // namespace

Schema SchemaOf(const Json& object) {
  const std::string text = TextOf(object, "OTIO_SCHEMA");
  const std::size_t point = text.rfind('.');
  if (point == std::string::npos) return Schema::Unknown;
  const auto* row = std::ranges::find(kSchemas, std::string_view(text).substr(0, point), &SchemaRow::name);
  if (row == std::end(kSchemas)) return Schema::Unknown;
  int version = 0;
  const char* last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data() + point + 1, last, version);
  const bool isKnown = error == std::errc() && end == last && version >= 1 && version <= row->newest;
  return isKnown ? row->schema : Schema::Unknown;
}

const Json& MemberOf(const Json& object, const char* key) {
  static const Json kNone;
  if (!object.is_object()) return kNone;
  const auto found = object.find(key);
  return found == object.end() ? kNone : *found;
}

std::string TextOf(const Json& object, const char* key) {
  const Json& member = MemberOf(object, key);
  return member.is_string() ? member.get<std::string>() : std::string();
}

bool IsEnabled(const Json& object) {
  const Json& member = MemberOf(object, "enabled");
  return !member.is_boolean() || member.get<bool>();
}

std::string Quoted(std::string_view text) {
  const auto isInside = [](char c) { return (c & '\xC0') == '\x80'; };  // of a character of UTF-8
  std::size_t size = std::min(text.size(), kLongestQuote);
  while (size < text.size() && size != 0 && isInside(text[size])) --size;
  std::string quoted = "\"";
  for (const char c : text.substr(0, size)) quoted += (c >= '\0' && c < ' ') || c == '\x7F' ? '?' : c;
  if (size < text.size()) quoted += "...";
  return quoted + '"';
}

std::string NumberText(double number) {
  constexpr int kDigits = 6;
  std::array<char, 32> text{};
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, kDigits);
  return error == std::errc() ? std::string(text.data(), end) : std::string("?");
}

}  // namespace vrx::otio
