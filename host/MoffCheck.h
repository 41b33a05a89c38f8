// Looks for everything that is wrong with a .moff container, for `vrx moff`.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vrx/XpString.h"

namespace vrx::host {

struct MoffReport {
  std::vector<std::string> problems;  // each ends with its code; not masked
  std::size_t groups = 0;
  std::size_t entries = 0;
};

/// The container at `moffPath`. Damaged tables end the search, since what follows cannot be found then.
MoffReport CheckMoff(const XpString& moffPath);

/// The four characters of a signature, or its number when it has others.
std::string KindText(std::uint32_t kind);

}  // namespace vrx::host
