#include "src/overlayplan/CaptionTimes.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"
#include "src/timeline/FrameClock.h"

namespace vrx::overlayplan {
namespace {

using timeline::kMillisecondsPerSecond;

constexpr std::int64_t kFarMs = std::int64_t{1} << 48;  // no movie is longer; sums of two never overflow
constexpr std::int64_t kNearFrames = 2;

std::int64_t Milliseconds(double value) { return std::clamp(Saturate<std::int64_t>(value), -kFarMs, kFarMs); }

/// A stretch of the material in milliseconds. `end` comes after `start` by its length in the movie times its
/// speed.
struct Stretch {
  std::int64_t start;
  std::int64_t end;
  double speed;

  Stretch(const SlowInfoRecord& record, double factor)
      : start(Milliseconds(static_cast<double>(record.startTime) * kMillisecondsPerSecond)),
        end(start -
            Milliseconds((static_cast<double>(record.endTime) - static_cast<double>(record.startTime)) *
                         -kMillisecondsPerSecond * factor)),
        speed(factor) {}

  std::int64_t Length() const { return end - start; }
  /// In the movie; a stretch without speed takes no time.
  double MovieLength() const { return speed == 0.0 ? 0.0 : static_cast<double>(Length()) / speed; }
  bool Holds(std::int64_t time) const { return start <= time && time <= end; }
  /// The movie's time of a moment inside.
  std::int64_t Map(std::int64_t time) const {
    return Milliseconds(static_cast<double>(start) + static_cast<double>(time - start) / speed);
  }
};

/// A caption on its way through the sections.
struct Span {
  std::int64_t start;
  std::int64_t end;

  void Move(std::int64_t by) {
    start = Milliseconds(static_cast<double>(start + by));
    end = Milliseconds(static_cast<double>(end + by));
  }
};

/// Forwards, backwards and forwards again over the same material: it lasts longer as a whole.
void ApplyGroup(const Stretch& before, const Stretch& reverse, const Stretch& after, Span& span) {
  const std::int64_t length =
      Milliseconds(before.MovieLength() + reverse.MovieLength() + after.MovieLength());
  const std::int64_t longer = length - before.Length();
  if (span.start <= before.start && span.end >= before.end) {
    span.end = Milliseconds(static_cast<double>(span.end + longer));
  } else if (span.start >= before.end) {
    span.Move(longer);
  }
}

/// False when later sections cannot change the caption any more.
bool ApplyStretch(const Stretch& stretch, Span& span) {
  const auto real = [](std::int64_t value) { return static_cast<double>(value); };
  const double v = stretch.speed;
  const bool holdsStart = stretch.Holds(span.start);
  const bool holdsEnd = stretch.Holds(span.end);
  if (holdsStart && holdsEnd) {
    span = {stretch.Map(span.start), stretch.Map(span.end)};
    return false;
  }
  if (holdsStart) {
    const std::int64_t start = stretch.Map(span.start);
    span.end = Milliseconds(real(start) + real(stretch.end - span.start) / v + real(span.end - stretch.end));
    span.start = start;
  } else if (holdsEnd) {
    span.end = stretch.Map(span.end);
    return false;
  } else if (span.start <= stretch.start && span.end > stretch.end) {
    span.end = Milliseconds(real(stretch.Length()) / v + real(span.start) +
                            real(span.end - stretch.Length() - span.start));
  } else if (span.start >= stretch.end) {
    span.Move(-Milliseconds(real(stretch.Length()) - real(stretch.Length()) / v));
  }
  return true;
}

/// The ends of clips, each once, in rising order, with the place of the first clip that has it.
class ClipEnds {
 public:
  explicit ClipEnds(std::span<const std::pair<std::int64_t, std::int64_t>> ranges) {
    for (std::size_t i = 0; i < ranges.size(); ++i) m_ends.emplace_back(ranges[i].second, i);
    std::sort(m_ends.begin(), m_ends.end());
    const auto sameEnd = [](const auto& a, const auto& b) { return a.first == b.first; };
    m_ends.erase(std::unique(m_ends.begin(), m_ends.end(), sameEnd), m_ends.end());
  }

  /// The end within `distance` of `time` whose clip comes first; false when there is none.
  bool FindNear(std::int64_t time, double distance, std::int64_t& end) const {
    const double low = static_cast<double>(time) - distance;
    auto it = std::lower_bound(m_ends.begin(), m_ends.end(), low, [](const auto& entry, double bound) {
      return static_cast<double>(entry.first) < bound;
    });
    std::size_t first = m_ends.size() + 1;
    bool found = false;
    for (; it != m_ends.end() && static_cast<double>(it->first) - static_cast<double>(time) <= distance;
         ++it) {
      if (found && it->second > first) continue;
      first = it->second;
      end = it->first;
      found = true;
    }
    return found;
  }

 private:
  std::vector<std::pair<std::int64_t, std::size_t>> m_ends;
};

/// Aligns captions to frames; all arithmetic in doubles, as times of frames are everywhere.
class CaptionAligner {
 public:
  explicit CaptionAligner(const CaptionTimeContext& context)
      : m_clock(context.frame),
        m_value(static_cast<double>(context.frame.value)),
        m_scale(static_cast<double>(context.frame.scale)),
        m_drawStartMs(context.drawStartSeconds * kMillisecondsPerSecond),
        m_ends(context.clipRanges) {}

  /// Closes a gap of at most two frames between a caption and the one before it.
  void CloseGap(const CaptionItem& before, CaptionItem& caption) const {
    const double previous = std::ceil(m_clock.FramesIn(before.endMs)) * m_value;
    const double gap = std::floor(m_clock.FramesIn(caption.startMs)) * m_value - previous;
    if (gap >= 0.0 && gap <= kNearFrames * m_value) caption.startMs = OneFrameBefore(previous);
  }

  /// A caption that ends near a clip's end ends one frame before it.
  void FitToClipEnd(CaptionItem& caption) const {
    std::int64_t end = 0;
    const auto time = m_clock.TimeOf(m_clock.FramesIn(caption.endMs));
    if (m_ends.FindNear(time, kNearFrames * m_value, end))
      caption.endMs = OneFrameBefore(static_cast<double>(end));
  }

  void MoveToDrawStart(CaptionItem& caption) const {
    caption.startMs = Saturate<std::int32_t>(m_drawStartMs + caption.startMs);
    caption.endMs = Saturate<std::int32_t>(m_drawStartMs + caption.endMs);
  }

 private:
  std::int32_t OneFrameBefore(double frameTime) const {
    return Saturate<std::int32_t>((frameTime - m_value) * kMillisecondsPerSecond / m_scale);
  }

  timeline::FrameClock m_clock;
  double m_value;
  double m_scale;
  double m_drawStartMs;
  ClipEnds m_ends;
};

}  // namespace

void ApplySpeedSections(std::span<const SlowInfoRecord> sections, CaptionItem& caption) {
  Span span{caption.startMs, caption.endMs};
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const SlowInfoRecord& record = sections[i];
    if (i + 2 < sections.size() && sections[i + 1].speed < 0) {
      ApplyGroup({record, record.speed}, {sections[i + 1], -static_cast<double>(sections[i + 1].speed)},
                 {sections[i + 2], sections[i + 2].speed}, span);
      i += 2;
      continue;
    }
    if (record.speed == 1.0f || record.speed == 0.0f) continue;
    const double speed = record.speed;
    const bool isLast = i + 1 == sections.size();
    if (!ApplyStretch({record, isLast ? std::abs(speed) : speed}, span)) break;
  }
  caption.startMs = Saturate<std::int32_t>(static_cast<double>(span.start));
  caption.endMs = Saturate<std::int32_t>(static_cast<double>(span.end));
}

void PrepareCaptions(const CaptionTimeContext& context, std::span<const SlowInfoRecord> sections,
                     std::span<CaptionItem> captions) {
  for (CaptionItem& caption : captions) ApplySpeedSections(sections, caption);
  const CaptionAligner aligner(context);
  for (std::size_t i = 0; i < captions.size(); ++i) {
    if (i > 0) aligner.CloseGap(captions[i - 1], captions[i]);
    aligner.FitToClipEnd(captions[i]);
    aligner.MoveToDrawStart(captions[i]);
  }
}

}  // namespace vrx::overlayplan
