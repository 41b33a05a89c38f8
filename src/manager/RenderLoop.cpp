#include "src/manager/RenderLoop.h"

#include <atomic>

#include "src/gpu/GPUChecker.h"
#include "src/manager/ProgressFilter.h"
#include "src/renderlog/RenderLog.h"

namespace vrx::render {
namespace {

using renderlog::LogLine;

/// One render, step by step; `Run` gives XpOk or the code for the host.
class Render {
 public:
  Render(EngineSession& engine, job::RenderJob& job, HostReporter& host, bool& endFlag)
      : m_engine(engine), m_job(job), m_host(host), m_endFlag(endFlag) {}

  std::uint32_t Run() {
    if (!m_job.IsUsable()) return XpErrNoObject;
    if (const std::int32_t result = m_engine.EnsureEngine(kRenderToFile); result != VRXEngineOk) {
      return HostCode(result);
    }
    if (m_job.WantsGpuSetting()) SendGpuSetting();
    const std::int32_t created = m_engine.CreateSequence(*m_job.GetTimeline(), *m_job.GetSystemOutput());
    if (created != VRXEngineOk) return HostCode(created);
    const std::int32_t executed = ExecuteUntilEnd();
    // Released before the host learns of a failure, so that nothing half-written is left when it does.
    const std::int32_t released = m_engine.ReleaseSequence();
    const std::int32_t failure = executed != VRXEngineOk ? executed : released;
    // Without a callback there is no one to report to, and the render counts as ended.
    if (failure != VRXEngineOk && m_host.HasCallback()) return HostCode(failure);
    if (m_hostThrew) return XpErrNoObject;
    m_engine.Release(kRenderToFile);
    return XpOk;
  }

 private:
  bool IsEnded() const { return std::atomic_ref<bool>(m_endFlag).load(std::memory_order_acquire); }

  /// Hands the engine what the host's calibration found out, if there is something.
  void SendGpuSetting() {
    GPUChecker* checker = GPUChecker::GetInstance();
    if (checker == nullptr) return;
    checker->Drop();
    checker->Load();
    if (checker->GetData() == nullptr || checker->GetSize() == 0) return;
    m_engine.SendGpuSetting(checker->GetData(), checker->GetSize());
  }

  std::int32_t ExecuteUntilEnd() {
    VRXProgressInfo progress;
    ProgressFilter filter(XpTickCount());
    while (!IsEnded() && !m_hostThrew) {
      if (const std::int32_t result = m_engine.Execute(progress, m_endFlag); result != VRXEngineOk) {
        return result;
      }
      if (!m_host.HasCallback()) continue;
      const std::uint32_t percentage = ProgressFilter::Percentage(progress);
      if (filter.Passes(percentage, XpTickCount())) m_hostThrew = !m_host.ReportProgress(percentage);
    }
    return VRXEngineOk;
  }

  EngineSession& m_engine;
  job::RenderJob& m_job;
  HostReporter& m_host;
  bool& m_endFlag;
  bool m_hostThrew = false;
};

}  // namespace

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

std::uint32_t RenderToFile(EngineSession& engine, job::RenderJob& job, HostReporter& host, bool& endFlag) {
  LogLine(kRenderToFile, u"VRXWrapperManager::renderToFile start");
  std::uint32_t hostError = host.ReportStart() ? XpOk : XpErrNoObject;
  std::uint32_t exitCode = XpErrFailed;
  try {
    if (hostError == XpOk) hostError = Render(engine, job, host, endFlag).Run();
  } catch (...) {
    // The engine is foreign code: whatever it throws ends the render, not the host.
    engine.AbandonSequence();
    hostError = XpErrNoObject;
    if (!host.HasCallback()) exitCode = XpOk;
  }
  if (hostError != XpOk) {
    host.ReportError(hostError);
    return exitCode;
  }
  LogLine(kRenderToFile, u"VRXWrapperManager::renderToFile end.");
  host.ReportEnd();
  return XpOk;
}

}  // namespace vrx::render
