#include <array>
#include <cstdint>

#include "foundation/platform/TimeZone.h"
#include "foundation/text/XpFormat.h"
#include "src/log/RenderLog.h"
#include "src/manager/VRXWrapperManager.h"
#include "src/project/ProjectPath.h"

namespace {

using vrx::render::LogLine;

constexpr char16_t kUpdate[] = u"updateOutputInfoByCurrentProjectFile";

/// The log entry of one clip. Its paths are arguments, never part of the format.
void LogClip(const char16_t* typeFormat, const char16_t* pathFormat, const TKLXOutputXmlInfo& clip,
             const VRXSourceStreamInfoBase& source) {
  constexpr std::int32_t kDocumentScale = 1000;
  const auto low = [](std::uint64_t number) { return static_cast<std::int32_t>(number); };
  XpString entry;
  entry.AppendFormat(typeFormat, clip.sourceType);
  entry.AppendFormat(pathFormat, clip.sourceFile);
  entry.AppendFormat(u"StartTime: value = %f,", clip.startTime);
  entry.AppendFormat(u" Scale = %d \n", kDocumentScale);
  entry.AppendFormat(u"EndTime: value = %f,", clip.endTime);
  entry.AppendFormat(u" Scale = %d \n", kDocumentScale);
  entry.AppendFormat(u" StartTime = %d", low(source.startTime.value));
  entry.AppendFormat(u" framerate = %d", low(source.startTime.scale));
  entry.AppendFormat(u" EndTime = %d", low(source.endTime.value));
  entry.AppendFormat(u" framerate = %d", low(source.endTime.scale));
  LogLine(kUpdate, entry);
}

/// Which specification makes which kind of movie, and whether that kind names its time zone.
struct SystemKind {
  std::int32_t systemType;
  bool hasTimeZone;
};

SystemKind SystemKindOf(std::int32_t specificationType) {
  switch (specificationType) {
    case 1:
      return {VRXSystemMp4, true};
    case 3:
    case 4:
      return {VRXSystemMp4Broadcast, true};
    default:
      return {VRXSystemByExtension, false};
  }
}

}  // namespace

void VRXWrapperManager::updateOutputInfoByCurrentProjectFile() {
  if (m_strProjectFilePath.IsEmpty()) {
    LogLine(kUpdate, u"Error: m_strProjectFilePath Is Empty.");
    return;
  }
  m_pSystemOutput = std::make_unique<VRXSystemOutputSetting>();
  if (!m_pTimeline) m_pTimeline = std::make_unique<VRXTimeline>();
  m_pTimeline->audio.Clear();
  m_pTimeline->video.Clear();
  m_pRawOutputCallback.reset();
  m_clipSums = {};
  m_bProjectUsable = false;

  TKLXOutputXml project;
  if (const XpResult result = project.LoadXmlFile(m_strProjectFilePath); result != XpOk) {
    XpString line;
    line.Format(u"Load VRXWrapper.xml Error(%d)", result);
    LogLine(kUpdate, line);
  }
  if (m_pBasebandObject) {
    const VRXVideoOutputSetting none;
    const VRXVideoOutputSetting& video = project.videoSettings ? *project.videoSettings : none;
    m_pBasebandObject->Restart(video.width, video.height, video.frameDuration);
  }
  // Without output settings there is no frame to count in and nothing to render to.
  if (!project.videoSettings) return;

  const vrx::timeline::TimelineContext context{
      .projectPath = m_strProjectFilePath,
      .clock = vrx::timeline::FrameClock(project.videoSettings->frameDuration),
      .makeBaseband = [&](const auto& clip) { return AddBaseband(clip, *project.videoSettings); },
      .reportVideo =
          [](const auto& clip, const auto& source) {
            LogClip(u"VideoSourceType: %d\n", u"VideoFilePath: %s\n", clip, source);
          },
      .reportAudio =
          [](const auto& clip, const auto& source) {
            LogClip(u"AudioSourceType: %d\n", u"AudioFilePath: %s\n", clip, source);
          },
  };
  m_bProjectUsable = context.clock.IsUsable();
  if (AddVideoTrack(project.videoTracks, context, *m_pTimeline, m_clipSums)) m_bGpuSettingWanted = true;
  AddAudioTrack(project.audioTracks, context, *m_pTimeline);

  m_pSystemOutput->video = new VRXVideoOutputSetting(*project.videoSettings);
  if (project.audioSettings) m_pSystemOutput->audio = new VRXAudioOutputSetting(*project.audioSettings);
  const XpString outputPath = vrx::project::ResolvePath(m_strProjectFilePath, project.outputFilePath);
  m_pSystemOutput->outputFilePath = new VRXPathHolder(outputPath.AsView());
  XpString line;
  line.Format(u"OutputFilePath: %s", outputPath);
  LogLine(kUpdate, line);

  const SystemKind kind = SystemKindOf(m_pSystemOutput->video->specificationType);
  m_pSystemOutput->systemType = kind.systemType;
  if (kind.hasTimeZone) BuildTimeZoneMetaData();
  SetupOverlays(project.painterEffect);
}

IVRXRawInputCallback* VRXWrapperManager::AddBaseband(const TKLXOutputXmlInfo& clip,
                                                     const VRXVideoOutputSetting& video) {
  if (!m_pBasebandObject) {
    m_pBasebandObject =
        std::make_unique<VRXWBasebandVideoObject>(video.width, video.height, video.frameDuration);
  }
  // A document that can't be used was told in the log; its clip stays and has no picture.
  m_pBasebandObject->Parse(vrx::project::ResolvePath(m_strProjectFilePath, clip.sourceFile));
  return m_pBasebandObject->GetLastSource();
}

void VRXWrapperManager::BuildTimeZoneMetaData() {
  const std::int32_t minutesEast = vrx::platform::UtcOffsetMinutes();
  // The format's reader takes the high byte of the offset alone; the second byte is always 0.
  const std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(minutesEast >> 8), 0};
  VRXMetaData item;
  item.kind = VRXMetaData::kTimeZone;
  item.language = VRXMetaData::kUndeterminedLanguage;
  item.SetData(bytes.data(), bytes.size());
  VRXMetaDataSetting setting;
  setting.Add(item);
  delete m_pSystemOutput->metaData;
  m_pSystemOutput->metaData = new VRXMetaDataSetting(setting);
}
