// Whether a file begins as text, and as which XML document. The kinds by content use it.
#pragma once

#include <string>
#include <string_view>

namespace vrx::formats {

enum class TextEncoding { None, Utf8, Utf16 };

struct TextStart {
  TextEncoding encoding = TextEncoding::None;  // None for what is no text
  std::string mark;                            // the byte order mark, in words; empty without one
  bool hasDeclaration = false;                 // begins with "<?xml"
  std::string rootElement;                     // when its name is one of ASCII characters; empty otherwise
};

/// Of the first bytes of a file, which `isCut` when it is longer: then the last character may be incomplete.
TextStart ReadTextStart(std::string_view start, bool isCut);

}  // namespace vrx::formats
