// The keys of a painter document with the type of each, in one table that the reader and the checker share.
#pragma once

#include <array>

#include "content/plist/XpIniKey.h"

namespace vrx::overlay {

using plist::Find;
using plist::Key;

inline constexpr Key kPainterInfo{u"PainterInfo", XpIniType::Dict};

inline constexpr Key kCaptionInfo{u"CaptionInfo", XpIniType::Dict};
inline constexpr Key kGeneralInfo{u"GeneralInfo", XpIniType::Dict};
inline constexpr Key kTemplateInfo{u"TemplateInfo", XpIniType::Dict};
inline constexpr Key kTennisMetaInfo{u"TennisMetaInfo", XpIniType::Dict};

inline constexpr Key kCaptionString{u"CaptionString", XpIniType::String};
inline constexpr Key kKeepShape{u"KeepShape", XpIniType::Bool};
inline constexpr Key kValid{u"Valid", XpIniType::Bool};

inline constexpr Key kExtendDataSpeed{u"ExtendData_speed", XpIniType::Real};
inline constexpr Key kExtendDataStartPos{u"ExtendData_startPos", XpIniType::Int};
inline constexpr Key kGpsUnitFromUser{u"GpsUnitFromUser", XpIniType::Int};
inline constexpr Key kSaveMovieMode{u"SaveMovieMode", XpIniType::Bool};
inline constexpr Key kSlowInfoData{u"SlowInfoData", XpIniType::String};
inline constexpr Key kStartTimeMarginByAudio{u"StartTimeMarginByAudio", XpIniType::Real};
inline constexpr Key kStringManager{u"StringManager", XpIniType::Array};
inline constexpr Key kSubVideoSize{u"SubVideoSize", XpIniType::Int};
inline constexpr Key kVideoHeight{u"VideoHeight", XpIniType::Int};
inline constexpr Key kVideoLayoutType{u"VideoLayoutType", XpIniType::Int};
inline constexpr Key kVideoWidth{u"VideoWidth", XpIniType::Int};

inline constexpr Key kScenarioType{u"ScenarioType", XpIniType::Int};
inline constexpr Key kTemplateWidth{u"Width", XpIniType::Int};
inline constexpr Key kTemplateHeight{u"Height", XpIniType::Int};
inline constexpr Key kLinkGPSLog{u"LinkGPSLog", XpIniType::Bool};
inline constexpr Key kDrawTrimmedOutArea{u"DrawTrimmedOutArea", XpIniType::Bool};
inline constexpr Key kDrawStartTime{u"DrawStartTime", XpIniType::Real};
inline constexpr Key kDrawEndTime{u"DrawEndTime", XpIniType::Real};
inline constexpr Key kLogDataArray{u"LogDataArray", XpIniType::Array};

inline constexpr Key kVideoID{u"VideoID", XpIniType::Int};
inline constexpr Key kLogStartTime{u"StartTime", XpIniType::Real};
inline constexpr Key kLogEndTime{u"EndTime", XpIniType::Real};
inline constexpr Key kGPSLogFilePath{u"GPSLogFilePath", XpIniType::String};
inline constexpr Key kOriginalDateTime{u"OriginalDateTime", XpIniType::Date};
inline constexpr Key kDuration{u"Duration", XpIniType::Real};

inline constexpr Key kTennisMetaData{u"TennisMetaData", XpIniType::String};
inline constexpr Key kTennisMetaLayoutType{u"TennisMetaLayoutType", XpIniType::Int};
inline constexpr Key kTrimedShift{u"TrimedShift", XpIniType::Real};

inline constexpr std::array kPainterInfoKeys{kCaptionInfo, kGeneralInfo, kTemplateInfo, kTennisMetaInfo};
inline constexpr std::array kCaptionKeys{kCaptionString, kKeepShape, kValid};
inline constexpr std::array kGeneralKeys{kExtendDataSpeed, kExtendDataStartPos, kGpsUnitFromUser,
                                         kSaveMovieMode,   kSlowInfoData,       kStartTimeMarginByAudio,
                                         kStringManager,   kSubVideoSize,       kVideoHeight,
                                         kVideoLayoutType, kVideoWidth};
inline constexpr std::array kTemplateKeys{kValid,          kScenarioType, kTemplateWidth,
                                          kTemplateHeight, kLinkGPSLog,   kDrawTrimmedOutArea,
                                          kDrawStartTime,  kDrawEndTime,  kLogDataArray};
inline constexpr std::array kLogDataKeys{kVideoID,        kLogStartTime,     kLogEndTime,
                                         kGPSLogFilePath, kOriginalDateTime, kDuration};
inline constexpr std::array kTennisKeys{
    kValid, kDuration, kOriginalDateTime, kTennisMetaData, kTennisMetaLayoutType, kTrimedShift};

}  // namespace vrx::overlay
