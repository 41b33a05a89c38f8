#include "src/manager/EngineLibrary.h"

#include "foundation/text/XpPath.h"

namespace vrx::render {

EngineLibrary::~EngineLibrary() { platform::UnloadModule(m_module); }

template <class Function>
void EngineLibrary::BindFunction(const char* name, Function& function, std::string* cause) {
  function = Find<Function>(name);
  if (function != nullptr) return;
  m_bound = false;
  if (cause != nullptr && cause->empty()) {
    *cause = std::string("the conversion engine VRXEngine.so lacks the function ") + name;
  }
}

bool EngineLibrary::Bind(std::string* cause) {
  if (m_bound) return true;
  if (m_module == nullptr) {
    const XpString folder = XpPathDirectory(platform::ExecutablePath());
    m_module = platform::LoadModule(XpPathJoin(folder, u"VRXEngine.dll"), cause);
  }
  m_bound = m_module != nullptr;
  if (cause != nullptr) {
    const char* start = "the conversion engine VRXEngine.so cannot be loaded from beside this program: ";
    *cause = m_bound ? std::string() : start + *cause;
  }
  // All six are always tried, so that what is there stays usable.
  BindFunction("VRX_CreateVRX", createVRX, cause);
  BindFunction("VRX_ReleaseVRX", releaseVRX, cause);
  BindFunction("VRX_CreateSequence", createSequence, cause);
  BindFunction("VRX_ReleaseSequence", releaseSequence, cause);
  BindFunction("VRX_IsSmartRenderingCapable", isSmartRenderingCapable, cause);
  BindFunction("VRX_SetSTPVSetting", setSTPVSetting, cause);
  return m_bound;
}

}  // namespace vrx::render
