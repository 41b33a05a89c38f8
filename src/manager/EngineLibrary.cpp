#include "src/manager/EngineLibrary.h"

#include "foundation/text/XpPath.h"

namespace vrx::render {
namespace {

template <class Function>
bool BindFunction(platform::ModuleHandle module, const char* name, Function& function) {
  function = reinterpret_cast<Function>(platform::FindSymbol(module, name));
  return function != nullptr;
}

}  // namespace

EngineLibrary::~EngineLibrary() { platform::UnloadModule(m_module); }

bool EngineLibrary::Bind() {
  if (m_bound) return true;
  if (m_module == nullptr) {
    const XpString folder = XpPathDirectory(platform::ExecutablePath());
    m_module = platform::LoadModule(XpPathJoin(folder, u"VRXEngine.dll"));
  }
  bool bound = m_module != nullptr;
  // All six are always tried, so that what is there stays usable.
  bound &= BindFunction(m_module, "VRX_CreateVRX", createVRX);
  bound &= BindFunction(m_module, "VRX_ReleaseVRX", releaseVRX);
  bound &= BindFunction(m_module, "VRX_CreateSequence", createSequence);
  bound &= BindFunction(m_module, "VRX_ReleaseSequence", releaseSequence);
  bound &= BindFunction(m_module, "VRX_IsSmartRenderingCapable", isSmartRenderingCapable);
  bound &= BindFunction(m_module, "VRX_SetSTPVSetting", setSTPVSetting);
  return m_bound = bound;
}

}  // namespace vrx::render
