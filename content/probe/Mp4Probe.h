// Asks the module Mp4Sift which kind of MP4 a file is and when it was recorded. Format checks and the readers
// of position logs use it. The module is loaded at the first question of each kind; without it nothing is
// known of any file.
#pragma once

#include <cstdint>

#include "content/formats/FormatCodes.h"
#include "content/probe/Mp4SiftApi.h"
#include "foundation/time/XpDateTime.h"
#include "vrx/XpString.h"

/// kMp4Portable and its like; kUnknown for what is no MP4, and without the module. Thread-safe.
vrx::formats::FormatCode GetMp4Type(const XpString& path);

/// False, with `date` untouched, when the file states no date, and without the module. `offsetMinutes` is as
/// the module gives it, kMp4NoTimeZone when the file states none. Also true when the module gives a date that
/// is none or lies before the year 100; then `date` is not valid. Thread-safe.
bool GetOriginalDateTimeFromMP4(const XpString& path, XpDateTime& date, std::int32_t& offsetMinutes);
