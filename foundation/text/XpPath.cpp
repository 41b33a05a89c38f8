#include "foundation/text/XpPath.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

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

/// Takes the next character, or a surrogate without its other half, and moves `at` after it.
UChar32 NextFolded(std::u16string_view text, std::size_t& at) {
  UChar32 character = 0;
  U16_NEXT(text.data(), at, text.size(), character);
  return u_foldCase(character, U_FOLD_CASE_DEFAULT);
}

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
  const std::u16string_view left = a.AsView();
  const std::u16string_view right = b.AsView();
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < left.size() && j < right.size()) {
    const UChar32 l = NextFolded(left, i);
    const UChar32 r = NextFolded(right, j);
    if (l != r) return l < r ? -1 : 1;
  }
  return static_cast<int>(i < left.size()) - static_cast<int>(j < right.size());
}

XpString XpFoldCase(const XpString& text) {
  const std::u16string_view view = text.AsView();
  std::u16string folded;
  folded.reserve(view.size());
  for (std::size_t i = 0; i < view.size();) {
    const UChar32 character = NextFolded(view, i);
    if (U_IS_BMP(character)) {
      folded += static_cast<char16_t>(character);
    } else {
      folded += U16_LEAD(character);
      folded += U16_TRAIL(character);
    }
  }
  return XpString(folded);
}
