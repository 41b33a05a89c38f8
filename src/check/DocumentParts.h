// The dicts of project and painter documents with the keys that each may hold, and the lines of their keys.
// Checks find with it where a key belongs and give problems their lines.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "content/plist/XpIniDict.h"
#include "content/plist/XpIniKey.h"
#include "src/check/ProjectReport.h"

namespace vrx::check {

struct DictPart {
  const char16_t* path;  // from the document's outermost dict, divided by '/'
  const char16_t* name;  // as problems call it
  std::span<const plist::Key> keys;
};

std::span<const DictPart> ProjectParts();
std::span<const DictPart> PainterParts();

/// The dict of a track's clip, counted from 1 among the track's dicts; null when there is none.
const XpIniElement* FindClip(const XpIniDict& document, const XpString& track, std::uint32_t clip);

/// The line of the key that the problem names, or else of the dict where it belongs; 0 for a problem without
/// a place in the document.
std::uint64_t LineOf(const XpIniDict& document, std::span<const DictPart> parts, const Problem& problem);

/// Gives the problems of `file` that have no line theirs.
void FillLines(const XpIniDict& document, std::span<const DictPart> parts, const XpString& file,
               std::vector<Problem>& problems);

}  // namespace vrx::check
