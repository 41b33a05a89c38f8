// Overlays alone as a QuickTime movie: ProRes 4444 with straight alpha, without sound. Used by the overlay
// sequence.
#pragma once

#include <memory>

#include "engine/AlphaConversion.h"
#include "engine/FramePool.h"
#include "engine/MovieWriter.h"
#include "engine/OverlayOutput.h"
#include "engine/StillEncoder.h"

namespace vrx::engine {

class AlphaMovie final : public OverlayOutput {
 public:
  /// Makes the temporary file for a movie of `frames` frames.
  static Result Create(const OutputPlan& plan, std::int64_t frames, std::unique_ptr<OverlayOutput>& output);

  Result SetPicture(const std::uint32_t* drawing) override;
  Result Write(std::int64_t number) override;
  Result Finish() override { return m_writer.Finish(); }
  void Abandon() override { m_writer.Abandon(); }
  std::uint64_t GetBytes() const override { return m_writer.GetBytes(); }

 private:
  explicit AlphaMovie(const VideoPlan& plan);
  Result OpenEncoder(const VideoPlan& plan);

  AlphaConversion m_conversion;
  FramePtr m_frame;
  StillEncoder m_encoder;
  PacketPtr m_packet;
  MovieWriter m_writer;
  int m_stream = 0;
  std::int64_t m_frames = 0;  // written
};

}  // namespace vrx::engine
