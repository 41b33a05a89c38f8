// The border to the conversion engine: the six functions of the module VRXEngine, the interfaces that cross
// it, and the proof that the records have the layout that the engine reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "vrx/VRXOutputSetting.h"
#include "vrx/VRXTimeline.h"

using VRXHandle = void*;

/// Results of the engine; 0 is success. The two named here have codes of their own towards the host.
enum VRXEngineResult : std::uint32_t {
  VRXEngineOk = 0,
  VRXEngineSourceMissing = 0x80000008,
  VRXEngineDiskFull = 0x80000009,
};

class VRXProgressInfo {
 public:
  virtual ~VRXProgressInfo() = default;

  alignas(8) std::uint64_t processed = 0;
  alignas(8) std::uint64_t total = 0;
};

/// A render job. Execute does a slice of the work and writes `progress`; on every call that returns 0 the
/// total is not 0. It sets `*endFlag` when the job is finished, and stops early when it finds it set. The
/// flag is shared between threads: both sides access it through std::atomic_ref.
class IVRXSequence {
 public:
  virtual std::int32_t Execute(VRXProgressInfo* progress, bool* endFlag) = 0;

 protected:
  virtual ~IVRXSequence() = default;
};

/// A still-image source, pulled frame after frame in rising order.
class IVRXRawInputCallback {
 public:
  virtual ~IVRXRawInputCallback() = default;
  /// Writes the picture of `frame`: bottom-up BGR, 3 bytes a pixel, rows padded to 4 bytes. `size` is the
  /// buffer's length in bytes. False when there is no picture; the buffer is then unspecified.
  virtual bool GetFrame(std::uint64_t frame, void* buffer, std::uint32_t size) = 0;
  virtual std::uint32_t GetWidth() = 0;   // pixels
  virtual std::uint32_t GetHeight() = 0;  // pixels
  virtual const VRXTimeInfo* GetFrameDuration() = 0;
  virtual std::uint32_t GetStage() = 0;
  virtual std::uint32_t GetFormat() = 0;
};

/// Draws into the frames of the registered ranges, one call a frame, in rising order.
class IVRXIntermediateRawOutputCallback {
 public:
  virtual ~IVRXIntermediateRawOutputCallback() = default;
  /// `buffer` holds bottom-up rows without padding, blue first, `size` / (width * height) bytes a pixel, and
  /// is changed in place. `frame` is the output frame's number. False when the callback could not do its
  /// work.
  virtual bool ProcessFrame(std::uint64_t frame, void* buffer, std::uint32_t size, std::int32_t stage,
                            std::int32_t format) = 0;
  /// Rows of the frame, counted from its top: outside of `first` to `end` - 1 the last ProcessFrame changed
  /// nothing. The engine looks for changes inside only; by itself a callback may have changed every row.
  virtual void GetChangedRows(std::int32_t& first, std::int32_t& end) const {
    first = 0;
    end = std::numeric_limits<std::int32_t>::max();
  }
  /// Frames `first` to `end` - 1 of the ranges will not come, since only a part of the movie is rendered.
  /// Called before the first ProcessFrame, in rising order: clocks that run along with the frames pass them.
  virtual void SkipFrames(std::uint64_t first, std::uint64_t end) {
    static_cast<void>(first);
    static_cast<void>(end);
  }
  /// What the last ProcessFrame laid over its frame: top-down rows without padding, 4 bytes a pixel, blue
  /// first, straight alpha. Null when it laid nothing over it. The callback keeps it until the next call.
  virtual const std::uint32_t* GetDrawing() const { return nullptr; }
};

/// The functions of the engine module, found by these names.
using VRX_CreateVRXFunction = std::int32_t (*)(VRXHandle* engine);
using VRX_ReleaseVRXFunction = std::int32_t (*)(VRXHandle* engine);
using VRX_CreateSequenceFunction = std::int32_t (*)(VRXHandle engine, VRXTimeline* timeline,
                                                    VRXSystemOutputSetting* output, IVRXSequence** sequence);
using VRX_ReleaseSequenceFunction = std::int32_t (*)(VRXHandle engine, IVRXSequence** sequence);
using VRX_IsSmartRenderingCapableFunction = std::int32_t (*)(VRXHandle engine, std::uint32_t first,
                                                             std::uint32_t second);
using VRX_SetSTPVSettingFunction = std::int32_t (*)(VRXHandle engine, const void* data, std::uint32_t size);

#if UINTPTR_MAX == UINT32_MAX
#include "vrx/VRXEngineLayout.h"  // IWYU pragma: keep
#endif
