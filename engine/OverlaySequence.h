// The render job that writes the overlays of a movie alone, with transparency: no picture of a source is
// decoded, and there is no sound.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "engine/OverlayOutput.h"
#include "engine/OverlaySpans.h"
#include "engine/RenderSequence.h"
#include "engine/TimelinePlan.h"

namespace vrx::engine {

class OverlaySequence final : public RenderSequence {
 public:
  /// Checks records, sources and encoders, and makes the temporary file; a failure leaves none. The callback
  /// that the record names must live as long as the sequence. kUnusableSettings, with a logged line, for an
  /// output that is neither a .mov movie nor .png pictures, and without overlays.
  static Result Create(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                       const RenderOverrides& overrides, std::unique_ptr<RenderSequence>& sequence);

 private:
  OverlaySequence(const OutputPlan& plan, OverlaySpans spans);
  Result OpenOutput(const TimelinePlan& timeline);
  Result RenderNext() override;
  /// What the callback lays over the frame; clear where it does not.
  const std::uint32_t* DrawingOf(std::int64_t number);
  Result Finish() override;
  void GiveUp() override { m_output->Abandon(); }

  OutputPlan m_plan;
  OverlaySpans m_spans;
  std::vector<std::uint32_t> m_ground;  // black, which the callback draws on
  std::vector<std::uint32_t> m_clear;   // a picture without anything
  std::vector<std::uint32_t> m_shown;   // what the output shows; nothing yet when it is empty
  std::unique_ptr<OverlayOutput> m_output;
};

}  // namespace vrx::engine
