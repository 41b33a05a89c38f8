#include "engine/SpanReport.h"

#include <mutex>

namespace vrx::engine {
namespace {

struct Listener {
  std::mutex lock;
  VRXSpanFunction function = nullptr;  // guarded
  void* context = nullptr;             // guarded
};

Listener& TheListener() {
  static Listener listener;
  return listener;
}

}  // namespace

void SetSpanCallback(VRXSpanFunction spans, void* context) {
  Listener& listener = TheListener();
  const std::scoped_lock lock(listener.lock);
  listener.function = spans;
  listener.context = context;
}

void ReportSpan(const VRXRenderSpan& span) {
  Listener& listener = TheListener();
  const std::scoped_lock lock(listener.lock);
  if (listener.function != nullptr) listener.function(listener.context, span);
}

}  // namespace vrx::engine
