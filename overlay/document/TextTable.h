// The painters' texts in the user's language, as painter documents list them.
#pragma once

#include <cstdint>
#include <map>

#include "vrx/XpString.h"

namespace vrx::overlay {

/// By their index in the document.
using TextTable = std::map<std::int32_t, XpString>;

/// Empty for an entry that is absent.
XpString TextAt(const TextTable& texts, std::int32_t entry);

}  // namespace vrx::overlay
