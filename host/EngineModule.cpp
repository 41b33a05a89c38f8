#include "host/EngineModule.h"

#include <array>
#include <utility>

#include "foundation/text/XpPath.h"

namespace vrx::host {

EngineModule::~EngineModule() {
  if (const auto setLog = Find<VRX_SetLogCallbackFunction>("VRX_SetLogCallback")) setLog(nullptr, nullptr);
  platform::UnloadModule(m_module);
}

bool EngineModule::Load(std::string& cause) {
  constexpr std::array kFunctions{"VRX_CreateVRX",
                                  "VRX_ReleaseVRX",
                                  "VRX_CreateSequence",
                                  "VRX_ReleaseSequence",
                                  "VRX_IsSmartRenderingCapable",
                                  "VRX_SetSTPVSetting"};
  const XpString path = XpPathJoin(XpPathDirectory(platform::ExecutablePath()), u"VRXEngine.dll");
  m_module = platform::LoadModule(path, &cause);
  if (m_module == nullptr) {
    cause = "the conversion engine VRXEngine.so cannot be loaded from beside this program: " + cause;
    return false;
  }
  for (const char* function : kFunctions) {
    if (platform::FindSymbol(m_module, function) != nullptr) continue;
    cause = std::string("the conversion engine VRXEngine.so lacks the function ") + function;
    return false;
  }
  return true;
}

void EngineModule::Listen(std::function<void(const EngineLine&)> listener) {
  m_listener = std::move(listener);
  if (const auto setLog = Find<VRX_SetLogCallbackFunction>("VRX_SetLogCallback")) setLog(&OnLine, this);
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

check::SourceFacts EngineModule::Probe(const XpString& path) const {
  check::SourceFacts facts;
  const auto probe = Find<VRX_ProbeSourceFunction>("VRX_ProbeSource");
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
  facts.videoSeconds = found.videoSeconds;
  facts.audioSeconds = found.audioSeconds;
  return facts;
}

std::int32_t EngineModule::Try(VRXTimeline& timeline, VRXSystemOutputSetting& output) const {
  VRXHandle engine = nullptr;
  std::int32_t result = Find<VRX_CreateVRXFunction>("VRX_CreateVRX")(&engine);
  if (result != VRXEngineOk) return result;
  IVRXSequence* sequence = nullptr;
  result = Find<VRX_CreateSequenceFunction>("VRX_CreateSequence")(engine, &timeline, &output, &sequence);
  if (result == VRXEngineOk) Find<VRX_ReleaseSequenceFunction>("VRX_ReleaseSequence")(engine, &sequence);
  Find<VRX_ReleaseVRXFunction>("VRX_ReleaseVRX")(&engine);
  return result;
}

bool EngineModule::RenderFrame(VRXTimeline& timeline, VRXSystemOutputSetting& output, std::int64_t number,
                               std::span<std::uint32_t> pixels) const {
  const auto render = Find<VRX_RenderFrameFunction>("VRX_RenderFrame");
  const auto bytes = static_cast<std::uint32_t>(pixels.size_bytes());
  return render != nullptr &&
         render(&timeline, &output, static_cast<std::uint64_t>(number), pixels.data(), bytes) == VRXEngineOk;
}

}  // namespace vrx::host
