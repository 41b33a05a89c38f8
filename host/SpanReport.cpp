#include "host/SpanReport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

#include "foundation/text/XpPath.h"
#include "src/project/ProjectKeys.h"

namespace vrx::host {
namespace {

constexpr std::size_t kMostLines = 20;

std::string WayText(const EngineSpan& span) {
  if (span.copied) return "copied";
  return span.reason.empty() ? "encoded" : "encoded: " + Masked(span.reason);
}

std::string ClipName(const EngineSpan& span, const check::ProjectReport& report) {
  const auto isClip = [&](const check::ClipRow& row) {
    return row.clip == span.clip && row.track == project::kVideoTrack.name;
  };
  const auto row = std::ranges::find_if(report.clips, isClip);
  return row == report.clips.end() ? std::string() : Masked(FileName(row->source));
}

double FrameSeconds(const check::ProjectReport& report) {
  if (!report.videoSettings || report.videoSettings->frameDuration.scale == 0) return 0.0;
  const VRXTimeInfo& frame = report.videoSettings->frameDuration;
  return static_cast<double>(frame.value) / static_cast<double>(frame.scale);
}

std::string LineOf(const EngineSpan& span, double frameSeconds, const check::ProjectReport& report) {
  const std::int64_t end = span.firstFrame + span.frames;
  std::array<char, 128> places{};
  std::snprintf(places.data(), places.size(), "frames %lld to %lld, %.3f s to %.3f s",
                static_cast<long long>(span.firstFrame), static_cast<long long>(end - 1),
                static_cast<double>(span.firstFrame) * frameSeconds, static_cast<double>(end) * frameSeconds);
  std::string line = "  " + std::string(places.data()) + ": " + WayText(span);
  if (const std::string name = ClipName(span, report); !name.empty()) line += " (" + name + ")";
  return line + "\n";
}

struct Sum {
  std::string way;
  std::uint64_t spans = 0;
  std::int64_t frames = 0;
};

std::string SumLines(const EngineSpans& spans) {
  std::vector<Sum> sums;
  for (const EngineSpan& span : spans.GetSpans()) {
    if (span.track != VRXVideoTrack) continue;
    const std::string way = WayText(span);
    auto sum = std::ranges::find(sums, way, &Sum::way);
    if (sum == sums.end()) sum = sums.insert(sums.end(), {.way = way});
    ++sum->spans;
    sum->frames += span.frames;
  }
  std::ranges::stable_sort(sums, std::ranges::greater(), &Sum::frames);
  const auto line = [](std::uint64_t count, const std::string& rest) {
    return "  " + std::to_string(count) + (count == 1 ? " span" : " spans") + rest + "\n";
  };
  std::string lines;
  for (std::size_t i = 0; i < std::min(sums.size(), kMostLines); ++i)
    lines += line(sums[i].spans, ", " + std::to_string(sums[i].frames) + " frames: " + sums[i].way);
  std::uint64_t rest = spans.GetLeftOut();
  for (std::size_t i = kMostLines; i < sums.size(); ++i) rest += sums[i].spans;
  if (rest > 0) lines += line(rest, " more");
  return lines;
}

Json SpanJson(const EngineSpan& span) {
  Json entry{{"track", span.track == VRXAudioTrack ? "audio" : "video"},
             {"copied", span.copied},
             {"firstFrame", span.firstFrame},
             {"frames", span.frames}};
  if (span.clip != 0) entry["clip"] = span.clip;
  if (!span.copied) entry["reason"] = span.reason;
  return entry;
}

}  // namespace

std::string ShareText(std::int64_t frames, std::int64_t ofFrames) {
  constexpr double kMost = 1000.0;  // thousandths
  double share =
      ofFrames > 0 ? std::round(kMost * static_cast<double>(frames) / static_cast<double>(ofFrames)) : 0.0;
  if (frames > 0) share = std::max(share, 1.0);
  if (frames < ofFrames) share = std::min(share, kMost - 1.0);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), share == kMost ? "%.0f %%" : "%.1f %%", share / 10.0);
  return text.data();
}

std::string PlanText(const EngineSpans& spans) {
  const std::int64_t copied = spans.GetCopiedFrames();
  const std::int64_t all = copied + spans.GetEncodedFrames();
  std::string text = std::to_string(copied) + " of " + std::to_string(all) + " frames (" +
                     ShareText(copied, all) + ") are copied";
  if (const EngineSpan* sound = spans.FindSound()) text += ", the sound is " + WayText(*sound);
  return text;
}

std::string SpanLines(const EngineSpans& spans, const check::ProjectReport& report) {
  const auto count = std::ranges::count(spans.GetSpans(), VRXVideoTrack, &EngineSpan::track);
  if (static_cast<std::size_t>(count) > kMostLines) return SumLines(spans);
  const double frameSeconds = FrameSeconds(report);
  std::string lines;
  for (const EngineSpan& span : spans.GetSpans()) {
    if (span.track == VRXVideoTrack) lines += LineOf(span, frameSeconds, report);
  }
  return lines;
}

void AddSpans(const EngineSpans& spans, Json& object) {
  object["copiedFrames"] = spans.GetCopiedFrames();
  object["encodedFrames"] = spans.GetEncodedFrames();
  object["spans"] = Json::array();
  for (const EngineSpan& span : spans.GetSpans()) object["spans"].push_back(SpanJson(span));
  if (spans.GetLeftOut() > 0) object["spansLeftOut"] = spans.GetLeftOut();
}

}  // namespace vrx::host
