#include "src/manager/VRXWrapperManager.h"

#include <new>

#include "foundation/registry/SystemSettings.h"
#include "foundation/sync/XpCriticalSection.h"
#include "foundation/text/XpFormat.h"
#include "src/log/RenderLog.h"

namespace {

std::atomic<VRXWrapperManager*> g_manager = nullptr;

XpCriticalSection& ManagerLock() {
  static XpCriticalSection lock;
  return lock;
}

}  // namespace

VRXWrapperManager* VRXWrapperManager::GetInstance() {
  if (VRXWrapperManager* manager = g_manager.load(std::memory_order_acquire)) return manager;
  XpSingleLock lock(&ManagerLock());
  if (g_manager.load(std::memory_order_relaxed) == nullptr) {
    vrx::registry::ApplySystemSettings();
    g_manager.store(new (std::nothrow) VRXWrapperManager, std::memory_order_release);
  }
  return g_manager.load(std::memory_order_relaxed);
}

VRXWrapperManager::VRXWrapperManager() { m_log.Open(); }

VRXWrapperManager::~VRXWrapperManager() {
  // On the render thread itself this answers at once and the thread object stays.
  if (XpThreadJoin(m_pRenderThread) == XpErrSelfWait) delete m_pRenderThread;
  ReleaseEngine(u"~VRXWrapperManager");
  // The engine may look at these until its instance is gone, and its module goes after them.
  m_pTimeline.reset();
  m_pSystemOutput.reset();
  m_pRawOutputCallback.reset();
  m_pBasebandObject.reset();
  m_pPainterDocument.reset();
  m_pDynamicInfoPainter.reset();
}

bool VRXWrapperManager::Initialize(bool factoryFlag) {
  m_bFactoryFlag = factoryFlag;
  const std::scoped_lock lock(m_engineMutex);
  if (!m_engine.Bind()) return false;
  // A second call of the factory finds the instance of the first instead of losing its handle.
  return EnsureEngine(u"Initialize") == VRXEngineOk && EnsurePainters();
}

std::int32_t VRXWrapperManager::EnsureEngine(const char16_t* caller) {
  const std::scoped_lock lock(m_engineMutex);
  return m_bEngineCreated ? std::int32_t{VRXEngineOk} : CreateEngine(caller);
}

std::int32_t VRXWrapperManager::CreateEngine(const char16_t* caller) {
  const std::int32_t result = m_engine.createVRX(&m_hEngine);
  XpString line;
  line.Format(u"FUNC_VRX_CreateVRX(%08x)", result);
  vrx::render::LogLine(caller, line);
  m_bEngineCreated = result == VRXEngineOk;
  return result;
}

void VRXWrapperManager::ReleaseEngine(const char16_t* caller) {
  const std::scoped_lock lock(m_engineMutex);
  if (!m_bEngineCreated) return;
  const std::int32_t result = m_engine.releaseVRX(&m_hEngine);
  m_hEngine = nullptr;
  m_bEngineCreated = false;
  XpString line;
  line.Format(u"FUNC_VRX_ReleaseVRX(%08x)", result);
  vrx::render::LogLine(caller, line);
}

void VRXWrapperManager::Release() {
  VRXWrapperManager* self = this;
  g_manager.compare_exchange_strong(self, nullptr);
  {
    const std::scoped_lock lock(m_threadMutex);
    if (m_bRendering && XpThreadIsCurrent(m_pRenderThread)) {
      // From inside a callback: the render ends first, without a further call, then its thread deletes this.
      m_bReleaseWanted = true;
      m_pCallback = nullptr;
      SetEnded();
      return;
    }
  }
  delete this;
}

bool VRXWrapperManager::IsSmartRenderingCapable(std::uint32_t first, std::uint32_t second) {
  const std::scoped_lock lock(m_engineMutex);
  if (EnsureEngine(u"IsSmartRenderingCapable") != VRXEngineOk) return false;
  return m_engine.isSmartRenderingCapable(m_hEngine, first, second) == VRXEngineOk;
}

void VRXWrapperManager::SetCallback(IVRXWrapperCallback* callback) {
  if (callback != nullptr) m_pCallback = callback;
}

void VRXWrapperManager::SetProjectFile(XpString path) {
  {
    const std::scoped_lock lock(m_threadMutex);
    if (m_bRendering) return;
  }
  m_strProjectFilePath = path;
  updateOutputInfoByCurrentProjectFile();
}

void VRXWrapperManager::StartRender() {
  const std::scoped_lock lock(m_threadMutex);
  if (m_bRendering) return;
  XpThreadJoin(m_pRenderThread);  // one that has ended
  m_bRendering = true;
  m_pRenderThread = XpThreadCreate(&RenderThreadEntry, this, 0);
  m_bRendering = m_pRenderThread != nullptr;
}

void VRXWrapperManager::Cancel() { SetEnded(); }

bool VRXWrapperManager::IsEnded() const {
  return std::atomic_ref<bool>(const_cast<bool&>(m_bEndFlag)).load(std::memory_order_acquire);
}

void VRXWrapperManager::SetEnded() {
  std::atomic_ref<bool>(m_bEndFlag).store(true, std::memory_order_release);
}

std::uint32_t VRXWrapperManager::RenderThreadEntry(void* argument) {
  auto* manager = static_cast<VRXWrapperManager*>(argument);
  if (manager == nullptr) return XpErrThread;
  const std::uint32_t exitCode = manager->renderToFile();
  bool releaseWanted = false;
  {
    const std::scoped_lock lock(manager->m_threadMutex);
    manager->m_bRendering = false;
    releaseWanted = manager->m_bReleaseWanted;
  }
  if (releaseWanted) delete manager;
  return exitCode;
}
