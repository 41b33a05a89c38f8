// A host that only asks for a wrapper: the exit status is the factory's answer. Tests copy it to folders with
// and without an engine.
#include "vrx/VRXWrapper.h"

int main() {
  IVRXWrapper* const untouched = reinterpret_cast<IVRXWrapper*>(0x10);
  IVRXWrapper* wrapper = untouched;
  const int result = VRXWrapper::CreateVRXWrapper(true, &wrapper);
  if (result != 0) return wrapper == untouched ? result : 99;
  wrapper->Release();
  return 0;
}
