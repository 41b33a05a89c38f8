// Reads a property-list document into a tree of XpIni elements.
#pragma once

#include <span>

#include "content/plist/XpIniDict.h"
#include "foundation/xml/XmlDocument.h"

namespace vrx::plist {

/// Fuzzers use smaller limits.
using xml::XmlLimits;
using xml::XmlProblem;

/// Replaces the content of `dict` by the document at `path`; on failure `dict` is empty and `problem` (may be
/// null) says why. Results as XpIniDict::Load.
XpResult ReadFile(const XpString& path, XpIniDict& dict, XmlProblem* problem);

/// The same for bytes in memory, in `encoding` or, when that is null, in the one that they declare.
XpResult ReadBytes(std::span<const char> bytes, const char* encoding, XpIniDict& dict, XmlProblem* problem,
                   const XmlLimits& limits = {});

}  // namespace vrx::plist
