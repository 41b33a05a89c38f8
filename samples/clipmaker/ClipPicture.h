// The picture side of the clip writer: draws each frame and encodes it.
#pragma once

#include <optional>

#include "samples/clipmaker/AvHandles.h"
#include "samples/clipmaker/ClipMuxer.h"
#include "samples/clipmaker/CourtScene.h"
#include "samples/clipmaker/DemoScene.h"
#include "samples/clipmaker/PatternClip.h"
#include "samples/clipmaker/RgbImage.h"
#include "samples/clipmaker/RoadScene.h"

namespace vrx::test_support {

class ClipPicture {
 public:
  /// Opens the encoder and adds the stream to `muxer`; both outlive this object.
  ClipPicture(const PatternClip& clip, ClipMuxer& muxer);

  int FrameCount() const { return m_frames; }
  /// Time of frame `index`, which may be the one after the last, in units of TimeBase().
  std::int64_t FrameTime(int index) const;
  AVRational TimeBase() const { return m_encoder->time_base; }

  void Write(int index);
  void Finish() { m_muxer.Encode(*m_encoder, *m_stream, nullptr, m_frameLength); }

 private:
  void OpenEncoder();
  void OpenScaler();
  void AddRotation();
  void Draw(int index);

  const PatternClip& m_clip;
  ClipMuxer& m_muxer;
  int m_frames;
  std::int64_t m_frameLength = 1;  // in units of TimeBase(); with uneven times that of the last
  DemoScene m_scene;
  CourtScene m_courtScene;
  std::optional<RoadScene> m_roadScene;  // for its style only
  CodecPtr m_encoder;
  AVStream* m_stream = nullptr;  // the muxer's
  ScalerPtr m_scaler;
  FramePtr m_frame;
  RgbImage m_upright;
  RgbImage m_stored;
};

}  // namespace vrx::test_support
