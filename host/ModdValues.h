// Values of property lists as the commands print and read them.
#pragma once

#include <string>

#include "content/plist/XpIniElement.h"
#include "host/Console.h"

namespace vrx::host {

/// Bytes become hexadecimal text, dates text as in ISO 8601 without a zone.
Json ValueJson(const XpIniElement& element);
/// For people, in one line, with what could change a terminal masked.
std::string InOneLine(const Json& value);

/// What a text on the command line means as a value of this type, which is not a container or bytes. False
/// when it is none.
bool ParseValue(const std::string& text, XpIniType type, XpIniValue& value);
/// "text", "integer" and so on; the types that ParseValue takes.
bool FindValueType(const std::string& name, XpIniType& type);
const char* ValueTypeName(XpIniType type);

}  // namespace vrx::host
