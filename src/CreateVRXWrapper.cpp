#include "src/manager/VRXWrapperManager.h"
#include "vrx/VRXWrapper.h"

std::int32_t VRXWrapper::CreateVRXWrapper(bool /*factoryFlag*/, IVRXWrapper** wrapper) {
  constexpr std::int32_t kMade = 0;
  constexpr std::int32_t kNoWrapper = 1;
  VRXWrapperManager* manager = VRXWrapperManager::GetInstance();
  if (manager == nullptr || wrapper == nullptr || !manager->Initialize()) return kNoWrapper;
  *wrapper = manager;
  return kMade;
}
