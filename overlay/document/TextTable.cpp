#include "overlay/document/TextTable.h"

namespace vrx::overlay {

XpString TextAt(const TextTable& texts, std::int32_t entry) {
  const auto found = texts.find(entry);
  return found == texts.end() ? XpString() : found->second;
}

}  // namespace vrx::overlay
