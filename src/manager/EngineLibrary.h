// Finds the conversion engine beside the host's executable and binds its functions: the six that a render
// needs, and by name the extras that the command line uses.
#pragma once

#include <string>

#include "foundation/platform/Module.h"
#include "vrx/VRXEngine.h"

namespace vrx::render {

class EngineLibrary {
 public:
  EngineLibrary() = default;
  EngineLibrary(const EngineLibrary&) = delete;
  EngineLibrary& operator=(const EngineLibrary&) = delete;
  ~EngineLibrary();

  /// True only when the module and all six functions are there; else `cause` (may be null) says what is
  /// missing, for people. A module that lacks one stays loaded, and its other functions stay bound; the next
  /// call tries again.
  bool Bind(std::string* cause = nullptr);

  /// A function of the module by name; null when it has none or is not loaded.
  template <class Function>
  Function Find(const char* name) const {
    return m_module == nullptr ? nullptr : reinterpret_cast<Function>(platform::FindSymbol(m_module, name));
  }

  VRX_CreateVRXFunction createVRX = nullptr;
  VRX_ReleaseVRXFunction releaseVRX = nullptr;
  VRX_CreateSequenceFunction createSequence = nullptr;
  VRX_ReleaseSequenceFunction releaseSequence = nullptr;
  VRX_IsSmartRenderingCapableFunction isSmartRenderingCapable = nullptr;
  VRX_SetSTPVSettingFunction setSTPVSetting = nullptr;

 private:
  template <class Function>
  void BindFunction(const char* name, Function& function, std::string* cause);

  platform::ModuleHandle m_module = nullptr;
  bool m_bound = false;
};

}  // namespace vrx::render
