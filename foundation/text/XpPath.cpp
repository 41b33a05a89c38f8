#include "foundation/text/XpPath.h"

#include <algorithm>
#include <string>

#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace {

bool IsSeparator(char16_t c, bool native) { return c == u'/' || (!native && c == u'\\'); }

bool EndsInSeparator(const XpString& path) {
  return !path.IsEmpty() && IsSeparator(path[path.Length() - 1], XpPathIsNative(path));
}

const char16_t* SeparatorFor(const XpString& path) { return XpPathIsNative(path) ? u"/" : u"\\"; }

/// With a trailing separator, and with backslashes only unless it is native.
XpString Comparable(const XpString& path) {
  const XpString whole = XpPathAddTrailingSlash(path);
  if (XpPathIsNative(whole)) return whole;
  std::u16string text(whole.AsView());
  std::replace(text.begin(), text.end(), u'/', u'\\');
  return XpString(text);
}

bool IsDriveLetter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

}  // namespace

bool XpPathIsNative(const XpString& path) { return path[0] == u'/'; }

bool XpPathIsAbsolute(const XpString& path) {
  return XpPathIsNative(path) || path[0] == u'\\' || (IsDriveLetter(path[0]) && path[1] == u':');
}

bool XpPathNamesServer(const XpString& path) { return path[0] == u'\\' && IsSeparator(path[1], false); }

XpString XpPathJoin(const XpString& dir, const XpString& name) {
  XpString joined = dir;
  if (!EndsInSeparator(dir)) joined.Append(SeparatorFor(dir));
  const bool nameLeads = IsSeparator(name[0], XpPathIsNative(dir));
  return joined.Append(nameLeads ? name.Right(name.Length() - 1) : name);
}

void XpPathSplit(const XpString& path, XpString* dir, XpString* stem, XpString* ext) {
  const bool native = XpPathIsNative(path);
  const XpString whole = path.Length() > 1 && EndsInSeparator(path) ? path.Left(path.Length() - 1) : path;
  std::int32_t nameStart = whole.Length();
  while (nameStart > 0 && !IsSeparator(whole[nameStart - 1], native)) --nameStart;
  const XpString name = whole.Right(whole.Length() - nameStart);
  std::int32_t dot = name.Length();
  for (std::int32_t i = 0; i < name.Length(); ++i) {
    if (name[i] == u'.') dot = i;
  }
  if (dir != nullptr) *dir = whole.Left(nameStart);
  if (stem != nullptr) *stem = name.Left(dot);
  if (ext != nullptr) *ext = name.Right(name.Length() - dot);
}

XpString XpPathDirectory(const XpString& path) {
  XpString dir;
  XpPathSplit(path, &dir, nullptr, nullptr);
  return dir;
}

XpString XpPathStem(const XpString& path) {
  XpString stem;
  XpPathSplit(path, nullptr, &stem, nullptr);
  return stem;
}

XpString XpPathExtension(const XpString& path) {
  XpString ext;
  XpPathSplit(path, nullptr, nullptr, &ext);
  return ext;
}

XpString XpPathParent(const XpString& path) {
  const XpString dir = XpPathDirectory(path);
  const XpString bare = XpPathStripTrailingSlash(dir);
  return bare.IsEmpty() ? dir : bare;
}

std::int32_t XpPathCompare(const XpString& a, const XpString& b) {
  return XpCompareNoCase(Comparable(a), Comparable(b)) == 0 ? XpPathEqual : XpPathDifferent;
}

XpString XpPathStripTrailingSlash(const XpString& path) {
  const bool native = XpPathIsNative(path);
  std::int32_t length = path.Length();
  while (length > 0 && IsSeparator(path[length - 1], native)) --length;
  return path.Left(length);
}

XpString XpPathAddTrailingSlash(const XpString& path) {
  return path.IsEmpty() || EndsInSeparator(path) ? path : path + SeparatorFor(path);
}

int XpCompareNoCase(const XpString& a, const XpString& b) {
  UErrorCode status = U_ZERO_ERROR;
  return u_strCaseCompare(a.c_str(), a.Length(), b.c_str(), b.Length(), U_FOLD_CASE_DEFAULT, &status);
}
