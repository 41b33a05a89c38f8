#include "engine/SmartPlan.h"

#include <algorithm>
#include <numeric>
#include <set>
#include <utility>

#include "engine/CopyConditions.h"
#include "engine/EngineLog.h"
#include "engine/SourcePackets.h"
#include "engine/SpanReport.h"

namespace vrx::engine {
namespace {

// Each copied span ends the encoder's look ahead and begins a group of pictures, which costs about as much as
// encoding some frames.
constexpr std::int64_t kLeastCopy = 12;  // frames

constexpr const char* kOff = "smart rendering is off";
constexpr const char* kStill = "still picture";
constexpr const char* kOverlay = "overlay";
constexpr const char* kOtherTimes = "the source's pictures do not follow each other as the movie's frames do";
constexpr const char* kNoStart = "no key frame follows at which copying can begin";
constexpr const char* kSeam = "between a cut or an overlay and the next key frame";

class SmartPlanner {
 public:
  SmartPlanner(const OutputPlan& output, const std::vector<OverlaySpan>& overlays, std::int64_t first,
               const StopSignal& stop, SmartPlan& plan)
      : m_output(output), m_overlays(overlays), m_first(first), m_stop(stop), m_plan(plan) {}

  void AddClip(const VideoClip& clip, std::size_t number) {
    m_number = number;
    m_clipStart = m_end;
    if (clip.frameCount == 0) return;
    if (m_output.smart == SmartRendering::Off) return AddEncoded(0, clip.frameCount, kOff, false);
    if (clip.rawInput != nullptr) return AddEncoded(0, clip.frameCount, kStill, false);
    PacketIndex index;
    const std::string cause = Look(clip, index);
    if (!cause.empty()) return AddEncoded(0, clip.frameCount, "the source " + cause, true);
    AddRuns(index);
  }

 private:
  /// Why the clip is not copied, or else what there is to copy.
  std::string Look(const VideoClip& clip, PacketIndex& index) {
    if (!m_packets || m_packets->GetPath() != clip.path) {
      m_packets.reset();
      if (const Refusal refusal = SourcePackets::Open(clip.path, m_stop, m_packets); !IsOk(refusal))
        return refusal.cause;
    }
    const FrameDuration duration = m_output.video.frameDuration;
    const SourceFile& file = m_packets->GetFile();
    if (std::string cause = WhyNotCopied(file, m_output.video); !cause.empty()) return cause;
    const std::int64_t origin = file.OriginTicks();
    m_clip.frameCount = clip.frameCount;
    const AVRational base = file.GetStream().time_base;
    m_clip.tickOfFrame = [&clip, base, duration, origin](std::int64_t frame) {
      return TicksAt(SourceTimeOfFrame(clip, frame, duration), base, origin);
    };
    m_clip.changed = ChangedFrames(clip.frameCount);
    m_clip.startsAtOpenGroups = m_output.video.codec == VideoCodec::Mpeg2;
    m_clip.leastFrames = kLeastCopy;
    std::string cause =
        ReadPacketIndex(*m_packets, m_clip.tickOfFrame(0), m_clip.tickOfFrame(clip.frameCount - 1), index);
    return cause.empty() ? WhyTooLarge(index, base, m_output.video) : cause;
  }

  std::vector<FrameInterval> ChangedFrames(std::int64_t frameCount) const {
    std::vector<FrameInterval> changed;
    const std::int64_t start = m_first + m_clipStart;
    for (const OverlaySpan& span : m_overlays) {
      const FrameInterval interval{std::max(span.first - start, std::int64_t{0}),
                                   std::min(span.last + 1 - start, frameCount)};
      if (interval.first < interval.end) changed.push_back(interval);
    }
    return changed;
  }

  void AddRuns(const PacketIndex& index) {
    const std::vector<std::int64_t> frames = FramesOfPictures(index, m_clip);
    m_shownAlone = frames;
    std::erase(m_shownAlone, kNoFrame);
    std::ranges::sort(m_shownAlone);
    std::vector<CopyRun> runs = FindCopyRuns(index, frames, m_clip);
    if (!runs.empty()) AddSource(index);
    std::int64_t at = 0;
    for (CopyRun& run : runs) {
      ExplainGap(at, run.firstFrame, true);
      at = run.firstFrame + static_cast<std::int64_t>(run.pictures.size());
      AddCopied(std::move(run));
    }
    ExplainGap(at, m_clip.frameCount, false);
  }

  void AddSource(const PacketIndex& index) {
    const AVStream& stream = m_packets->GetFile().GetStream();
    m_plan.sources.push_back({m_packets->GetPath(), stream.time_base, index.sets, index.nalLength,
                              CopyParameters(*stream.codecpar)});
  }

  /// Adds the frames between two runs, split where overlays begin and end.
  void ExplainGap(std::int64_t at, std::int64_t end, bool isFollowed) {
    for (const FrameInterval& changed : m_clip.changed) {
      if (changed.end <= at || changed.first >= end) continue;
      Explain(at, changed.first, true);
      AddEncoded(std::max(at, changed.first), std::min(end, changed.end), kOverlay, false);
      at = std::min(end, changed.end);
    }
    Explain(at, end, isFollowed);
  }

  void Explain(std::int64_t at, std::int64_t end, bool isFollowed) {
    if (at >= end) return;
    const auto alone = std::lower_bound(m_shownAlone.begin(), m_shownAlone.end(), end) -
                       std::lower_bound(m_shownAlone.begin(), m_shownAlone.end(), at);
    if (alone < end - at) return AddEncoded(at, end, kOtherTimes, true);
    const bool lacksStart = !isFollowed && end - at > kLeastCopy;
    AddEncoded(at, end, lacksStart ? kNoStart : kSeam, lacksStart);
  }

  void AddEncoded(std::int64_t at, std::int64_t end, std::string reason, bool sourceIsCause) {
    if (at >= end) return;
    PictureSpan span;
    span.firstFrame = m_clipStart + at;
    span.frameCount = end - at;
    span.clip = m_number;
    span.reason = std::move(reason);
    span.sourceIsCause = sourceIsCause;
    m_end = span.EndFrame();
    m_plan.spans.push_back(std::move(span));
  }

  void AddCopied(CopyRun run) {
    PictureSpan span;
    span.firstFrame = m_clipStart + run.firstFrame;
    span.frameCount = static_cast<std::int64_t>(run.pictures.size());
    span.clip = m_number;
    span.source = m_plan.sources.size() - 1;
    span.run = std::move(run);
    m_end = span.EndFrame();
    m_plan.spans.push_back(std::move(span));
  }

  const OutputPlan& m_output;
  const std::vector<OverlaySpan>& m_overlays;
  const std::int64_t m_first;
  const StopSignal& m_stop;
  SmartPlan& m_plan;
  std::unique_ptr<SourcePackets> m_packets;  // of the clip before, since the next is often from the same file
  std::size_t m_number = 0;                  // of the clip
  std::int64_t m_clipStart = 0;              // its first frame
  std::int64_t m_end = 0;                    // of the spans so far
  ClipToCopy m_clip;
  std::vector<std::int64_t> m_shownAlone;  // rising: frames that show a picture that no other shows
};

Result RefuseSourceSpans(const SmartPlan& plan, std::int64_t first) {
  for (const PictureSpan& span : plan.spans) {
    if (!span.sourceIsCause) continue;
    const ClipLogScope scope(VRXVideoTrack, span.clip);
    Log(VRXLogError, "smart rendering is required, but the frames " +
                         std::to_string(first + span.firstFrame) + " to " +
                         std::to_string(first + span.EndFrame() - 1) + " cannot be copied: " + span.reason);
    return kNotCapable;
  }
  return kOk;
}

}  // namespace

std::shared_ptr<AVCodecParameters> CopyParameters(const AVCodecParameters& stream) {
  std::shared_ptr<AVCodecParameters> copy(avcodec_parameters_alloc(),
                                          [](AVCodecParameters* one) { avcodec_parameters_free(&one); });
  if (copy && avcodec_parameters_copy(copy.get(), &stream) < 0) copy.reset();
  return copy;
}

std::int64_t SmartPlan::CountCopied() const {
  return std::accumulate(spans.begin(), spans.end(), std::int64_t{0},
                         [](std::int64_t sum, const PictureSpan& span) {
                           return span.IsCopied() ? sum + span.frameCount : sum;
                         });
}

std::int64_t SmartPlan::GetDelay() const {
  std::int64_t delay = 0;
  for (const PictureSpan& span : spans) delay = std::max(delay, span.run.delay);
  return delay;
}

Result MakeSmartPlan(const OutputPlan& output, const TimelinePlan& timeline,
                     const std::vector<OverlaySpan>& overlays, std::int64_t first, const StopSignal& stop,
                     SmartPlan& plan) {
  plan = {};
  SmartPlanner planner(output, overlays, first, stop, plan);
  for (std::size_t i = 0; i < timeline.video.size(); ++i) planner.AddClip(timeline.video[i], i);
  return output.smart == SmartRendering::Require ? RefuseSourceSpans(plan, first) : kOk;
}

void AddMovieSets(const OutputPlan& output, const std::vector<VideoClip>& clips, const StopSignal& stop,
                  SmartPlan& plan) {
  if (output.smart == SmartRendering::Off || output.video.codec != VideoCodec::H264) return;
  std::set<std::string> seen;
  for (const VideoClip& clip : clips) {
    if (clip.rawInput != nullptr || !seen.insert(clip.path).second) continue;
    std::unique_ptr<SourceFile> file;
    // The piece that shows a source reports what is wrong with it.
    if (!IsOk(SourceFile::Open(clip.path, SourceFile::Purpose::Decode, stop, file))) continue;
    if (!WhyNotCopied(*file, output.video).empty()) continue;
    ParameterSets sets;
    NalLength length = kStartCodes;
    if (sets.ReadHeader(*file->GetStream().codecpar, length)) plan.movieSets.push_back(std::move(sets));
  }
}

void ReportSpans(const SmartPlan& plan, std::int64_t first) {
  std::vector<std::uint64_t> starts;
  for (const PictureSpan& span : plan.spans) {
    const auto frame = [&](std::int64_t number) { return static_cast<std::uint64_t>(first + number); };
    starts.clear();
    for (const std::int64_t start : span.run.starts)
      starts.push_back(frame(span.firstFrame + start - span.run.firstFrame));
    VRXRenderSpan report{};
    report.track = VRXVideoTrack;
    report.copied = span.IsCopied();
    report.sourceIsCause = span.sourceIsCause;
    report.firstFrame = frame(span.firstFrame);
    report.frameCount = static_cast<std::uint64_t>(span.frameCount);
    report.clip = static_cast<std::uint32_t>(span.clip + 1);
    report.reason = span.reason.c_str();
    report.starts = starts.data();
    report.startCount = static_cast<std::uint32_t>(starts.size());
    ReportSpan(report);
  }
}

std::vector<VideoClip> EncodedClips(const SmartPlan& plan, const std::vector<VideoClip>& clips) {
  std::vector<VideoClip> encoded;
  std::vector<std::int64_t> startOf(clips.size());  // first frames
  std::int64_t start = 0;
  for (std::size_t i = 0; i < clips.size(); ++i) {
    startOf[i] = start;
    start += clips[i].frameCount;
  }
  for (const PictureSpan& span : plan.spans) {
    if (span.IsCopied()) continue;
    const std::int64_t skipped = span.firstFrame - startOf[span.clip];
    VideoClip* last = encoded.empty() ? nullptr : &encoded.back();
    const VideoClip& clip = clips[span.clip];
    if (last != nullptr && last->number == span.clip &&
        last->firstFrame + last->frameCount == clip.firstFrame + skipped) {
      last->frameCount += span.frameCount;  // the same pictures for another reason
      continue;
    }
    VideoClip& part = encoded.emplace_back(clip);
    part.number = span.clip;
    part.firstFrame += skipped;  // 0 for still pictures, whose clip is one span
    part.frameCount = span.frameCount;
  }
  return encoded;
}

}  // namespace vrx::engine
