#include "host/EngineModule.h"

#include <atomic>
#include <utility>

#include "src/manager/ProgressFilter.h"

namespace vrx::host {

EngineModule::~EngineModule() {
  SetSpanCallback(nullptr);
  SetLogCallback(nullptr);
}

bool EngineModule::Load(std::string& cause) { return m_library.Bind(&cause); }

void EngineModule::SetLogCallback(VRXLogFunction log) {
  const auto set = m_library.Find<VRX_SetLogCallbackFunction>("VRX_SetLogCallback");
  if (set != nullptr) set(log, this);
}

void EngineModule::SetSpanCallback(VRXSpanFunction spans) {
  const auto set = m_library.Find<VRX_SetSpanCallbackFunction>("VRX_SetSpanCallback");
  if (set != nullptr) set(spans, this);
}

void EngineModule::Listen(std::function<void(const EngineLine&)> listener) {
  m_listener = std::move(listener);
  SetLogCallback(&OnLine);
}

void EngineModule::OnLine(void* context, const VRXLogEntry& entry) {
  auto& self = *static_cast<EngineModule*>(context);
  const EngineLine engineLine{entry.severity, entry.track, entry.clip, entry.text};
  {
    const std::scoped_lock lock(self.m_mutex);
    self.m_lines.push_back(engineLine);
  }
  if (self.m_listener) self.m_listener(engineLine);
}

std::vector<EngineLine> EngineModule::TakeLines() {
  const std::scoped_lock lock(m_mutex);
  return std::exchange(m_lines, {});
}

void EngineModule::KeepSpans() { SetSpanCallback(&OnSpan); }

void EngineModule::OnSpan(void* context, const VRXRenderSpan& span) {
  auto& self = *static_cast<EngineModule*>(context);
  const std::scoped_lock lock(self.m_mutex);
  self.m_spans.Add(span);
}

EngineSpans EngineModule::TakeSpans() {
  const std::scoped_lock lock(m_mutex);
  return std::exchange(m_spans, {});
}

check::SourceFacts EngineModule::Probe(const XpString& path) const {
  check::SourceFacts facts;
  const auto probe = m_library.Find<VRX_ProbeSourceFunction>("VRX_ProbeSource");
  if (probe == nullptr) {
    facts.usable = facts.hasVideo = facts.hasAudio = true;  // an engine that cannot tell is asked later
    return facts;
  }
  VRXSourceProbe found;
  if (probe(path.c_str(), &found) != VRXEngineOk) {
    facts.cause = found.cause;
    return facts;
  }
  facts.usable = true;
  facts.hasVideo = found.hasVideo;
  facts.hasAudio = found.hasAudio;
  facts.dynamicRange = found.dynamicRange;
  facts.videoSeconds = found.videoSeconds;
  facts.audioSeconds = found.audioSeconds;
  facts.width = found.width;
  facts.height = found.height;
  facts.frameDuration = found.frameDuration;
  facts.sampleRate = found.sampleRate;
  return facts;
}

bool EngineModule::SetOverrides(const VRXRenderOverrides& overrides, std::string& cause) {
  const auto set = m_library.Find<VRX_SetRenderOverridesFunction>("VRX_SetRenderOverrides");
  if (set == nullptr) {
    cause = "the conversion engine beside this program knows no overrides (it lacks VRX_SetRenderOverrides)";
    return false;
  }
  TakeLines();
  if (set(&overrides) == VRXEngineOk) return true;
  cause = "the conversion engine refuses the overrides";
  for (const EngineLine& line : TakeLines()) cause = line.text;
  return false;
}

void EngineModule::DropOverrides() {
  const auto set = m_library.Find<VRX_SetRenderOverridesFunction>("VRX_SetRenderOverrides");
  if (set != nullptr) set(nullptr);
}

std::int32_t EngineModule::Try(VRXTimeline& timeline, VRXSystemOutputSetting& output) const {
  VRXHandle engine = nullptr;
  std::int32_t result = m_library.createVRX(&engine);
  if (result != VRXEngineOk) return result;
  IVRXSequence* sequence = nullptr;
  result = m_library.createSequence(engine, &timeline, &output, &sequence);
  if (result == VRXEngineOk) m_library.releaseSequence(engine, &sequence);
  m_library.releaseVRX(&engine);
  return result;
}

bool EngineModule::CanJoin(std::string& cause) const {
  if (m_library.Find<VRX_CreateJoinFunction>("VRX_CreateJoin") != nullptr) return true;
  cause = "the conversion engine beside this program joins no pieces (it lacks VRX_CreateJoin)";
  return false;
}

std::int32_t EngineModule::Join(const VRXPieces& pieces, bool& endFlag,
                                const std::function<void(std::uint32_t)>& onPercent) const {
  const auto create = m_library.Find<VRX_CreateJoinFunction>("VRX_CreateJoin");
  VRXHandle engine = nullptr;
  std::int32_t result = m_library.createVRX(&engine);
  if (result != VRXEngineOk) return result;
  IVRXSequence* sequence = nullptr;
  result = create(engine, &pieces, &sequence);
  if (result == VRXEngineOk) {
    VRXProgressInfo progress;
    while (result == VRXEngineOk && !std::atomic_ref<bool>(endFlag).load(std::memory_order_acquire)) {
      result = sequence->Execute(&progress, &endFlag);
      if (result == VRXEngineOk) onPercent(render::ProgressFilter::Percentage(progress));
    }
    // The movie gets its name here.
    const std::int32_t released = m_library.releaseSequence(engine, &sequence);
    if (result == VRXEngineOk) result = released;
  }
  m_library.releaseVRX(&engine);
  return result;
}

bool EngineModule::RenderFrame(VRXTimeline& timeline, VRXSystemOutputSetting& output, std::int64_t number,
                               std::span<std::uint32_t> pixels) const {
  const auto render = m_library.Find<VRX_RenderFrameFunction>("VRX_RenderFrame");
  const auto bytes = static_cast<std::uint32_t>(pixels.size_bytes());
  return render != nullptr &&
         render(&timeline, &output, static_cast<std::uint64_t>(number), pixels.data(), bytes) == VRXEngineOk;
}

bool EngineModule::GetSummary(VRXRenderSummary& summary) const {
  const auto get = m_library.Find<VRX_GetRenderSummaryFunction>("VRX_GetRenderSummary");
  return get != nullptr && get(&summary) == VRXEngineOk;
}

}  // namespace vrx::host
