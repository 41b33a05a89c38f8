#include "src/check/Checks.h"

#include <algorithm>
#include <array>
#include <limits>

#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"
#include "src/check/OutputNames.h"
#include "src/project/ProjectKeys.h"
#include "vrx/VRXLimits.h"

namespace vrx::check {
namespace {

using namespace vrx::project;

constexpr std::int32_t kNotSet = -1;
/// A QuickTime file is an MP4 file in all that matters here.
constexpr std::array kMp4Endings{u".mp4", u".m4v", u".mov"};
constexpr std::array kTransportEndings{u".ts", u".m2ts", u".mts"};

bool IsOneOf(const XpString& ending, const std::array<const char16_t*, 3>& endings) {
  return std::ranges::any_of(endings, [&](const char16_t* one) { return XpCompareNoCase(ending, one) == 0; });
}

/// A number that the document does not set is read as -1, cut to the width of its field.
template <class Number>
XpString NumberText(Number number) {
  if (number == static_cast<Number>(kNotSet)) return u"not set";
  XpString text;
  XpFormat(text, u"%u", static_cast<std::uint32_t>(number));
  return text;
}

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
    platform::FileStatus status;
    if (!platform::StatPath(path, platform::Links::Follow, status)) {
      m_isFolder = status.isDirectory;
      if (m_isFolder) return Report(Severity::Error, kOutputFilePath, path + u" is a folder");
      if (status.isSpecial) {
        return Report(Severity::Error, kOutputFilePath, path + u" is a device, a pipe or a socket");
      }
    }
    const XpString folder = XpPathDirectory(path);
    if (!XpPathIsDirectory(folder)) {
      return Report(Severity::Error, kOutputFilePath, XpString(u"the folder ") + folder + u" does not exist");
    }
    const InputFile* input = FindOutputAmongInputs(path, m_report.inputs);
    if (input != nullptr) {
      Report(Severity::Error, kOutputFilePath, path + u" is " + input->Role() + u" and would be overwritten");
    }
  }

  void CheckSide(const Key& key, std::int32_t side) {
    XpString message;
    if (side == kNotSet) {
      message = u"is missing";
    } else if (side < limits::kMinSide || side > limits::kMaxSide) {
      XpFormat(message, u"must lie between %d and %d pixels, and is %d", limits::kMinSide, limits::kMaxSide,
               side);
    } else if (!limits::IsUsableSide(side)) {
      XpFormat(message, u"must be even, and is %d", side);
    }
    if (!message.IsEmpty()) Report(Severity::Error, key, message);
  }

  void CheckFrameLength(const VRXTimeInfo& frame) {
    const auto isAboveZero = [](std::uint64_t number) { return static_cast<std::int64_t>(number) > 0; };
    if (!isAboveZero(frame.value)) {
      Report(Severity::Error, kTimeValue, u"must be above 0: a frame lasts TimeValue / TimeScale seconds");
    }
    if (!isAboveZero(frame.scale)) {
      Report(Severity::Error, kTimeScale, u"must be above 0: a frame lasts TimeValue / TimeScale seconds");
    }
    if (!isAboveZero(frame.value) || !isAboveZero(frame.scale)) return;
    if (limits::IsUsableFrameLength(frame.value, frame.scale)) return;
    XpString message;
    XpFormat(message, u"a frame must last from 1/%I64u to %I64u seconds", limits::kMaxFramesPerSecond,
             limits::kMaxSecondsPerFrame);
    Report(Severity::Error, kTimeValue, message);
  }

  /// Numbered as in the engine, where the document's 1, 2 and 3 are 1, 3 and 4.
  void CheckContainer(std::int32_t specificationType) {
    const XpString& path = m_report.outputPath;
    if (path.IsEmpty() || m_isFolder) return;
    const bool isMp4 = specificationType == 1 || specificationType == 3 || specificationType == 4;
    const XpString ending = XpPathExtension(path);
    if (IsOneOf(ending, kMp4Endings)) return;
    const bool isTransportStream = IsTransportStreamName(path);
    m_isTransportStream = isTransportStream && !isMp4;
    const XpString name = ending.IsEmpty() ? XpString(u"without an ending") : u"that ends in " + ending;
    if (isMp4) {
      Report(Severity::Warning, isTransportStream ? kVideoSpecificationType : kOutputFilePath,
             u"an MP4 file is written under a name " + name +
                 (isTransportStream ? u": VideoSpecificationType asks for one" : u""));
    } else if (!isTransportStream) {
      Report(
          Severity::Warning, kOutputFilePath,
          u"an MP4 file is written under a name " + name + u" (.mov, .ts, .m2ts and .mts are known as well)");
    }
  }

  /// Some host programs count in kilobits, and some people in megabits.
  void CheckBitrate(const VRXVideoOutputSetting& video) {
    const double frames = static_cast<double>(video.frameDuration.scale) /
                          static_cast<double>(std::max<std::uint64_t>(video.frameDuration.value, 1));
    const double pixels = static_cast<double>(video.width) * video.height * frames;  // a second
    // A still scene takes some ten times as much.
    constexpr double kLeastBitsPerPixel = 0.002;
    constexpr std::int64_t kKilo = 1000;
    if (!(video.averageBitrate < pixels * kLeastBitsPerPixel)) return;
    std::int64_t meant = video.averageBitrate;  // in kilobits, or else in megabits
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    while (meant <= kMost && static_cast<double>(meant) < pixels * kLeastBitsPerPixel) meant *= kKilo;
    if (meant > kMost) return;
    XpString message;
    XpFormat(message, u"%d bits a second are too few for the picture; were %I64d meant?",
             video.averageBitrate, meant);
    constexpr std::int32_t kLeastBitrate = 1000;  // that encoders take
    Report(video.averageBitrate < kLeastBitrate ? Severity::Error : Severity::Warning, kAverageBitrate,
           message);
  }

  void CheckVideo(const VRXVideoOutputSetting& video) {
    CheckSide(kWidth, video.width);
    CheckSide(kHeight, video.height);
    CheckFrameLength(video.frameDuration);
    CheckContainer(video.specificationType);
    if (video.averageBitrate <= 0) {
      Report(Severity::Note, kAverageBitrate, u"is not set: the engine codes at constant quality");
    } else {
      CheckBitrate(video);
    }
  }

  void CheckAudio(const VRXAudioOutputSetting& audio) {
    XpString message;
    if (!limits::IsUsableChannelCount(audio.channels)) {
      XpFormat(message, u"must be 1, 2 or 6, and is %s", NumberText(audio.channels));
      Report(Severity::Error, kChannel, message);
    }
    constexpr std::int32_t kPcm = 3;
    if (audio.codecType == kPcm && m_isTransportStream) {
      Report(Severity::Error, kAudioCodecType, u"is 3, PCM, which an MPEG transport stream does not hold");
    }
    const std::uint16_t bits = audio.bitsPerSample;
    const bool isUsableDepth = bits == static_cast<std::uint16_t>(kNotSet) || bits == 16 || bits == 24;
    if (audio.codecType == kPcm && !isUsableDepth) {
      XpFormat(message, u"must be 16 or 24 for PCM, and is %s", NumberText(bits));
      Report(Severity::Error, kBitPerSample, message);
    }
    if (!limits::IsUsableSampleRate(audio.samplingRate)) {
      XpFormat(message, u"must lie between %u and %u Hz, and is %s", limits::kMinSampleRate,
               limits::kMaxSampleRate, NumberText(audio.samplingRate));
      constexpr std::uint32_t kKilo = 1000;
      if (audio.samplingRate <= limits::kMaxSampleRate &&
          limits::IsUsableSampleRate(audio.samplingRate * kKilo)) {
        XpAppendFormat(message, u"; was %u meant?", audio.samplingRate * kKilo);
      }
      Report(Severity::Error, kSamplingRate, message);
    }
  }

  const XpString& m_file;
  ProjectReport& m_report;
  bool m_isFolder = false;  // what the output names
  bool m_isTransportStream = false;
};

}  // namespace

bool IsTransportStreamName(const XpString& path) { return IsOneOf(XpPathExtension(path), kTransportEndings); }

void CheckOutput(const XpString& file, ProjectReport& report) { OutputChecker(file, report).Run(); }

}  // namespace vrx::check
