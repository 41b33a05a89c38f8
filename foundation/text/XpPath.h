// Paths as text: joining, splitting and comparing without touching the disk. A path that begins with '/' is
// native and keeps '/' as its only separator; every other path (C:\a\b, \\server\share\x, or relative) has
// the separators '\' and '/' and is joined with '\'.
#pragma once

#include <cstdint>

#include "vrx/XpString.h"

/// A path, as its own type in interfaces.
class XpPath {
 public:
  explicit XpPath(const XpString& text = XpString()) : m_text(text) {}
  XpPath(const XpPath&) = default;
  XpPath& operator=(const XpPath&) = default;
  virtual ~XpPath() = default;

  const XpString& GetText() const { return m_text; }

 private:
  XpString m_text;
};

/// Results of XpPathCompare.
enum : std::int32_t { XpPathEqual = 2, XpPathDifferent = 3 };

bool XpPathIsNative(const XpString& path);
/// True for a native path and for one with a drive or a server; false for a relative one.
bool XpPathIsAbsolute(const XpString& path);
/// True for \\server\share. No file is found under such a path: shares are reached through their mount
/// points.
bool XpPathNamesServer(const XpString& path);

/// The directory, a separator unless it already ends in one, then the name without a leading separator.
XpString XpPathJoin(const XpString& dir, const XpString& name);

/// Splits at the last separator; one trailing separator is removed first. `dir` keeps its separator, `ext`
/// its dot. Outputs may be null.
void XpPathSplit(const XpString& path, XpString* dir, XpString* stem, XpString* ext);
XpString XpPathDirectory(const XpString& path);
XpString XpPathStem(const XpString& path);
XpString XpPathExtension(const XpString& path);

/// The directory without its trailing separator; the root "/" keeps it.
XpString XpPathParent(const XpString& path);

/// XpPathEqual or XpPathDifferent. Case and one trailing separator are ignored; in paths that are not native,
/// both separators are equal.
std::int32_t XpPathCompare(const XpString& a, const XpString& b);

XpString XpPathStripTrailingSlash(const XpString& path);
/// The empty path stays empty.
XpString XpPathAddTrailingSlash(const XpString& path);

/// Ordering of text without regard to case, below, equal to or above 0. Each character counts as one, by
/// Unicode's simple case folding: "Maße" differs from "Masse".
int XpCompareNoCase(const XpString& a, const XpString& b);
/// The text that all texts have in common which XpCompareNoCase finds equal, as a key for look-ups.
XpString XpFoldCase(const XpString& text);
