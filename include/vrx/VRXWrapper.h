// What a host application sees: the one exported factory, the wrapper that it drives and the callback that it
// implements. A render is: CreateVRXWrapper, SetCallback, SetProjectFile, StartRender, callbacks, Release.
#pragma once

#include <cstdint>

#include "vrx/XpResult.h"
#include "vrx/XpString.h"

#define VRX_EXPORT __attribute__((visibility("default")))

/// Implemented by the host, which keeps ownership; it must live until IVRXWrapper::Release returns. Every
/// call comes on the render thread, so a host with a user interface passes them on to its own thread. Each
/// render that starts reports either OnRenderEnd or OnRenderError, once and last. A callback that throws from
/// OnRenderStart or OnRenderProgress ends the render with OnRenderError; what it throws from the last two is
/// dropped.
class IVRXWrapperCallback {
 public:
  virtual void Reserved() {}  // never called; keeps the first slot of the interface
  /// The render thread has begun.
  virtual void OnRenderStart() = 0;
  /// The render ran to its end or was cancelled. Never follows OnRenderError.
  virtual void OnRenderEnd() = 0;
  /// The render failed. `code` is XpErrNoObject (engine failure), XpErrDiskFull or XpErrNoSuchFile (a source
  /// is missing).
  virtual void OnRenderError(std::uint32_t code) = 0;
  /// Comes on every change of the percentage, and for an unchanged one at most every 200 ms.
  virtual void OnRenderProgress(std::uint32_t percentage) = 0;

 protected:
  ~IVRXWrapperCallback() = default;
};

/// One render job after the other. All operations belong to the host's thread; only Cancel may come from any
/// thread. There is one wrapper in a process, which the library owns until Release.
class IVRXWrapper {
 public:
  /// Waits for a running render, then destroys the wrapper. To end sooner, call Cancel first. Not to be
  /// called from a callback.
  virtual void Release() = 0;
  /// True when the engine can copy the material without encoding it again. Both values are passed to the
  /// engine as they are.
  virtual bool IsSmartRenderingCapable(std::uint32_t first, std::uint32_t second) = 0;
  /// Null keeps the callback that was set before.
  virtual void SetCallback(IVRXWrapperCallback* callback) = 0;
  /// Reads the project document and prepares the render on the calling thread. It reports nothing: an
  /// unusable project, or one whose output is a file that it reads, makes the following StartRender report
  /// OnRenderError with XpErrNoObject. Must not
  /// overlap a running render; it is ignored then. A relative path counts from the working folder, relative
  /// paths inside the document from the document's folder.
  virtual void SetProjectFile(XpString path) = 0;
  /// Starts the render on a thread of its own and returns at once. Ignored while a render runs, and without a
  /// further report when the system gives no thread. A wrapper renders once: after a render that ended or was
  /// cancelled a second call reports OnRenderStart and OnRenderEnd but writes no movie. After an error it
  /// renders again.
  virtual void StartRender() = 0;
  /// Ends the render at the next opportunity; the host then receives OnRenderEnd. A cancelled wrapper stays
  /// cancelled: render again with a new one.
  virtual void Cancel() = 0;

 protected:
  virtual ~IVRXWrapper() = default;
};

namespace VRXWrapper {

/// Gives the process's wrapper, made on first use. Returns 0 and stores it through `wrapper`, or returns 1
/// and leaves `*wrapper` alone when the engine module is missing, incomplete or fails. The engine module
/// VRXEngine.so is looked for beside the host's executable and nowhere else. `factoryFlag` is kept but
/// unused.
VRX_EXPORT std::int32_t CreateVRXWrapper(bool factoryFlag, IVRXWrapper** wrapper);

}  // namespace VRXWrapper
