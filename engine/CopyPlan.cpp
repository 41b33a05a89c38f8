#include "engine/CopyPlan.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace vrx::engine {
namespace {

constexpr std::int64_t kDeepestReordering = 16;  // frames; the most that the standards allow

/// The first frame from `from` on whose tick is not before `ticks`; frameCount when there is none. Searches
/// in growing steps, since the next is usually near.
std::int64_t FirstFrameAt(std::int64_t ticks, std::int64_t from, const ClipToCopy& clip) {
  std::int64_t before = from - 1;  // known to be before `ticks`
  std::int64_t step = 1;
  std::int64_t after = from;
  while (after < clip.frameCount && clip.tickOfFrame(after) < ticks) {
    before = after;
    after = step < clip.frameCount - after ? after + step : clip.frameCount;
    step *= 2;
  }
  while (after - before > 1) {
    const std::int64_t middle = before + (after - before) / 2;
    (clip.tickOfFrame(middle) < ticks ? before : after) = middle;
  }
  return after;
}

bool IsChanged(std::int64_t frame, const ClipToCopy& clip) {
  const auto after =
      std::upper_bound(clip.changed.begin(), clip.changed.end(), frame,
                       [](std::int64_t number, const FrameInterval& one) { return number < one.first; });
  return after != clip.changed.begin() && frame < std::prev(after)->end;
}

/// Follows the pictures from a start on, and remembers the last place at which it could end.
class RunFinder {
 public:
  RunFinder(const PacketIndex& index, std::span<const std::int64_t> frames, const ClipToCopy& clip)
      : m_pictures(index.pictures), m_frames(frames), m_clip(clip) {}

  /// The longest run that begins with picture `start`, and the place after its last picture.
  std::optional<CopyRun> Find(std::size_t start, std::size_t& end) {
    m_run = {};
    m_clean = {};
    m_run.firstFrame = m_last = m_frames[start];
    if (!CanTake(start)) return std::nullopt;
    Take(start);
    std::size_t at = start + 1;
    if (m_clip.startsAtOpenGroups) {
      while (at < m_pictures.size() && m_pictures[at].ticks < m_pictures[start].ticks) ++at;
    }
    end = at;
    for (;; ++at) {
      if (m_last - m_run.firstFrame + 1 == Count()) {
        m_clean = {m_run.pictures.size(), m_run.delay};
        end = at;
      }
      if (at >= m_pictures.size() || !CanTake(at) || IsTooDeep(at)) break;
      Take(at);
    }
    m_run.pictures.resize(m_clean.pictures);
    m_run.delay = m_clean.delay;
    if (m_run.pictures.empty()) return std::nullopt;
    return std::move(m_run);
  }

 private:
  struct Clean {
    std::size_t pictures = 0;
    std::int64_t delay = 0;
  };

  std::int64_t Count() const { return static_cast<std::int64_t>(m_run.pictures.size()); }

  bool CanTake(std::size_t at) const {
    const std::int64_t frame = m_frames[at];
    return frame >= m_run.firstFrame && !IsChanged(frame, m_clip);
  }

  /// A gap that has not closed by now will not close.
  bool IsTooDeep(std::size_t at) const {
    return m_frames[at] - m_run.firstFrame - Count() > kDeepestReordering ||
           m_last - m_run.firstFrame - Count() > kDeepestReordering;
  }

  void Take(std::size_t at) {
    const std::int64_t frame = m_frames[at];
    const bool followsAll =
        frame == m_run.firstFrame + Count() && (m_run.pictures.empty() || m_last == frame - 1);
    if (m_pictures[at].isStart && followsAll) m_run.starts.push_back(frame);
    m_run.delay = std::max(m_run.delay, m_run.firstFrame + Count() - frame);
    m_run.pictures.push_back({m_pictures[at].ticks, frame});
    m_last = std::max(m_last, frame);
  }

  const std::vector<CodedPicture>& m_pictures;
  const std::span<const std::int64_t> m_frames;
  const ClipToCopy& m_clip;
  CopyRun m_run;
  Clean m_clean;
  std::int64_t m_last = 0;  // the latest frame taken
};

}  // namespace

std::vector<std::int64_t> FramesOfPictures(const PacketIndex& index, const ClipToCopy& clip) {
  const std::vector<CodedPicture>& pictures = index.pictures;
  std::vector<std::size_t> shown(pictures.size());  // in the order of display
  std::iota(shown.begin(), shown.end(), std::size_t{0});
  std::ranges::stable_sort(shown, {}, [&](std::size_t at) { return pictures[at].ticks; });
  std::vector<std::int64_t> frames(pictures.size(), kNoFrame);
  std::int64_t frame = shown.empty() ? 0 : FirstFrameAt(pictures[shown[0]].ticks, 0, clip);
  // Before its first picture a source shows that one.
  bool isShownBefore = index.isFromBeginning && frame > 0;
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const bool isLast = i + 1 == shown.size();
    const std::int64_t next =
        isLast ? clip.frameCount : FirstFrameAt(pictures[shown[i + 1]].ticks, frame, clip);
    const CodedPicture& picture = pictures[shown[i]];
    const bool isOnlyOne = (i == 0 || pictures[shown[i - 1]].ticks != picture.ticks) &&
                           (isLast || pictures[shown[i + 1]].ticks != picture.ticks);
    if (next == frame + 1 && !isShownBefore && isOnlyOne && picture.isWhole) frames[shown[i]] = frame;
    isShownBefore = false;
    frame = next;
  }
  return frames;
}

std::vector<CopyRun> FindCopyRuns(const PacketIndex& index, std::span<const std::int64_t> frames,
                                  const ClipToCopy& clip) {
  std::vector<CopyRun> runs;
  RunFinder finder(index, frames, clip);
  for (std::size_t at = 0; at < index.pictures.size();) {
    std::size_t end = at + 1;
    if (index.pictures[at].isStart && frames[at] != kNoFrame) {
      std::optional<CopyRun> run = finder.Find(at, end);
      const auto count = run ? static_cast<std::int64_t>(run->pictures.size()) : 0;
      if (count >= clip.leastFrames || (count > 0 && count == clip.frameCount)) {
        runs.push_back(std::move(*run));
      } else {
        end = at + 1;
      }
    }
    at = end;
  }
  return runs;
}

}  // namespace vrx::engine
