// A render through the exported functions, with the records filled the way a host fills them. Used by the
// engine's render tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "engine/EngineExports.h"
#include "engine/EngineResult.h"
#include "vrx/XpTextCodec.h"

namespace vrx::engine::test {

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
  void AddSound(std::uint16_t channels, std::uint32_t rate, std::int32_t codec) {
    output.audio = new VRXAudioOutputSetting;
    output.audio->channels = channels;
    output.audio->samplingRate = rate;
    output.audio->codecType = codec;
    output.audio->bitsPerSample = 16;
  }

  Result Create() { return VRX_CreateSequence(handle, &timeline, &output, &sequence); }
  /// Executes until the end or a failure, and releases the sequence.
  Result Run() {
    Result result = Create();
    while (result == kOk && !endFlag) {
      result = sequence->Execute(&progress, &endFlag);
      EXPECT_TRUE(result != kOk || progress.total != 0);
    }
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
  static void Collect(void* job, std::int32_t, const char* line) {
    static_cast<RenderJob*>(job)->log += std::string(line) + "\n";
  }
};

}  // namespace vrx::engine::test
