// The smallest host: renders the project named on its command line and prints the progress.
#include <cstdio>
#include <semaphore>

#include <vrx/VRXWrapper.h>

/// Called on the render thread.
class Progress final : public IVRXWrapperCallback {
 public:
  void WaitForEnd() { m_end.acquire(); }
  bool HasFailed() const { return m_hasFailed; }

 private:
  void OnRenderStart() override {}
  void OnRenderProgress(std::uint32_t percentage) override { std::printf("%u %%\n", percentage); }
  void OnRenderEnd() override { m_end.release(); }
  void OnRenderError(std::uint32_t code) override {
    std::fprintf(stderr, "failed with 0x%04x: %s\n", code, CauseOf(code));
    m_hasFailed = true;
    m_end.release();
  }
  static const char* CauseOf(std::uint32_t code) {
    if (code == XpErrNoSuchFile) return "a source is missing";
    if (code == XpErrDiskFull) return "the disk is full";
    return "the project cannot be rendered; vrx check says why";
  }

  bool m_hasFailed = false;
  std::binary_semaphore m_end{0};
};

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s PROJECT\n", argv[0]);
    return 2;
  }
  IVRXWrapper* wrapper = nullptr;
  if (VRXWrapper::CreateVRXWrapper(true, &wrapper) != 0) {
    std::fprintf(stderr,
                 "the conversion engine VRXEngine.so cannot be loaded from the folder of this program\n");
    return 1;
  }
  Progress progress;
  wrapper->SetCallback(&progress);
  wrapper->SetProjectFile(XpNarrowString(argv[1]).ToWide());
  wrapper->StartRender();  // returns at once
  progress.WaitForEnd();
  wrapper->Release();
  return progress.HasFailed() ? 1 : 0;
}
