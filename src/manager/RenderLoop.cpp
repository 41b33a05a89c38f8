#include <cstdint>

#include "foundation/platform/Module.h"
#include "foundation/text/XpFormat.h"
#include "src/gpu/GPUChecker.h"
#include "src/log/RenderLog.h"
#include "src/manager/ProgressFilter.h"
#include "src/manager/VRXWrapperManager.h"

namespace {

using vrx::render::LogLine;

constexpr char16_t kRender[] = u"renderToFile";

/// The code that the host hears for a result of the engine.
std::uint32_t HostCode(std::int32_t engineResult) {
  switch (static_cast<std::uint32_t>(engineResult)) {
    case VRXEngineDiskFull:
      return XpErrDiskFull;
    case VRXEngineSourceMissing:
      return XpErrNoSuchFile;
    default:
      return XpErrNoObject;
  }
}

void LogResult(const char16_t* format, std::int32_t result, std::int32_t sourceLine = __builtin_LINE()) {
  XpString line;
  line.Format(format, result);
  LogLine(kRender, line, sourceLine);
}

}  // namespace

std::uint32_t VRXWrapperManager::renderToFile() {
  LogLine(kRender, u"VRXWrapperManager::renderToFile start");
  if (IVRXWrapperCallback* callback = m_pCallback) callback->OnRenderStart();
  std::uint32_t hostError = XpOk;
  std::uint32_t exitCode = XpErrFailed;
  try {
    hostError = RenderThroughEngine();
  } catch (...) {
    // Engine and callbacks are foreign code: whatever they throw ends the render, not the host.
    AbandonSequence();
    hostError = XpErrNoObject;
    if (m_pCallback == nullptr) exitCode = XpOk;
  }
  IVRXWrapperCallback* callback = m_pCallback;
  if (hostError != XpOk) {
    if (callback != nullptr) callback->OnRenderError(hostError);
    return exitCode;
  }
  LogLine(kRender, u"VRXWrapperManager::renderToFile end.");
  if (callback != nullptr) callback->OnRenderEnd();
  return XpOk;
}

std::uint32_t VRXWrapperManager::RenderThroughEngine() {
  if (!m_bProjectUsable) return XpErrNoObject;
  if (const std::int32_t result = EnsureEngine(kRender); result != VRXEngineOk) return HostCode(result);
  if (m_bGpuSettingWanted) SendGpuSetting();
  const std::int32_t created =
      m_engine.createSequence(m_hEngine, m_pTimeline.get(), m_pSystemOutput.get(), &m_pSequence);
  XpString line;
  line.Format(u"FUNC_VRX_CreateSequence(%08x) - GetLastError=%08x", created, vrx::platform::LastError());
  LogLine(kRender, line);
  if (created != VRXEngineOk) return HostCode(created);

  const std::int32_t executed = ExecuteUntilEnd();
  // Released before the host hears of a failure, so that nothing half-written is left when it does.
  const std::int32_t released = ReleaseSequence();
  const std::int32_t failure = executed != VRXEngineOk ? executed : released;
  // Without a callback nobody could be told, and the end is reached as if all were well.
  if (failure != VRXEngineOk && m_pCallback != nullptr) return HostCode(failure);
  ReleaseEngine(kRender);
  return XpOk;
}

void VRXWrapperManager::SendGpuSetting() {
  GPUChecker* checker = GPUChecker::GetInstance();
  if (checker == nullptr) return;
  checker->Drop();
  checker->Load();
  if (checker->GetData() == nullptr || checker->GetSize() == 0) return;
  LogResult(u"FUNC_VRX_SetSTPVSetting(%08x)",
            m_engine.setSTPVSetting(m_hEngine, checker->GetData(), checker->GetSize()));
}

std::int32_t VRXWrapperManager::ExecuteUntilEnd() {
  VRXProgressInfo progress;
  vrx::render::ProgressFilter filter(XpTickCount());
  while (!IsEnded()) {
    const std::int32_t result = m_pSequence->Execute(&progress, &m_bEndFlag);
    if (result != VRXEngineOk) {
      LogResult(u"IVRXSequence::Execute(%08x)", result);
      return result;
    }
    IVRXWrapperCallback* callback = m_pCallback;
    if (callback == nullptr) continue;
    const std::uint32_t percentage = vrx::render::ProgressFilter::Percentage(progress);
    if (filter.Passes(percentage, XpTickCount())) callback->OnRenderProgress(percentage);
  }
  return VRXEngineOk;
}

std::int32_t VRXWrapperManager::ReleaseSequence() {
  if (m_pSequence == nullptr) return VRXEngineOk;
  const std::int32_t result = m_engine.releaseSequence(m_hEngine, &m_pSequence);
  m_pSequence = nullptr;
  LogResult(u"FUNC_VRX_ReleaseSequence(%08x)", result);
  return result;
}

void VRXWrapperManager::AbandonSequence() {
  try {
    ReleaseSequence();
  } catch (...) {
    // The render has failed already and the sequence is given up: there is nobody else to tell.
    m_pSequence = nullptr;
  }
}
