// Pictures that the host makes itself, pulled one by one and brought into the movie's frame. Used by the
// sequence on the host's thread.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/EngineResult.h"
#include "engine/FrameFitter.h"
#include "engine/FramePool.h"
#include "vrx/VRXEngine.h"

namespace vrx::engine {

/// Belongs to one thread, on which the host's source is called.
class BasebandVideoSource {
 public:
  /// Size of the movie's frame in pixels.
  BasebandVideoSource(int width, int height) : m_width(width), m_height(height), m_fitter(width, height) {}

  /// kUnusableSettings, with a logged line, for a source whose pictures have no usable size.
  static Result Check(IVRXRawInputCallback& input);

  /// The picture `number` of `input`; black where the host has none, with one warning for each run of those.
  Result FrameOf(IVRXRawInputCallback& input, std::uint64_t number, FramePtr& frame);

 private:
  int m_width;
  int m_height;
  bool m_missing = false;  // the last picture was
  FrameFitter m_fitter;
  FramePool m_frames;
  std::vector<std::uint8_t> m_bytes;    // as the host writes them
  std::vector<std::uint32_t> m_pixels;  // widened to four bytes, still bottom up
};

}  // namespace vrx::engine
