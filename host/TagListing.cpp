#include "host/TagListing.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "imaging/tags/TagNames.h"

namespace vrx::host {
namespace {

using imaging::TagGroup;

constexpr std::size_t kShownCharacters = 60;

const char* TypeName(std::uint32_t type) {
  switch (type) {
    case XpTiffByte:
      return "BYTE";
    case XpTiffAscii:
      return "ASCII";
    case XpTiffShort:
      return "SHORT";
    case XpTiffRational:
      return "RATIONAL";
    case XpTiffSByte:
      return "SBYTE";
    case XpTiffUndefined:
      return "UNDEFINED";
    case XpTiffSShort:
      return "SSHORT";
    case XpTiffSLong:
      return "SLONG";
    case XpTiffSRational:
      return "SRATIONAL";
    case XpTiffFloat:
      return "FLOAT";
    case XpTiffDouble:
      return "DOUBLE";
    default:
      return "LONG";
  }
}

/// Of an IFD: what faults and rows call it, and where the names of its tags are looked up.
struct IfdKind {
  std::string name;
  TagGroup group;
};

IfdKind KindBelow(std::uint16_t tag, const IfdKind& above) {
  switch (tag) {
    case imaging::kTagExifIfd:
      return {"exif", TagGroup::Exif};
    case imaging::kTagGpsIfd:
      return {"gps", TagGroup::Gps};
    case imaging::kTagInteropIfd:
      return {"interop", TagGroup::Interop};
    case imaging::kTagMakerNote:
      return {"maker", TagGroup::Maker};
    default:
      return {above.group == TagGroup::Maker ? "maker" : "sub", above.group};
  }
}

template <class T>
Json NumbersOf(const XpTiffTagDataBase& value) {
  const auto* elements = static_cast<const T*>(value.GetData());
  if (value.count == 1) return elements[0];
  return std::vector<T>(elements, elements + value.count);
}

Json FractionsOf(const XpTiffTagDataBase& value, bool isSigned) {
  const auto* elements = static_cast<const XpTiffFraction*>(value.GetData());
  const auto text = [isSigned](XpTiffFraction f) {
    const auto part = [isSigned](std::uint32_t n) {
      return isSigned ? std::to_string(static_cast<std::int32_t>(n)) : std::to_string(n);
    };
    return part(f.numerator) + "/" + part(f.denominator);
  };
  if (value.count == 1) return text(elements[0]);
  Json array = Json::array();
  for (std::uint32_t i = 0; i < value.count; ++i) array.push_back(text(elements[i]));
  return array;
}

/// Zeros at the end are filling.
std::string_view TextOf(const XpTiffTagDataBase& value) {
  std::string_view text(static_cast<const char*>(value.GetData()), value.count);
  while (!text.empty() && text.back() == '\0') text.remove_suffix(1);
  return text;
}

/// As text where all bytes are printable.
Json BytesOf(const XpTiffTagDataBase& value) {
  const std::string_view text = TextOf(value);
  const auto isPrintable = [](char c) { return c >= ' ' && c <= '~'; };
  if (!text.empty() && std::ranges::all_of(text, isPrintable)) return text;
  const auto* bytes = static_cast<const std::uint8_t*>(value.GetData());
  std::string hex;
  char digits[4];
  for (std::uint32_t i = 0; i < value.count; ++i) {
    std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
    hex += digits;
  }
  return hex;
}

Json ValueOf(const XpTiffTagDataBase& value) {
  switch (value.GetType()) {
    case XpTiffByte:
      return NumbersOf<std::uint8_t>(value);
    case XpTiffAscii:
      return TextOf(value);
    case XpTiffShort:
      return NumbersOf<std::uint16_t>(value);
    case XpTiffRational:
    case XpTiffSRational:
      return FractionsOf(value, value.GetType() == XpTiffSRational);
    case XpTiffSByte:
      return NumbersOf<std::int8_t>(value);
    case XpTiffUndefined:
      return BytesOf(value);
    case XpTiffSShort:
      return NumbersOf<std::int16_t>(value);
    case XpTiffSLong:
      return NumbersOf<std::int32_t>(value);
    case XpTiffFloat:
      return NumbersOf<float>(value);
    case XpTiffDouble:
      return NumbersOf<double>(value);
    default:
      return NumbersOf<std::uint32_t>(value);
  }
}

/// The tree is no deeper than its reader allows.
void AddIfd(const XpTiffTagIFD& ifd, const IfdKind& kind, std::vector<TagLine>& lines) {
  for (const auto& value : ifd.values) {
    lines.push_back({kind.name, value->tag, std::string(imaging::TagName(kind.group, value->tag)),
                     TypeName(value->GetType()), value->count, ValueOf(*value)});
  }
  for (const auto& value : ifd.values) {
    if (value->GetType() != XpTiffIfd) continue;
    for (const auto& below : static_cast<const XpTiffTagDataIFD&>(*value).ifds) {
      AddIfd(*below, KindBelow(value->tag, kind), lines);
    }
  }
}

}  // namespace

std::vector<TagLine> ListTags(const XpTiffTagManager& tags) {
  std::vector<TagLine> lines;
  for (std::size_t i = 0; i < tags.GetIfdCount(); ++i) {
    AddIfd(*tags.GetIfd(i), {std::to_string(i), TagGroup::Image}, lines);
  }
  return lines;
}

std::string ShortValue(const TagLine& line) {
  const bool isText = line.value.is_string();
  std::string text = isText ? line.value.get<std::string>()
                            : line.value.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (line.value.is_array()) {
    std::erase_if(text, [](char c) { return c == '[' || c == ']' || c == '"'; });
    std::ranges::replace(text, ',', ' ');
  }
  text = Masked(text);
  if (text.size() <= kShownCharacters) return text;
  // Not within a character of several bytes.
  std::size_t end = kShownCharacters;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end) + "…";
}

}  // namespace vrx::host
