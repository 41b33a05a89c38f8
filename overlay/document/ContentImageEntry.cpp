#include "overlay/document/ContentImageEntry.h"

#include <algorithm>

void ContentImageList::Add(const ContentImageEntry& entry) {
  const auto hasPicture = [](const ContentImageEntry& other) { return static_cast<bool>(other.picture); };
  const auto place =
      entry.picture ? m_entries.end() : std::find_if(m_entries.begin(), m_entries.end(), hasPicture);
  m_entries.insert(place, entry);
}
