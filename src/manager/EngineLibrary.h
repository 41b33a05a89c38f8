// Finds the conversion engine beside the host's executable and binds its six functions.
#pragma once

#include "foundation/platform/Module.h"
#include "vrx/VRXEngine.h"

namespace vrx::render {

class EngineLibrary {
 public:
  EngineLibrary() = default;
  EngineLibrary(const EngineLibrary&) = delete;
  EngineLibrary& operator=(const EngineLibrary&) = delete;
  ~EngineLibrary();

  /// True only when the module and all six functions are there. A module that lacks one stays loaded, and its
  /// other functions stay bound; the next call tries again.
  bool Bind();

  VRX_CreateVRXFunction createVRX = nullptr;
  VRX_ReleaseVRXFunction releaseVRX = nullptr;
  VRX_CreateSequenceFunction createSequence = nullptr;
  VRX_ReleaseSequenceFunction releaseSequence = nullptr;
  VRX_IsSmartRenderingCapableFunction isSmartRenderingCapable = nullptr;
  VRX_SetSTPVSettingFunction setSTPVSetting = nullptr;

 private:
  platform::ModuleHandle m_module = nullptr;
  bool m_bound = false;
};

}  // namespace vrx::render
