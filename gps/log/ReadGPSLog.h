// Finds the GPS log in a movie's sidecar and reads it.
#pragma once

#include <string>

#include "gps/log/KVUGPSLogReader.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

/// ParseGPSLog on the log of the movie, or in the sidecar, at `gpsLogFilePath`. XpErrInvalidArgument for an
/// empty path, XpErrFileNotFound where there is no file or no log in the sidecar, otherwise the code of
/// SfMoffFile::Open.
XpResult ReadGPSLog(const XpString& gpsLogFilePath, KVUGPSLogReader& reader, const XpDateTime& firstLocal,
                    const XpDateTime& lastLocal, KVUGPSInfoList& list, std::int32_t timeZoneMinutes,
                    std::int64_t& timeShiftSeconds, bool& logHasHeaderMark);

/// The bytes of the log, and the movie that its sidecar belongs to (may be null). The codes of ReadGPSLog.
XpResult LoadGPSLogText(const XpString& gpsLogFilePath, std::string& log, XpString* movie = nullptr);
