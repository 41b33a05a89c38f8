#include "overlay/document/PainterInfo.h"

namespace {

constexpr std::int32_t kAdoptedTexts = 25;

void AdoptTemplate(const TemplateInfo& from, TemplateInfo& to) {
  to.valid = from.valid;
  to.scenarioType = from.scenarioType;
  to.width = from.width;
  to.height = from.height;
  to.linkGpsLog = from.linkGpsLog;
  to.drawTrimmedOutArea = from.drawTrimmedOutArea;
  to.drawStartTime = from.drawStartTime;
  to.drawEndTime = from.drawEndTime;
  to.logData = from.logData;
  const bool isOff =
      to.scenarioType == TemplateInfo::kNoScenario || to.scenarioType == TemplateInfo::kScenarioOff;
  if (to.logData.empty() || isOff) to.valid = false;
}

void AdoptTennis(const TennisMetaInfo& from, TennisMetaInfo& to) {
  to.valid = from.valid && !from.metaData.IsEmpty();
  to.metaData = from.metaData;
  to.layoutType = from.layoutType;
  to.originalDateTime = from.originalDateTime;
  to.duration = from.duration;
  to.trimedShift = from.trimedShift;
}

}  // namespace

void AdoptPainterInfo(const PainterInfo& document, PainterInfo& record) {
  record.videoLayoutType = document.videoLayoutType;
  record.subVideoSize = document.subVideoSize;
  record.slowInfoData = document.slowInfoData;
  record.extendStartPos = document.extendStartPos;
  record.extendSpeed = document.extendSpeed;
  record.videoWidth = document.videoWidth;
  record.videoHeight = document.videoHeight;
  record.startTimeMarginByAudio = document.startTimeMarginByAudio;
  record.saveMovieMode = document.saveMovieMode;
  record.gpsUnitFromUser = document.gpsUnitFromUser;
  for (std::int32_t i = 0; i < kAdoptedTexts; ++i) {
    const auto found = document.stringTable.find(i);
    record.stringTable[i] = found == document.stringTable.end() ? XpString() : found->second;
  }
  record.captionInfo.captionString = document.captionInfo.captionString;
  record.captionInfo.valid = document.captionInfo.valid && !document.captionInfo.captionString.IsEmpty();
  record.captionInfo.layoutKind = 0;
  record.captionInfo.keepShape = document.captionInfo.keepShape;
  AdoptTemplate(document.templateInfo, record.templateInfo);
  AdoptTennis(document.tennisMetaInfo, record.tennisMetaInfo);
}
