#include "tests/src/ScriptedEngine.h"

#include <algorithm>
#include <stdexcept>

namespace {

EngineScript g_script{
#ifdef SCRIPTED_ENGINE_FRAMES
    .slices = {{.processed = 100, .ends = true}},
#endif
};

class ScriptedSequence final : public IVRXSequence {
 public:
  std::int32_t Execute(VRXProgressInfo* progress, bool* endFlag) override {
    const std::size_t index = std::min(m_next++, g_script.slices.size() - 1);
    if (g_script.onSlice) g_script.onSlice(index);
    const ScriptedSlice& slice = g_script.slices[index];
    g_script.Note("Execute");
    if (slice.throws) throw std::runtime_error("scripted");
    progress->processed = slice.processed;
    progress->total = slice.total;
    if (slice.ends) std::atomic_ref<bool>(*endFlag).store(true);
    return slice.result;
  }

 private:
  std::size_t m_next = 0;
};

}  // namespace

extern "C" {

__attribute__((visibility("default"))) EngineScript* GetEngineScript() { return &g_script; }

__attribute__((visibility("default"))) std::int32_t VRX_CreateVRX(VRXHandle* engine) {
  g_script.Note("CreateVRX");
  if (g_script.createEngine == 0) {
    *engine = &g_script;
    ++g_script.liveEngines;
  }
  return g_script.createEngine;
}

__attribute__((visibility("default"))) std::int32_t VRX_ReleaseVRX(VRXHandle* engine) {
  g_script.Note("ReleaseVRX");
  --g_script.liveEngines;
  *engine = nullptr;
  return 0;
}

__attribute__((visibility("default"))) std::int32_t VRX_CreateSequence(VRXHandle, VRXTimeline* timeline,
                                                                       VRXSystemOutputSetting* output,
                                                                       IVRXSequence** sequence) {
  g_script.Note("CreateSequence");
  g_script.timeline = timeline;
  g_script.output = output;
  if (g_script.createSequence == 0) {
    *sequence = new ScriptedSequence;
    ++g_script.liveSequences;
  }
  return g_script.createSequence;
}

__attribute__((visibility("default"))) std::int32_t VRX_ReleaseSequence(VRXHandle, IVRXSequence** sequence) {
  g_script.Note("ReleaseSequence");
  --g_script.liveSequences;
  delete static_cast<ScriptedSequence*>(*sequence);
  *sequence = nullptr;
  return g_script.releaseSequence;
}

__attribute__((visibility("default"))) std::int32_t VRX_IsSmartRenderingCapable(VRXHandle,
                                                                                std::uint32_t first,
                                                                                std::uint32_t second) {
  g_script.Note("IsSmartRenderingCapable " + std::to_string(first) + " " + std::to_string(second));
  return g_script.smartRendering;
}

#ifndef SCRIPTED_ENGINE_LACKS_STPV
__attribute__((visibility("default"))) std::int32_t VRX_SetSTPVSetting(VRXHandle, const void* data,
                                                                       std::uint32_t size) {
  g_script.Note("SetSTPVSetting");
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  g_script.gpuBlocks.emplace_back(bytes, bytes + size);
  return 0;
}
#endif

#ifdef SCRIPTED_ENGINE_FRAMES
/// Such an engine ends at once and says that its movie has that many frames.
__attribute__((visibility("default"))) std::int32_t VRX_GetRenderSummary(VRXRenderSummary* summary) {
  *summary = {.frames = SCRIPTED_ENGINE_FRAMES};
  return 0;
}
#endif

}  // extern "C"
