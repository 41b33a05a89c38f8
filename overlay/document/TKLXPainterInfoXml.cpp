#include "overlay/document/TKLXPainterInfoXml.h"

#include "content/plist/PlistReader.h"
#include "foundation/file/XpFileOperations.h"
#include "overlay/document/PainterKeys.h"

namespace {

using namespace vrx::overlay;

constexpr std::int32_t kAbsent = -1;

XpResult ReadInt(const XpIniElement& dict, const Key& key, std::int32_t& value) {
  return Read(dict, key, value, kAbsent, &XpIniElement::GetInt32);
}
XpResult ReadReal(const XpIniElement& dict, const Key& key, double& value) {
  return Read(dict, key, value, 0.0, &XpIniElement::GetReal);
}
XpResult ReadBool(const XpIniElement& dict, const Key& key, bool& value) {
  return Read(dict, key, value, false, &XpIniElement::GetBool);
}
XpResult ReadString(const XpIniElement& dict, const Key& key, XpString& value) {
  return Read(dict, key, value, XpString(), &XpIniElement::GetString);
}
XpResult ReadDate(const XpIniElement& dict, const Key& key, XpDateTime& value) {
  return Read(dict, key, value, XpDateTime::GetCurrentTime(), &XpIniElement::GetDate);
}

void ReadCaption(const XpIniElement& dict, CaptionInfo& info) {
  ReadString(dict, kCaptionString, info.captionString);
  ReadBool(dict, kKeepShape, info.keepShape);
  ReadBool(dict, kValid, info.valid);
}

void ReadStrings(const XpIniElement& dict, std::map<std::int32_t, XpString>& table) {
  table.clear();
  const XpIniElement* array = Find(&dict, kStringManager);
  if (array == nullptr) return;
  for (std::uint32_t i = 0; i < array->GetCount(); ++i) {
    XpString text;
    array->GetAt(i)->GetString(text);
    table[static_cast<std::int32_t>(i)] = text;
  }
}

XpResult ReadGeneral(const XpIniElement& dict, PainterInfo& info) {
  double speed = 0.0;
  ReadReal(dict, kExtendDataSpeed, speed);
  info.extendSpeed = static_cast<float>(speed);
  Read(dict, kExtendDataStartPos, info.extendStartPos, std::int64_t{0}, &XpIniElement::GetInt64);
  ReadInt(dict, kGpsUnitFromUser, info.gpsUnitFromUser);
  ReadBool(dict, kSaveMovieMode, info.saveMovieMode);
  ReadString(dict, kSlowInfoData, info.slowInfoData);
  ReadReal(dict, kStartTimeMarginByAudio, info.startTimeMarginByAudio);
  ReadStrings(dict, info.stringTable);
  ReadInt(dict, kSubVideoSize, info.subVideoSize);
  ReadInt(dict, kVideoHeight, info.videoHeight);
  ReadInt(dict, kVideoLayoutType, info.videoLayoutType);
  return ReadInt(dict, kVideoWidth, info.videoWidth);
}

XpResult ReadLogEntry(const XpIniElement& dict, LogDataEntry& entry) {
  entry.line = dict.GetLines().element;
  ReadInt(dict, kVideoID, entry.videoId);
  ReadReal(dict, kLogStartTime, entry.startTime);
  ReadReal(dict, kLogEndTime, entry.endTime);
  ReadString(dict, kGPSLogFilePath, entry.gpsLogFilePath);
  ReadDate(dict, kOriginalDateTime, entry.originalDateTime);
  return ReadReal(dict, kDuration, entry.duration);
}

XpResult ReadTemplate(const XpIniElement& dict, TemplateInfo& info) {
  ReadBool(dict, kValid, info.valid);
  ReadInt(dict, kScenarioType, info.scenarioType);
  ReadInt(dict, kTemplateWidth, info.width);
  ReadInt(dict, kTemplateHeight, info.height);
  ReadBool(dict, kLinkGPSLog, info.linkGpsLog);
  ReadBool(dict, kDrawTrimmedOutArea, info.drawTrimmedOutArea);
  ReadReal(dict, kDrawStartTime, info.drawStartTime);
  XpResult result = ReadReal(dict, kDrawEndTime, info.drawEndTime);
  info.logData.clear();
  const XpIniElement* logs = Find(&dict, kLogDataArray);
  for (std::uint32_t i = 0; logs != nullptr && i < logs->GetCount(); ++i) {
    const XpIniElement* element = logs->GetAt(i);
    if (element->GetType() != XpIniType::Dict) continue;
    result = ReadLogEntry(*element, info.logData.emplace_back());
  }
  return result;
}

XpResult ReadTennis(const XpIniElement& dict, TennisMetaInfo& info) {
  ReadBool(dict, kValid, info.valid);
  ReadReal(dict, kDuration, info.duration);
  ReadDate(dict, kOriginalDateTime, info.originalDateTime);
  ReadString(dict, kTennisMetaData, info.metaData);
  ReadInt(dict, kTennisMetaLayoutType, info.layoutType);
  return ReadReal(dict, kTrimedShift, info.trimedShift);
}

}  // namespace

XpResult TKLXPainterInfoXml::Load(const XpPath& path, vrx::plist::Findings* findings) {
  if (path.GetText().IsEmpty() || !XpPathIsFile(path.GetText())) return XpErrFileNotFound;
  XpResult result = vrx::plist::ReadFile(path.GetText(), m_document, findings);
  if (result != XpOk) return result;
  const XpIniElement* info = Find(&m_document, kPainterInfo);
  if (info == nullptr) return XpErrFileNotFound;
  if (const XpIniElement* dict = Find(info, kCaptionInfo)) ReadCaption(*dict, m_info.captionInfo);
  if (const XpIniElement* dict = Find(info, kGeneralInfo)) result = ReadGeneral(*dict, m_info);
  if (const XpIniElement* dict = Find(info, kTemplateInfo)) result = ReadTemplate(*dict, m_info.templateInfo);
  if (const XpIniElement* dict = Find(info, kTennisMetaInfo))
    result = ReadTennis(*dict, m_info.tennisMetaInfo);
  return result;
}
