// A render through the engine's exported functions, and a folder with sources for it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "engine/EngineExports.h"
#include "engine/EngineResult.h"
#include "samples/clipmaker/PatternClip.h"
#include "tests/support/TempFolder.h"
#include "vrx/XpTextCodec.h"

namespace vrx::engine {

/// The records are filled the way a host fills them.
class RenderJob {
 public:
  explicit RenderJob(const std::string& outputPath) {
    VRX_SetLogCallback(&Collect, this);
    VRX_CreateVRX(&handle);
    output.systemType = VRXSystemByExtension;
    output.outputFilePath = new VRXPathHolder(textcodec::ToUtf16(outputPath));
    output.video = new VRXVideoOutputSetting;
    output.video->width = 64;
    output.video->height = 48;
    output.video->frameDuration = VRXTimeInfo(1, 25);
    output.video->averageBitrate = 400'000;
    output.video->avcEncoderMode = 1;
  }
  RenderJob(const RenderJob&) = delete;
  RenderJob& operator=(const RenderJob&) = delete;
  ~RenderJob() {
    if (sequence != nullptr) VRX_ReleaseSequence(handle, &sequence);
    VRX_ReleaseVRX(&handle);
    VRX_SetLogCallback(nullptr, nullptr);
  }

  void AddClip(const std::string& path, std::int64_t start, std::int64_t end, std::uint64_t scale = 25) {
    VRXFileSourceStreamInfo clip(textcodec::ToUtf16(path));
    clip.startTime = VRXTimeInfo(static_cast<std::uint64_t>(start), scale);
    clip.endTime = VRXTimeInfo(static_cast<std::uint64_t>(end), scale);
    timeline.video.Add(clip);
  }
  void AddSoundClip(const std::string& path, std::int64_t start, std::int64_t end, std::uint64_t scale = 25) {
    VRXFileSourceStreamInfo clip(textcodec::ToUtf16(path));
    clip.startTime = VRXTimeInfo(static_cast<std::uint64_t>(start), scale);
    clip.endTime = VRXTimeInfo(static_cast<std::uint64_t>(end), scale);
    timeline.audio.Add(clip);
  }
  void AddSound(std::uint16_t channels, std::uint32_t rate, std::int32_t codec) {
    output.audio = new VRXAudioOutputSetting;
    output.audio->channels = channels;
    output.audio->samplingRate = rate;
    output.audio->codecType = codec;
    output.audio->bitsPerSample = 16;
  }

  Result Create() { return VRX_CreateSequence(handle, &timeline, &output, &sequence); }
  /// Executes until the end or a failure, or until the end flag is set.
  Result Execute() {
    Result result = kOk;
    while (result == kOk && !endFlag) {
      result = sequence->Execute(&progress, &endFlag);
      EXPECT_TRUE(result != kOk || progress.total != 0);
    }
    return result;
  }
  /// Creates, executes and releases the sequence.
  Result Run() {
    Result result = Create();
    if (result == kOk) result = Execute();
    if (sequence == nullptr) return result;
    EXPECT_EQ(VRX_ReleaseSequence(handle, &sequence), kOk);
    return result;
  }
  bool Logged(const std::string& text) const { return log.find(text) != std::string::npos; }

  VRXHandle handle = nullptr;
  VRXTimeline timeline;
  VRXSystemOutputSetting output;
  IVRXSequence* sequence = nullptr;
  VRXProgressInfo progress;
  bool endFlag = false;
  std::string log;  // lines, each with a line end

 private:
  static void Collect(void* job, const VRXLogEntry& entry) {
    constexpr const char* kTracks[] = {"", "video ", "audio "};
    auto& log = static_cast<RenderJob*>(job)->log;
    log += kTracks[entry.track];
    if (entry.clip != 0) log += std::to_string(entry.clip) + ": ";
    log += std::string(entry.text) + "\n";
  }
};

class EngineRenderTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return (folder.Path() / name).string(); }
  std::string Write(const std::string& name, test_support::PatternClip clip) const {
    clip.width = 64;
    clip.height = 48;
    test_support::WritePatternClip(Path(name), clip);
    return Path(name);
  }
  const TempFolder folder;
};

}  // namespace vrx::engine
