#include "engine/RenderSequence.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <string>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr int kFramesPerSlice = 8;

}  // namespace

Result RenderSequence::CutToRange(OutputPlan& plan) {
  const std::int64_t movie = m_total;
  m_first = plan.firstFrame;
  m_total = plan.frameCount == 0 ? movie - m_first : plan.frameCount;
  if (m_total > 0 && m_total <= movie - m_first) {
    if (plan.piece) {
      plan.piece->firstFrame = m_first;
      plan.piece->frameCount = m_total;
    }
    return kOk;
  }
  Log(VRXLogError, "the frames from " + std::to_string(m_first) +
                       (plan.frameCount == 0 ? " on" : " to " + std::to_string(m_first + m_total - 1)) +
                       " are not in the movie, which has " + std::to_string(movie) + " frames, 0 to " +
                       std::to_string(movie - 1));
  return kUnusableSettings;
}

std::int32_t RenderSequence::Execute(VRXProgressInfo* progress, bool* endFlag) {
  if (progress == nullptr || endFlag == nullptr) return kInvalidArgument;
  m_stop.Watch(endFlag);
  if (m_failure == kOk) m_failure = Guarded();
  m_stop.Watch(nullptr);
  // The last frame counts only when the output is complete: a cancel may come before that.
  progress->processed = static_cast<std::uint64_t>(m_finished ? m_total : std::min(m_done, m_total - 1));
  progress->total = static_cast<std::uint64_t>(m_total);
  if (m_failure != kOk) {
    GiveUp();
  } else if (m_finished) {
    std::atomic_ref<bool>(*endFlag).store(true, std::memory_order_release);
  }
  return m_failure;
}

/// A cancel ends reads early; the failures that this causes are not reported.
Result RenderSequence::Guarded() {
  try {
    const Result result = DoSlice();
    return m_stop.IsSet() ? kOk : result;
  } catch (const std::bad_alloc&) {
    Log(VRXLogError, "out of memory");
    return kOutOfMemory;
  } catch (const std::exception& failure) {
    Log(VRXLogError, std::string("the render failed: ") + failure.what());
  } catch (...) {
    Log(VRXLogError, "the render failed: a callback threw");
  }
  return kFailed;
}

Result RenderSequence::DoSlice() {
  if (m_finished) return kOk;
  const auto end = std::chrono::steady_clock::now() + kSliceLength;
  for (int frames = 0; frames < kFramesPerSlice && m_done < m_total; ++frames) {
    if (m_stop.IsSet() || std::chrono::steady_clock::now() >= end) return kOk;
    const std::int64_t before = m_done;
    VRX_TRY(RenderNext());
    if (m_done == before) return kOk;
  }
  return m_done == m_total && !m_stop.IsSet() ? Finish() : kOk;
}

}  // namespace vrx::engine
