#include "engine/SourceProbe.h"

#include <algorithm>
#include <memory>
#include <string>

#include "engine/AudioSource.h"
#include "engine/FileVideoSource.h"
#include "engine/SourcePath.h"
#include "vrx/VRXLimits.h"

namespace vrx::engine {
namespace {

/// Fine enough for every frame rate.
constexpr FrameDuration kProbeClock{1, 90'000};

/// The size in which `frame` is shown: a pixel that is not square makes it wider or narrower.
void FillSize(const AVFrame& frame, const Orientation& orientation, VRXSourceProbe& probe) {
  AVRational aspect = frame.sample_aspect_ratio;
  if (aspect.num <= 0 || aspect.den <= 0) aspect = {1, 1};
  const auto width = static_cast<std::int32_t>(
      std::min<std::int64_t>(av_rescale(frame.width, aspect.num, aspect.den), limits::kMaxSide));
  probe.width = orientation.IsSideways() ? frame.height : width;
  probe.height = orientation.IsSideways() ? width : frame.height;
}

void FillFrameDuration(SourceFile& file, VRXSourceProbe& probe) {
  const AVRational rate = av_guess_frame_rate(&file.GetDemuxer(), &file.GetStream(), nullptr);
  if (rate.num <= 0 || rate.den <= 0) return;
  probe.frameDuration = {static_cast<std::uint64_t>(rate.den), static_cast<std::uint64_t>(rate.num)};
}

Refusal ProbeVideo(const std::string& path, VRXSourceProbe& probe) {
  const StopSignal never;
  std::unique_ptr<FileVideoSource> source;
  VRX_TRY(FileVideoSource::Open(path, never, source));
  const AVFrame* first = nullptr;
  if (const Result result = source->FrameAt({0, 1}, first); result != kOk) {
    const char* codec = avcodec_get_name(source->GetFile().GetStream().codecpar->codec_id);
    return {result, std::string("has no picture that can be decoded (") + codec + ")"};
  }
  std::int64_t units = 0;
  VRX_TRY(source->GetFile().CountFrames(kProbeClock, units));
  probe.hasVideo = true;
  probe.dynamicRange = DynamicRangeOf(*first);
  FillSize(*first, source->GetOrientation(), probe);
  FillFrameDuration(source->GetFile(), probe);
  probe.videoSeconds = static_cast<double>(units) / static_cast<double>(kProbeClock.scale);
  return {};
}

void ProbeAudio(const std::string& path, VRXSourceProbe& probe) {
  constexpr int kStereo = 2;
  const StopSignal never;
  std::unique_ptr<AudioSource> source;
  if (AudioSource::Open(path, kStereo, never, source) != kOk) return;
  probe.hasAudio = source->HasSound() && source->CanDecode();
  if (!probe.hasAudio) return;
  probe.audioSeconds = static_cast<double>(source->MeasureEnd()) / source->GetRate();
  probe.sampleRate = source->GetRate();
}

}  // namespace

void FillText(std::string_view text, std::span<char> field) {
  std::size_t size = std::min(text.size(), field.size() - 1);
  const auto continues = [&](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
  };
  while (size > 0 && size < text.size() && continues(size)) --size;
  std::copy_n(text.data(), size, field.data());
  field[size] = '\0';
}

Result ProbeSource(std::u16string_view path, VRXSourceProbe& probe) {
  probe = {};
  const std::string native = NativePath(path);
  Refusal refusal{kSourceMissing, "does not exist"};
  if (!native.empty()) refusal = ProbeVideo(native, probe);
  if (refusal.result == kOk || refusal.result == kSourceNotMovie) ProbeAudio(native, probe);
  if (refusal.result == kOk || probe.hasAudio) return kOk;
  FillText(refusal.cause, probe.cause);
  return refusal.result;
}

}  // namespace vrx::engine
