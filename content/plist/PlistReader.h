// Reads a property-list document into a tree of XpIni elements.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "content/plist/XpIniDict.h"
#include "foundation/xml/XmlDocument.h"

namespace vrx::plist {

/// Fuzzers use smaller limits.
using xml::XmlLimits;
using xml::XmlProblem;

/// A part of a document that counts as something else than what was written.
struct Remark {
  XpString key;  // may be empty
  XpString message;
  std::uint64_t line = 0;      // counted from 1
  std::uint64_t dictLine = 0;  // as XpIniElement::Lines, of a dict whose rest is not read; 0 for none
};

struct Findings {
  XmlProblem problem;           // why the document was refused
  std::vector<Remark> remarks;  // the first ones, in the document's order
};

/// Replaces the content of `dict` by the document at `path`; on failure `dict` is empty. `findings` may be
/// null. Results as XpIniDict::Load.
XpResult ReadFile(const XpString& path, XpIniDict& dict, Findings* findings);

/// The same for bytes in memory, in `encoding` or, when that is null, in the one that they declare.
XpResult ReadBytes(std::span<const char> bytes, const char* encoding, XpIniDict& dict, Findings* findings,
                   const XmlLimits& limits = {});

}  // namespace vrx::plist
