// Reads XML from memory piece by piece, without a tree, so that a document of any length takes no memory of
// its own. The safeguards are those of XmlDocument. Used for long recordings, such as the tracks of
// receivers.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "foundation/xml/XmlDocument.h"

namespace vrx::xml {

/// Names have their prefix; all text lives as long as the call that hands it over.
struct XmlAttribute {
  std::u16string_view name;
  std::u16string_view value;
};

/// What a document consists of, in its order. An empty element starts and ends.
class XmlEvents {
 public:
  virtual ~XmlEvents() = default;
  virtual void Start(std::u16string_view name, std::span<const XmlAttribute> attributes) = 0;
  /// The text of one element may come in several pieces.
  virtual void Text(std::u16string_view text) = 0;
  virtual void End() = 0;
};

/// `name` without its prefix.
std::u16string_view LocalName(std::u16string_view name);

/// Reads `bytes` in the encoding that they declare. False with the cause when they are not well-formed or
/// beyond the limits; everything before that place has been handed over by then.
bool ReadXmlEvents(std::span<const char> bytes, const XmlLimits& limits, XmlEvents& events,
                   XmlProblem& problem);

}  // namespace vrx::xml
