#include "engine/EngineExports.h"

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "engine/CopyConditions.h"
#include "engine/EngineLog.h"
#include "engine/EngineResult.h"
#include "engine/OverlaySequence.h"
#include "engine/RenderOverrides.h"
#include "engine/RenderSummary.h"
#include "engine/Sequence.h"
#include "engine/SourceProbe.h"
#include "engine/SpanReport.h"
#include "engine/StillFrame.h"

namespace vrx::engine {
namespace {

struct Engine {
  std::mutex lock;
  std::vector<std::unique_ptr<RenderSequence>> sequences;  // guarded
};

/// The engines that exist, so that foreign and stale handles are recognised.
struct EngineList {
  std::mutex lock;
  std::vector<std::shared_ptr<Engine>> engines;  // guarded
};

EngineList& TheEngines() {
  static EngineList list;
  return list;
}

std::shared_ptr<Engine> FindEngine(VRXHandle handle) {
  EngineList& list = TheEngines();
  const std::scoped_lock guard(list.lock);
  const auto found = std::find_if(list.engines.begin(), list.engines.end(),
                                  [&](const auto& engine) { return engine.get() == handle; });
  return found == list.engines.end() ? nullptr : *found;
}

/// No exception may leave the module.
template <typename Action>
Result Guarded(const char* function, Action action) {
  // FFmpeg would write to the host's terminal; causes go through the engine's log instead.
  av_log_set_level(AV_LOG_QUIET);
  try {
    return action();
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  } catch (const std::exception& failure) {
    Log(VRXLogError, std::string(function) + " failed: " + failure.what());
  } catch (...) {
    Log(VRXLogError, std::string(function) + " failed");
  }
  return kFailed;
}

Result CreateEngine(VRXHandle* handle) {
  auto engine = std::make_shared<Engine>();
  EngineList& list = TheEngines();
  const std::scoped_lock guard(list.lock);
  list.engines.push_back(engine);
  *handle = engine.get();
  return kOk;
}

Result ReleaseEngine(VRXHandle* handle) {
  const std::shared_ptr<Engine> engine = FindEngine(*handle);
  if (engine == nullptr) return kInvalidArgument;
  EngineList& list = TheEngines();
  {
    const std::scoped_lock guard(list.lock);
    std::erase(list.engines, engine);
  }
  const std::scoped_lock guard(engine->lock);
  engine->sequences.clear();
  *handle = nullptr;
  return kOk;
}

Result CreateSequence(VRXHandle handle, const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                      IVRXSequence** sequence) {
  const std::shared_ptr<Engine> engine = FindEngine(handle);
  if (engine == nullptr) return kInvalidArgument;
  const RenderOverrides overrides = CurrentRenderOverrides();
  const auto create = overrides.overlaysAlone ? &OverlaySequence::Create : &Sequence::Create;
  std::unique_ptr<RenderSequence> made;
  VRX_TRY(create(timeline, output, overrides, made));
  const std::scoped_lock guard(engine->lock);
  *sequence = engine->sequences.emplace_back(std::move(made)).get();
  return kOk;
}

Result ReleaseSequence(VRXHandle handle, IVRXSequence** sequence) {
  const std::shared_ptr<Engine> engine = FindEngine(handle);
  if (engine == nullptr) return kInvalidArgument;
  std::unique_ptr<RenderSequence> released;
  {
    const std::scoped_lock guard(engine->lock);
    auto& all = engine->sequences;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.get() == *sequence; });
    if (found == all.end()) return kInvalidArgument;
    released = std::move(*found);
    all.erase(found);
  }
  *sequence = nullptr;
  return kOk;
}

}  // namespace
}  // namespace vrx::engine

namespace engine = vrx::engine;

std::int32_t VRX_CreateVRX(VRXHandle* handle) {
  if (handle == nullptr) return engine::kInvalidArgument;
  return engine::Guarded("VRX_CreateVRX", [&] { return engine::CreateEngine(handle); });
}

std::int32_t VRX_ReleaseVRX(VRXHandle* handle) {
  if (handle == nullptr || *handle == nullptr) return engine::kInvalidArgument;
  return engine::Guarded("VRX_ReleaseVRX", [&] { return engine::ReleaseEngine(handle); });
}

std::int32_t VRX_CreateSequence(VRXHandle handle, VRXTimeline* timeline, VRXSystemOutputSetting* output,
                                IVRXSequence** sequence) {
  if (handle == nullptr || timeline == nullptr || output == nullptr || sequence == nullptr) {
    return engine::kInvalidArgument;
  }
  *sequence = nullptr;
  return engine::Guarded("VRX_CreateSequence",
                         [&] { return engine::CreateSequence(handle, *timeline, *output, sequence); });
}

std::int32_t VRX_ReleaseSequence(VRXHandle handle, IVRXSequence** sequence) {
  if (handle == nullptr || sequence == nullptr || *sequence == nullptr) return engine::kInvalidArgument;
  return engine::Guarded("VRX_ReleaseSequence", [&] { return engine::ReleaseSequence(handle, sequence); });
}

std::int32_t VRX_IsSmartRenderingCapable(VRXHandle handle, std::uint32_t codec, std::uint32_t specification) {
  if (engine::FindEngine(handle) == nullptr) return engine::kInvalidArgument;
  return engine::CanCopyInto(codec, specification) ? engine::kOk : engine::kNotCapable;
}

std::int32_t VRX_SetSTPVSetting(VRXHandle handle, const void* data, std::uint32_t size) {
  if (engine::FindEngine(handle) == nullptr || data == nullptr || size == 0) return engine::kInvalidArgument;
  return engine::kOk;
}

void VRX_SetLogCallback(VRXLogFunction log, void* context) { engine::SetLogCallback(log, context); }

std::int32_t VRX_ProbeSource(const char16_t* path, VRXSourceProbe* probe) {
  if (path == nullptr || probe == nullptr) return engine::kInvalidArgument;
  return engine::Guarded("VRX_ProbeSource", [&] { return engine::ProbeSource(path, *probe); });
}

std::int32_t VRX_GetRenderSummary(VRXRenderSummary* summary) {
  if (summary == nullptr) return engine::kInvalidArgument;
  return engine::LastRenderSummary(*summary);
}

std::int32_t VRX_SetRenderOverrides(const VRXRenderOverrides* overrides) {
  return engine::Guarded("VRX_SetRenderOverrides", [&] { return engine::SetRenderOverrides(overrides); });
}

void VRX_SetSpanCallback(VRXSpanFunction spans, void* context) { engine::SetSpanCallback(spans, context); }

std::int32_t VRX_RenderFrame(VRXTimeline* timeline, VRXSystemOutputSetting* output, std::uint64_t frame,
                             void* buffer, std::uint32_t size) {
  if (timeline == nullptr || output == nullptr || buffer == nullptr) return engine::kInvalidArgument;
  const std::span pixels(static_cast<std::uint32_t*>(buffer), size / sizeof(std::uint32_t));
  return engine::Guarded("VRX_RenderFrame",
                         [&] { return engine::RenderStillFrame(*timeline, *output, frame, pixels); });
}
