// Asks the module Mp4Sift which kind of MP4 a file is and when it was recorded. Format checks and the readers
// of position logs use it. The module is loaded at the first question of each kind; without it nothing is
// known of any file.
#pragma once

#include <cstdint>

#include "content/probe/Mp4SiftApi.h"
#include "foundation/time/XpDateTime.h"
#include "vrx/XpString.h"

/// Format codes that refine the one of the extension .mp4. mp4sift/MovieClass.cpp says which brands make
/// which class.
enum : std::uint32_t {
  kMp4FormatUnknown = 0x01000000,
  kMp4FormatClass1 = 0x20031101,
  kMp4FormatClass2 = 0x20031102,
  kMp4FormatClass3 = 0x20031104,  // the codes of the third and fourth class are crossed
  kMp4FormatClass4 = 0x20031103,
  kMp4FormatClass5 = 0x20031105,
  kMp4FormatClass6 = 0x20031106,
};

/// kMp4FormatUnknown for what is no MP4, and without the module. Thread-safe.
std::uint32_t GetMp4Type(const XpString& path);

/// False, with `date` untouched, when the file states no date, and without the module. `offsetMinutes` is as
/// the module gives it, kMp4NoTimeZone when the file states none. Also true when the module gives a date that
/// is none or lies before the year 100; then `date` is not valid. Thread-safe.
bool GetOriginalDateTimeFromMP4(const XpString& path, XpDateTime& date, std::int32_t& offsetMinutes);
