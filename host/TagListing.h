// The tags of a picture as rows of a table, for people and as JSON.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/Console.h"
#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::host {

struct TagLine {
  std::string ifd;  // "0", "1" and so on, "exif", "gps", "interop", "maker" or "sub"
  std::uint16_t tag = 0;
  std::string name;  // empty for a tag without a public name
  std::string type;  // "SHORT" and its like
  std::uint32_t count = 0;
  Json value;  // a number, a text, or an array of numbers; rationals as "n/d", bytes without text as
               // hexadecimal
};

/// In the order of the file: each IFD with those below it.
std::vector<TagLine> ListTags(const XpTiffTagManager& tags);

/// The value in one line of no more than some 60 characters.
std::string ShortValue(const TagLine& line);

}  // namespace vrx::host
