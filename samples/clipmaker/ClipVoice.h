// The sound side of the clip writer: makes the clicks and encodes them, up to a given time.
#pragma once

#include <vector>

#include "samples/clipmaker/AvHandles.h"
#include "samples/clipmaker/ClipMuxer.h"
#include "samples/clipmaker/PatternClip.h"

namespace vrx::test_support {

class ClipVoice {
 public:
  /// Opens the encoder and adds the stream to `muxer`; both arguments outlive this object. `samples` is where
  /// the sound ends when it does not say so itself.
  ClipVoice(const ClipSound& sound, const std::string& defaultCodec, std::int64_t samples, ClipMuxer& muxer);

  /// Writes the packets that begin before `position`, in samples.
  void WriteUntil(std::int64_t position);
  void Finish();

 private:
  void OpenEncoder(const std::string& name);
  void WriteFrame();
  int NextFrameLength() const;

  const ClipSound& m_sound;
  ClipMuxer& m_muxer;
  std::int64_t m_end;
  std::int64_t m_position;
  std::size_t m_jump = 0;  // the next of m_sound.jumps
  CodecPtr m_encoder;
  AVStream* m_stream = nullptr;  // the muxer's
  ConverterPtr m_converter;
  FramePtr m_frame;
  std::vector<float> m_samples;
};

}  // namespace vrx::test_support
