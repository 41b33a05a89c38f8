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

/// The lines of a document, which must outlive this.
class DocumentLines {
 public:
  DocumentLines(const XpIniDict& document, std::span<const DictPart> parts);

  /// The line of the key that the problem names, or else of the dict where it belongs; 0 for a problem
  /// without a place in the document.
  std::uint64_t LineOf(const Problem& problem) const;
  /// Gives the problems of `file` that have no line theirs.
  void Fill(const XpString& file, std::vector<Problem>& problems) const;
  /// Lets a problem that has a key and a line know the clip that they are of.
  void FindClipOf(Problem& problem) const;

 private:
  /// The dicts of a track, which are its clips.
  struct Track {
    XpString name;
    std::vector<const XpIniElement*> clips;
  };
  const XpIniElement* FindDict(const Problem& problem) const;

  const XpIniDict& m_document;
  std::span<const DictPart> m_parts;
  std::vector<Track> m_tracks;
};

}  // namespace vrx::check
