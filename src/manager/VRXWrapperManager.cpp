#include "src/manager/VRXWrapperManager.h"

#include <atomic>
#include <new>

#include "foundation/registry/SystemSettings.h"
#include "foundation/sync/XpCriticalSection.h"
#include "src/manager/RenderLoop.h"

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

bool VRXWrapperManager::Initialize() { return m_engine.Start(u"Initialize") && m_job.EnsurePainters(); }

void VRXWrapperManager::Release() {
  VRXWrapperManager* self = this;
  g_manager.compare_exchange_strong(self, nullptr);
  // From inside a callback the render ends first, without a further call, and its thread deletes this.
  if (m_thread.RunAfterWork([this] { delete this; })) {
    m_host.SetCallback(nullptr);
    Cancel();
    return;
  }
  delete this;
}

bool VRXWrapperManager::IsSmartRenderingCapable(std::uint32_t first, std::uint32_t second) {
  return m_engine.IsSmartRenderingCapable(first, second);
}

void VRXWrapperManager::SetCallback(IVRXWrapperCallback* callback) {
  if (callback != nullptr) m_host.SetCallback(callback);
}

void VRXWrapperManager::SetProjectFile(XpString path) {
  if (!m_thread.IsRunning()) m_job.Load(path);
}

void VRXWrapperManager::StartRender() {
  m_thread.Start([this] { return vrx::render::RenderToFile(m_engine, m_job, m_host, m_endFlag); });
}

void VRXWrapperManager::Cancel() {
  std::atomic_ref<bool>(m_endFlag).store(true, std::memory_order_release);
  m_job.CancelWaits();
}
