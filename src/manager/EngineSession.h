// One instance of the conversion engine and the sequence that it works on. The wrapper owns one; the render
// thread drives it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>

#include "src/manager/EngineLibrary.h"
#include "vrx/VRXEngine.h"

namespace vrx::render {

/// The function that log entries of a render name.
inline constexpr char16_t kRenderToFile[] = u"renderToFile";

/// Results are those of the engine. `caller` is the function that log entries name.
class EngineSession {
 public:
  /// The library must outlive the session.
  explicit EngineSession(EngineLibrary& library) : m_library(library) {}
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;
  ~EngineSession() { Release(u"~VRXWrapperManager"); }

  /// Loads the module and makes an instance, unless both are there. False when either fails.
  bool Start(const char16_t* caller);
  /// Makes the instance if there is none. The module must be loaded.
  std::int32_t EnsureEngine(const char16_t* caller);
  void Release(const char16_t* caller);
  /// Also without a project, from the host's thread.
  bool IsSmartRenderingCapable(std::uint32_t first, std::uint32_t second);

  // Called by the render thread alone.
  void SendGpuSetting(const void* data, std::uint32_t size);
  std::int32_t CreateSequence(VRXTimeline& timeline, VRXSystemOutputSetting& output);
  /// One slice of work. `endFlag` is shared with other threads through std::atomic_ref.
  std::int32_t Execute(VRXProgressInfo& progress, bool& endFlag);
  /// Releases the sequence, if there is one.
  std::int32_t ReleaseSequence();
  /// The same when the render has failed already: the engine's own exceptions are dropped.
  void AbandonSequence();

 private:
  EngineLibrary& m_library;
  std::recursive_mutex m_mutex;  // guards the two below: a host may ask about smart rendering at any time
  VRXHandle m_engine = nullptr;
  bool m_isCreated = false;
  IVRXSequence* m_sequence = nullptr;  // the engine's
};

}  // namespace vrx::render
