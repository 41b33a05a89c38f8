// The wrapper that a host drives: the public face of a render job, an engine session and a render thread. The
// factory makes the only one in the process.
#pragma once

#include <cstdint>

#include "foundation/log/VRXWrapperLog.h"
#include "src/job/RenderJob.h"
#include "src/manager/EngineSession.h"
#include "src/manager/HostReporter.h"
#include "src/manager/RenderThread.h"
#include "vrx/VRXWrapper.h"

class VRXWrapperManager final : public IVRXWrapper {
 public:
  /// The process's manager, made on first use; null when memory is short.
  static VRXWrapperManager* GetInstance();

  /// Binds the engine and makes an instance of it. False when either fails; the manager then stays. A second
  /// call keeps the instance of the first.
  bool Initialize();

  void Release() override;
  bool IsSmartRenderingCapable(std::uint32_t first, std::uint32_t second) override;
  void SetCallback(IVRXWrapperCallback* callback) override;
  void SetProjectFile(XpString path) override;
  void StartRender() override;
  void Cancel() override;

 private:
  VRXWrapperManager() { m_log.Open(); }
  ~VRXWrapperManager() override = default;

  // In the order of their making; they are destroyed the other way round, the thread first and the log last.
  VRXWrapperLog m_log;
  vrx::render::HostReporter m_host;
  bool m_endFlag = false;                // only ever set; shared with the engine through std::atomic_ref
  vrx::render::EngineLibrary m_library;  // unloaded after the records that crossed to it are gone
  vrx::job::RenderJob m_job;
  vrx::render::EngineSession m_engine{m_library};  // its instance may look at the job until it is released
  vrx::render::RenderThread m_thread;
};
