// The functions that the module exports, declared for those who link them without loading it. Used by tests.
#pragma once

#include "content/probe/Mp4SiftApi.h"

#define MP4SIFT_EXPORT extern "C" __attribute__((visibility("default")))

/// See content/probe/Mp4SiftApi.h. Null pointers give 0 and false.
MP4SIFT_EXPORT std::int32_t GetFormatType(const char16_t* path);
MP4SIFT_EXPORT bool GetOriginalDateTime(const char16_t* path, std::uint16_t* year, std::uint16_t* month,
                                        std::uint16_t* day, std::uint16_t* hour, std::uint16_t* minute,
                                        std::uint16_t* second, std::int32_t* offsetMinutes);
