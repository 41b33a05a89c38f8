#include "src/job/RenderJob.h"

#include <array>
#include <cstdint>

#include "foundation/platform/LocalTime.h"
#include "foundation/text/XpFormat.h"
#include "src/project/InputFiles.h"
#include "src/project/ProjectPath.h"
#include "src/renderlog/RenderLog.h"

namespace vrx::job {
namespace {

using renderlog::LogLine;

constexpr char16_t kUpdate[] = u"updateOutputInfoByCurrentProjectFile";

/// The log entry of one clip. Its paths are arguments, never part of the format.
void LogClip(const char16_t* typeFormat, const char16_t* pathFormat, const TKLXOutputXmlInfo& clip,
             const VRXSourceStreamInfoBase& source) {
  constexpr std::int32_t kDocumentScale = 1000;
  const auto low = [](std::uint64_t number) { return static_cast<std::int32_t>(number); };
  XpString entry;
  XpAppendFormat(entry, typeFormat, clip.sourceType);
  XpAppendFormat(entry, pathFormat, clip.sourceFile);
  XpAppendFormat(entry, u"StartTime: value = %f,", clip.startTime);
  XpAppendFormat(entry, u" Scale = %d \n", kDocumentScale);
  XpAppendFormat(entry, u"EndTime: value = %f,", clip.endTime);
  XpAppendFormat(entry, u" Scale = %d \n", kDocumentScale);
  XpAppendFormat(entry, u" StartTime = %d", low(source.startTime.value));
  XpAppendFormat(entry, u" framerate = %d", low(source.startTime.scale));
  XpAppendFormat(entry, u" EndTime = %d", low(source.endTime.value));
  XpAppendFormat(entry, u" framerate = %d", low(source.endTime.scale));
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

/// The movie's time zone as its only metadata item.
std::unique_ptr<VRXMetaDataSetting> BuildTimeZoneMetaData() {
  const std::int32_t minutesEast = platform::UtcOffsetMinutes();
  // The format's reader takes the high byte of the offset alone; the second byte is always 0.
  const std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(minutesEast >> 8), 0};
  VRXMetaData item;
  item.kind = VRXMetaData::kTimeZone;
  item.language = VRXMetaData::kUndeterminedLanguage;
  item.SetData(bytes.data(), bytes.size());
  auto setting = std::make_unique<VRXMetaDataSetting>();
  setting->Add(item);
  return setting;
}

}  // namespace

RenderJob::~RenderJob() {
  // The records refer to the callback and to the still pictures.
  m_timeline.reset();
  m_systemOutput.reset();
  m_overlays.Reset();
}

void RenderJob::Load(const XpString& projectPath) {
  m_projectPath = projectPath;
  if (m_projectPath.IsEmpty()) {
    LogLine(kUpdate, u"Error: m_strProjectFilePath Is Empty.");
    return;
  }
  m_systemOutput = std::make_unique<VRXSystemOutputSetting>();
  m_timeline = std::make_unique<VRXTimeline>();
  m_overlays.Reset();
  m_isUsable = false;

  TKLXOutputXml project;
  if (const XpResult result = project.LoadXmlFile(m_projectPath); result != XpOk) {
    XpString line;
    XpFormat(line, u"Load VRXWrapper.xml Error(%d)", result);
    LogLine(kUpdate, line);
  }
  if (m_basebandObject) {
    const VRXVideoOutputSetting none;
    const VRXVideoOutputSetting& video = project.videoSettings ? *project.videoSettings : none;
    m_basebandObject->Restart(video.width, video.height, video.frameDuration);
  }
  // Without output settings there is no frame to count in and nothing to render to.
  if (!project.videoSettings) {
    LogLine(kUpdate, u"Error: the project has no video output settings.");
    return;
  }
  overlayplan::MovieTimes movie{.frame = project.videoSettings->frameDuration};
  m_isUsable = movie.IsUsable();
  AddTracks(project, movie.sums);
  AddOutput(project);
  RefuseInputAsOutput(project);
  if (project.painterEffect.IsEmpty()) return;
  movie.hasBaseband = m_basebandObject != nullptr;
  m_overlays.SetUp(project::ResolvePath(m_projectPath, project.painterEffect), movie, *m_systemOutput);
}

void RenderJob::AddTracks(const TKLXOutputXml& project, timeline::ClipSums& sums) {
  const timeline::TimelineContext context{
      .projectPath = m_projectPath,
      .clock = timeline::FrameClock(project.videoSettings->frameDuration),
      .makeBaseband =
          [&](const auto& clip) {
            return AddBaseband(project::ResolvePath(m_projectPath, clip.sourceFile), *project.videoSettings);
          },
      .reportVideo =
          [](const auto& clip, const auto& source) {
            LogClip(u"VideoSourceType: %d\n", u"VideoFilePath: %s\n", clip, source);
          },
      .reportAudio =
          [](const auto& clip, const auto& source) {
            LogClip(u"AudioSourceType: %d\n", u"AudioFilePath: %s\n", clip, source);
          },
  };
  if (AddVideoTrack(project.videoTracks, context, *m_timeline, sums)) m_wantsGpuSetting = true;
  AddAudioTrack(project.audioTracks, context, *m_timeline);
}

void RenderJob::AddOutput(const TKLXOutputXml& project) {
  m_systemOutput->video = new VRXVideoOutputSetting(*project.videoSettings);
  if (project.audioSettings) m_systemOutput->audio = new VRXAudioOutputSetting(*project.audioSettings);
  const XpString outputPath = project::ResolvePath(m_projectPath, project.outputFilePath);
  m_systemOutput->outputFilePath = new VRXPathHolder(outputPath.AsView());
  XpString line;
  XpFormat(line, u"OutputFilePath: %s", outputPath);
  LogLine(kUpdate, line);

  const SystemKind kind = SystemKindOf(m_systemOutput->video->specificationType);
  m_systemOutput->systemType = kind.systemType;
  if (kind.hasTimeZone) m_systemOutput->metaData = BuildTimeZoneMetaData().release();
}

void RenderJob::RefuseInputAsOutput(const TKLXOutputXml& project) {
  const XpString outputPath = project::ResolvePath(m_projectPath, project.outputFilePath);
  const std::vector<project::InputFile> inputs = project::ListInputFiles(m_projectPath, project);
  const project::InputFile* input = project::FindOutputAmongInputs(outputPath, inputs);
  if (input == nullptr) return;
  LogLine(kUpdate, u"Error: the output file is " + input->Role() + u".");
  m_isUsable = false;
}

IVRXRawInputCallback* RenderJob::AddBaseband(const XpString& documentPath,
                                             const VRXVideoOutputSetting& video) {
  if (!m_basebandObject) {
    auto made = std::make_unique<VRXWBasebandVideoObject>(video.width, video.height, video.frameDuration);
    const std::scoped_lock lock(m_cancelMutex);
    if (m_isCancelled) made->CancelWaits();
    m_basebandObject = std::move(made);
  }
  // A document that can't be used was reported in the log; its clip stays and has no picture.
  m_basebandObject->Parse(documentPath);
  return m_basebandObject->GetLastSource();
}

void RenderJob::CancelWaits() {
  const std::scoped_lock lock(m_cancelMutex);
  m_isCancelled = true;
  if (m_basebandObject) m_basebandObject->CancelWaits();
}

}  // namespace vrx::job
