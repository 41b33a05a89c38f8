#include "gps/speedlog/SpeedLogRecord.h"

#include <algorithm>
#include <cstddef>

#include "foundation/number/Saturate.h"

namespace vrx::gps {
namespace {

constexpr std::int64_t kBelowGraph = 45;  // pixels of the base line and the labels
constexpr std::int32_t kAboveCurve = 10;  // pixels that the fastest speed leaves free
constexpr std::uint32_t kMsPerSecond = 1000;

std::int32_t HeightOf(const SpeedSample& sample, double speedPerPixel) {
  if (!(sample.speed > 0) || !(speedPerPixel > 0)) return 0;
  return Saturate<std::int32_t>(sample.speed / speedPerPixel);
}

}  // namespace

const SpeedSample* SpeedLogRecord::FindSample(std::int64_t key) const {
  const auto found =
      std::lower_bound(samples.begin(), samples.end(), key,
                       [](const SpeedSample& sample, std::int64_t k) { return sample.key < k; });
  return found != samples.end() && found->key == key ? &*found : nullptr;
}

std::int32_t SpeedGraphHeight(std::int32_t height) { return drawing::Saturated(height - kBelowGraph); }

void FillSpeedSamples(const KVUGPSInfoList& list, SpeedLogRecord& record) {
  record = {};
  for (std::size_t i = 0; i < list.size(); ++i) {
    const KVUGPSInfo& point = list[i];
    if (point.kind == GPSPointBeforeFix || point.kind == GPSPointAfterFix) continue;
    record.samples.push_back({.key = static_cast<std::uint32_t>(i),
                              .speed = point.speed,
                              .valid = point.status != 0 || point.kind == GPSPointHeld});
  }
  if (record.samples.empty()) return;
  record.firstMs = record.samples.front().key * kMsPerSecond;
  record.lastMs = record.samples.back().key * kMsPerSecond;
}

void LayoutSpeedRecord(drawing::Size size, std::int32_t viewSeconds, bool isWhole, double startMs,
                       double endMs, double& accumulatedMs, SpeedLogRecord& record) {
  record.startMs = accumulatedMs;
  record.endMs = accumulatedMs = endMs - startMs + accumulatedMs;
  record.points.clear();
  if (!record.samples.empty()) {
    record.maxSpeed = -1.0;
    for (const SpeedSample& sample : record.samples) {
      if (sample.valid) record.maxSpeed = std::max(record.maxSpeed, sample.speed);
    }
  }
  const std::int64_t room = std::int64_t{SpeedGraphHeight(size.height)} - kAboveCurve;
  record.speedPerPixel = room > 0 ? record.maxSpeed / static_cast<double>(room) : 0.0;
  record.pixelsPerSecond =
      size.width > 0 && viewSeconds > 0 ? static_cast<double>(size.width) / viewSeconds : 0.0;
  for (std::size_t n = 0; n < record.samples.size(); ++n) {
    const auto second = static_cast<double>(n);
    if (!isWhole && !(startMs / kMsPerSecond <= second && second <= endMs / kMsPerSecond)) continue;
    const SpeedSample& sample = record.samples[n];
    const auto number = static_cast<double>(record.points.size());
    record.points.push_back({.x = Saturate<std::int32_t>(number * record.pixelsPerSecond),
                             .y = HeightOf(sample, record.speedPerPixel),
                             .valid = sample.valid});
  }
}

}  // namespace vrx::gps
