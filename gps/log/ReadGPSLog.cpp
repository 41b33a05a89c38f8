#include "gps/log/ReadGPSLog.h"

#include <cstdlib>
#include <memory>

#include "content/moff/SfMoffFile.h"
#include "foundation/file/XpFileOperations.h"

XpResult LoadGPSLogText(const XpString& gpsLogFilePath, std::string& log, XpString* movie) {
  log.clear();
  bool isDirectory = false;
  if (gpsLogFilePath.IsEmpty()) return XpErrInvalidArgument;
  if (!XpPathExists(gpsLogFilePath, &isDirectory) || isDirectory) return XpErrFileNotFound;
  SfMoffFile sidecar;
  if (const XpResult result = sidecar.Open(gpsLogFilePath); result != XpOk) return result;
  XpSharedPtr<SfMoffGroup> group;
  if (const XpResult result = sidecar.FindGpsGroup(group); result != XpOk) return result;
  if (!group) return XpErrFileNotFound;
  std::int64_t size = 0;
  const std::unique_ptr<void, decltype(&std::free)> data(sidecar.ReadGroupData(group->GetId(), size),
                                                         &std::free);
  if (data == nullptr) return XpErrFileNotFound;
  if (movie != nullptr) *movie = sidecar.GetSourcePath();
  log.assign(static_cast<const char*>(data.get()), static_cast<std::size_t>(size));
  return XpOk;
}

XpResult ReadGPSLog(const XpString& gpsLogFilePath, KVUGPSLogReader& reader, const XpDateTime& firstLocal,
                    const XpDateTime& lastLocal, KVUGPSInfoList& list, std::int32_t timeZoneMinutes,
                    std::int64_t& timeShiftSeconds, bool& logHasHeaderMark) {
  list.clear();
  reader.timeZoneMinutes = timeZoneMinutes;
  std::string log;
  if (const XpResult result = LoadGPSLogText(gpsLogFilePath, log); result != XpOk) return result;
  ParseGPSLog(log, reader, firstLocal, lastLocal, list, timeZoneMinutes, timeShiftSeconds, logHasHeaderMark);
  return XpOk;
}
