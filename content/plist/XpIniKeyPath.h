// Splits a key path "a/b/c" at its first slash, for dicts and arrays.
#pragma once

#include "content/plist/XpIniElement.h"

struct XpIniKeyPath {
  XpString first;  // up to the first '/'
  XpString rest;   // after it
  bool isPath;     // whether there was one

  explicit XpIniKeyPath(const XpString& key) : first(key), isPath(key.Find(u'/') >= 0) {
    if (!isPath) return;
    const std::int32_t slash = key.Find(u'/');
    first = key.Left(slash);
    rest = key.Right(key.Length() - slash - 1);
  }
};
