// Compares the keys of a dict with those that its reader knows. Used by the checks of project and painter
// documents.
#pragma once

#include <functional>
#include <span>

#include "src/check/DocumentParts.h"

namespace vrx::check {

/// A problem of one key of a dict, without its place.
struct KeyProblem {
  Severity severity = Severity::Note;
  XpString key;
  XpString message;
  std::uint64_t line = 0;
  XpString meant;  // as Problem::meant
};
using KeyReport = std::function<void(const KeyProblem& problem)>;

/// Reports values of a wrong type, which are not read, and unknown keys: one that is nearly right, or belongs
/// into another of the document's `parts`, is a mistake; any other is only worth knowing. `dict` must be a
/// dict.
void CheckKeys(const XpIniElement& dict, std::span<const plist::Key> known, std::span<const DictPart> parts,
               const KeyReport& report);

/// "dict", "real" and so on, as the elements of a document are called; a boolean is "true or false".
XpString TypeName(XpIniType type);
/// "an array", "a string".
XpString TypeWithArticle(XpIniType type);

}  // namespace vrx::check
