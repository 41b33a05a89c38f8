// The smallest host: renders the project named on its command line and prints the progress.
#include <cstdio>
#include <semaphore>

#include <vrx/VRXWrapper.h>

class Progress final : public IVRXWrapperCallback {  // called on the render thread
  void OnRenderStart() override {}
  void OnRenderProgress(std::uint32_t percentage) override { std::printf("%u %%\n", percentage); }
  void OnRenderEnd() override { done.release(); }
  void OnRenderError(std::uint32_t code) override {
    std::printf("failed: %x\n", code);
    failed = true;
    done.release();
  }

 public:
  bool failed = false;
  std::binary_semaphore done{0};
};

int main(int argc, char** argv) {
  IVRXWrapper* wrapper = nullptr;
  if (argc != 2) return 2;
  if (VRXWrapper::CreateVRXWrapper(true, &wrapper) != 0) return 1;  // no engine beside the executable
  Progress progress;
  wrapper->SetCallback(&progress);
  wrapper->SetProjectFile(XpNarrowString(argv[1]).ToWide());
  wrapper->StartRender();  // returns at once
  progress.done.acquire();
  wrapper->Release();
  return progress.failed ? 1 : 0;
}
