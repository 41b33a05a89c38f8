#include "src/project/InputFiles.h"

#include "content/moff/MoffSource.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/text/XpFormat.h"
#include "overlay/document/PainterKeys.h"
#include "overlay/document/TKLXPainterInfoXml.h"
#include "src/baseband/BasebandDocument.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"

namespace vrx::project {
namespace {

constexpr char16_t kImagePath[] = u"ImagePath";

void AddStillPictures(const InputFile& document, std::vector<InputFile>& inputs) {
  baseband::BasebandDocument read;
  ReadBasebandDocument(document.path, read);  // what is wrong with it does not matter here
  for (const baseband::BasebandImage& image : read.images) {
    const XpString path = ResolvePath(document.path, image.job.imagePath);
    inputs.push_back({path, document.track, document.clip, kImagePath, image.line});
  }
}

void AddLogs(const XpString& painterPath, std::vector<InputFile>& inputs) {
  TKLXPainterInfoXml document;
  document.Load(XpPath(painterPath));  // what is wrong with it does not matter here
  for (const LogDataEntry& clip : document.GetPainterInfo().templateInfo.logData) {
    if (clip.gpsLogFilePath.IsEmpty()) continue;
    const XpString path = ResolvePath(painterPath, clip.gpsLogFilePath);
    for (const XpString& file : {path, moff::MoffPathFor(path)}) {
      inputs.push_back({.path = file, .key = overlay::kGPSLogFilePath.name});
    }
  }
}

void AddTrack(const XpString& projectPath, const Key& track, const TKLXOutputXml::Track& clips, bool isVideo,
              std::vector<InputFile>& inputs) {
  std::uint32_t number = 0;
  for (const auto& clip : clips) {
    ++number;
    if (clip->sourceFile.IsEmpty()) continue;
    const InputFile source{ResolvePath(projectPath, clip->sourceFile), track.name, number, kSourceFile.name};
    inputs.push_back(source);
    if (isVideo && clip->sourceType == VRXSourceBaseband) AddStillPictures(source, inputs);
  }
}

}  // namespace

XpString InputFile::Role() const {
  XpString role;
  if (clip == 0 && key.IsEmpty()) return u"the project document";
  if (clip == 0) return key == overlay::kGPSLogFilePath.name ? u"a GPS log" : u"the painter document";
  if (line == 0) {
    XpFormat(role, u"the source of %s clip %u", track, clip);
  } else {
    XpFormat(role, u"a still picture of %s clip %u (line %I64u of its document)", track, clip, line);
  }
  return role;
}

std::vector<InputFile> ListInputFiles(const XpString& projectPath, const TKLXOutputXml& project) {
  std::vector<InputFile> inputs{{.path = projectPath}};
  if (!project.painterEffect.IsEmpty()) {
    const XpString painterPath = ResolvePath(projectPath, project.painterEffect);
    inputs.push_back({.path = painterPath, .key = kPainterEffect.name});
    AddLogs(painterPath, inputs);
  }
  AddTrack(projectPath, kVideoTrack, project.videoTracks, true, inputs);
  AddTrack(projectPath, kAudioTrack, project.audioTracks, false, inputs);
  return inputs;
}

const InputFile* FindOutputAmongInputs(const XpString& outputPath, std::span<const InputFile> inputs) {
  platform::FileStatus status;
  if (outputPath.IsEmpty() || platform::StatPath(outputPath, platform::Links::Follow, status)) return nullptr;
  for (const InputFile& input : inputs) {
    if (platform::IsSameFile(outputPath, input.path)) return &input;
  }
  return nullptr;
}

}  // namespace vrx::project
