// The two functions of the module Mp4Sift, as they cross between it and those who load it. Another module
// with the same functions can take its place.
#pragma once

#include <cstdint>

/// The offset of a movie that states none.
inline constexpr std::int32_t kMp4NoTimeZone = 1000;

extern "C" {

/// GetFormatType: the class of the MP4 file, 1 to 6; any other number when it is no MP4 that is known.
using Mp4GetFormatTypeFunction = std::int32_t (*)(const char16_t* path);

/// GetOriginalDateTime: when the movie was recorded, in local time, and how many minutes that is ahead of
/// UTC, or kMp4NoTimeZone; then the date is as the file states it. False, with nothing written, when it
/// states none.
using Mp4GetOriginalDateTimeFunction = bool (*)(const char16_t* path, std::uint16_t* year,
                                                std::uint16_t* month, std::uint16_t* day, std::uint16_t* hour,
                                                std::uint16_t* minute, std::uint16_t* second,
                                                std::int32_t* offsetMinutes);
}

/// Their names in the module. Both may be called from several threads at once.
inline constexpr char kMp4GetFormatTypeName[] = "GetFormatType";
inline constexpr char kMp4GetOriginalDateTimeName[] = "GetOriginalDateTime";
