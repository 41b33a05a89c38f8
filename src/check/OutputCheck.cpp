#include "src/check/OutputCheck.h"

#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"
#include "src/project/ProjectKeys.h"
#include "src/timeline/FrameClock.h"

namespace vrx::check {
namespace {

using namespace vrx::project;

constexpr std::int32_t kSmallestSide = 16;
constexpr std::int32_t kLargestSide = 8192;

class OutputChecker {
 public:
  OutputChecker(const XpString& file, ProjectReport& report) : m_file(file), m_report(report) {}

  void Run() {
    CheckPath();
    if (m_report.videoSettings) CheckVideo(*m_report.videoSettings);
    if (m_report.audioSettings) CheckAudio(*m_report.audioSettings);
  }

 private:
  void Report(Severity severity, const Key& key, const XpString& message) {
    m_report.problems.push_back({severity, m_file, XpString(), 0, key.name, message});
  }

  void CheckPath() {
    const XpString& path = m_report.outputPath;
    if (path.IsEmpty()) return Report(Severity::Error, kOutputFilePath, u"names no file to write");
    bool isDirectory = false;
    if (XpPathExists(path, &isDirectory) && isDirectory) {
      return Report(Severity::Error, kOutputFilePath, path + u" is a folder");
    }
    const XpString folder = XpPathDirectory(path);
    if (!XpPathIsDirectory(folder)) {
      return Report(Severity::Error, kOutputFilePath, XpString(u"the folder ") + folder + u" does not exist");
    }
    for (const ClipRow& clip : m_report.clips) {
      if (!(clip.source == path)) continue;
      return Report(Severity::Warning, kOutputFilePath, path + u" is also a source and would be replaced");
    }
  }

  void CheckSide(const Key& key, std::int32_t side) {
    XpString message;
    if (side < kSmallestSide || side > kLargestSide) {
      XpFormat(message, u"must lie between %d and %d pixels, and is %d", kSmallestSide, kLargestSide, side);
    } else if (side % 2 != 0) {
      XpFormat(message, u"must be even, and is %d", side);
    }
    if (!message.IsEmpty()) Report(Severity::Error, key, message);
  }

  void CheckVideo(const VRXVideoOutputSetting& video) {
    CheckSide(kWidth, video.width);
    CheckSide(kHeight, video.height);
    const auto valueOf = [](std::uint64_t number) { return static_cast<std::int64_t>(number); };
    if (valueOf(video.frameDuration.value) <= 0) {
      Report(Severity::Error, kTimeValue, u"must be above 0: a frame lasts TimeValue / TimeScale seconds");
    }
    if (valueOf(video.frameDuration.scale) <= 0) {
      Report(Severity::Error, kTimeScale, u"must be above 0: a frame lasts TimeValue / TimeScale seconds");
    }
    if (video.averageBitrate <= 0) {
      Report(Severity::Note, kAverageBitrate, u"is not set: the engine codes at constant quality");
    }
  }

  void CheckAudio(const VRXAudioOutputSetting& audio) {
    if (audio.channels != 1 && audio.channels != 2 && audio.channels != 6) {
      XpString message;
      XpFormat(message, u"must be 1, 2 or 6, and is %d", audio.channels);
      Report(Severity::Error, kChannel, message);
    }
    constexpr std::uint32_t kLowestRate = 8000;
    constexpr std::uint32_t kHighestRate = 192000;
    if (audio.samplingRate < kLowestRate || audio.samplingRate > kHighestRate) {
      XpString message;
      XpFormat(message, u"must lie between %u and %u Hz", kLowestRate, kHighestRate);
      Report(Severity::Error, kSamplingRate, message);
    }
  }

  const XpString& m_file;
  ProjectReport& m_report;
};

}  // namespace

void CheckOutput(const XpString& file, ProjectReport& report) { OutputChecker(file, report).Run(); }

}  // namespace vrx::check
