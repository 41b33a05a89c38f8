// Finds the byte because of which a document in another encoding cannot be read. The XML library converts
// blocks of many lines at once, and names the line where it was before. Used where documents are parsed.
#pragma once

#include <span>

#include "foundation/xml/XmlDocument.h"

namespace vrx::xml {

/// The first byte that is no UTF-8 (RFC 3629), with its line and column; no message when there is none, or
/// when the document names another encoding than UTF-8.
XmlProblem FindForeignByte(std::span<const char> bytes);

}  // namespace vrx::xml
