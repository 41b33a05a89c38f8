// Encoders in graphics processors and other devices: finds one that really works with a plan, and brings the
// engine's frames into the form that it takes. Used by the video encoder.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "engine/AvPointers.h"
#include "engine/FramePool.h"
#include "engine/OutputPlan.h"

namespace vrx::engine {

/// Frames as a device takes them: planar as they are, or with the two parts of the colour mixed (NV12), in
/// ordinary memory or in the device's. Belongs to the encoder's thread.
class DeviceFrames {
 public:
  enum class Form { Planar, Mixed, InDevice };

  explicit DeviceFrames(Form form) : m_form(form), m_mixed(AV_PIX_FMT_NV12) {}
  DeviceFrames(const DeviceFrames&) = delete;
  DeviceFrames& operator=(const DeviceFrames&) = delete;
  ~DeviceFrames();

  /// Opens the device where one is needed, and tells `codec` what comes. Gives a libav error.
  int Open(AVCodecContext& codec);
  /// `input` is what to send for `frame`, with its time. Gives a libav error.
  int Bring(const AVFrame& frame, FramePtr& input);

 private:
  int OpenPool(AVCodecContext& codec);

  const Form m_form;
  FramePool m_mixed;
  AVBufferRef* m_device = nullptr;
  AVBufferRef* m_pool = nullptr;  // frames in the device's memory
};

struct HardwareEncoder {
  CodecPtr codec;  // null when none works
  std::unique_ptr<DeviceFrames> frames;
  const char* name = "";
};

/// The first of the encoders `names`, libav's and up to a null, that gives a packet for a grey frame with the
/// settings of `plan`, opened again for the movie. `reasons` says of each that was tried before why it is not
/// used.
void FindHardwareEncoder(std::span<const char* const> names, const VideoPlan& plan, bool globalHeader,
                         HardwareEncoder& found, std::string& reasons);

}  // namespace vrx::engine
