// The render job that writes the sound of a movie alone: the packets that the whole movie would have.
#pragma once

#include <memory>

#include "engine/MovieWriter.h"
#include "engine/OutputPlan.h"
#include "engine/RenderSequence.h"
#include "engine/SoundTrack.h"

namespace vrx::engine {

class SoundSequence final : public RenderSequence {
 public:
  /// Checks records, sources and the encoder, and makes the temporary file; a failure leaves none.
  /// kUnusableSettings, with a logged line, for a movie without sound.
  static Result Create(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                       const RenderOverrides& overrides, std::unique_ptr<RenderSequence>& sequence);

 private:
  SoundSequence() = default;
  Result Prepare(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                 const RenderOverrides& overrides);
  Result RenderNext() override;
  Result Finish() override;
  void GiveUp() override { m_writer.Abandon(); }

  OutputPlan m_output;
  MovieWriter m_writer;
  SoundTrack m_sound;
};

}  // namespace vrx::engine
