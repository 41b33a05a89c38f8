#include "engine/RenderSummary.h"

#include <mutex>
#include <optional>

namespace vrx::engine {
namespace {

struct KeptSummary {
  std::mutex lock;
  std::optional<VRXRenderSummary> summary;  // guarded
};

KeptSummary& TheKeptSummary() {
  static KeptSummary kept;
  return kept;
}

}  // namespace

void KeepRenderSummary(const VRXRenderSummary& summary) {
  KeptSummary& kept = TheKeptSummary();
  const std::scoped_lock lock(kept.lock);
  kept.summary = summary;
}

Result LastRenderSummary(VRXRenderSummary& summary) {
  KeptSummary& kept = TheKeptSummary();
  const std::scoped_lock lock(kept.lock);
  if (!kept.summary) return kFailed;
  summary = *kept.summary;
  return kOk;
}

}  // namespace vrx::engine
