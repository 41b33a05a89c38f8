#include "engine/RenderSummary.h"

#include <mutex>
#include <optional>

namespace vrx::engine {
namespace {

struct Kept {
  std::mutex lock;
  std::optional<VRXRenderSummary> summary;  // guarded
};

Kept& TheKept() {
  static Kept kept;
  return kept;
}

}  // namespace

void KeepRenderSummary(const VRXRenderSummary& summary) {
  Kept& kept = TheKept();
  const std::scoped_lock lock(kept.lock);
  kept.summary = summary;
}

Result LastRenderSummary(VRXRenderSummary& summary) {
  Kept& kept = TheKept();
  const std::scoped_lock lock(kept.lock);
  if (!kept.summary) return kFailed;
  summary = *kept.summary;
  return kOk;
}

}  // namespace vrx::engine
