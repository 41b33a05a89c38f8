#include "engine/OverlaySequence.h"

#include <cstring>
#include <utility>

#include "engine/AlphaMovie.h"
#include "engine/EngineLog.h"
#include "engine/OutputTarget.h"
#include "engine/PictureSequence.h"
#include "engine/RenderSummary.h"
#include "engine/SourcePath.h"
#include "engine/TimelineSources.h"

namespace vrx::engine {
namespace {

Result UnusableAlone(const std::string& what) {
  Log(VRXLogError, "overlays cannot be written alone: " + what);
  return kUnusableSettings;
}

bool IsMovie(const OutputPlan& plan) { return LowerExtension(plan.path) == "mov"; }
bool IsPictures(const OutputPlan& plan) { return LowerExtension(plan.path) == "png"; }

}  // namespace

Result OverlaySequence::Create(const VRXTimeline& timeline, const VRXSystemOutputSetting& output,
                               const RenderOverrides& overrides, std::unique_ptr<RenderSequence>& sequence) {
  OutputPlan plan;
  VRX_TRY(MakeOutputPlan(output, overrides, plan));
  if (!IsMovie(plan) && !IsPictures(plan)) {
    return UnusableAlone(
        "the output ends neither in .mov, for a movie, nor in .png, for pictures such as "
        "overlay-%05d.png: " +
        plan.path);
  }
  const FrameDuration duration = plan.video.frameDuration;
  TimelinePlan clips;
  VRX_TRY(MakeTimelinePlan(timeline, duration, clips));
  std::vector<OverlaySpan> ranges;
  VRX_TRY(MakeOverlaySpans(output, duration, ranges));
  OverlaySpans spans(output.rawOutput, std::move(ranges));
  if (spans.IsEmpty()) return UnusableAlone("the project has no overlays");
  std::unique_ptr<OverlaySequence> made(new OverlaySequence(plan, std::move(spans)));
  VRX_TRY(MeasureSources(duration, clips, made->m_total));
  VRX_TRY(made->CutToRange(plan));
  VRX_TRY(made->OpenOutput(clips));
  sequence = std::move(made);
  return kOk;
}

OverlaySequence::OverlaySequence(const OutputPlan& plan, OverlaySpans spans)
    : m_plan(plan), m_spans(std::move(spans)) {
  const auto pixels =
      static_cast<std::size_t>(plan.video.width) * static_cast<std::size_t>(plan.video.height);
  m_ground.resize(pixels);
  m_clear.resize(pixels);
}

Result OverlaySequence::OpenOutput(const TimelinePlan& timeline) {
  if (IsPictures(m_plan)) return PictureSequence::Create(m_plan, timeline, m_first, m_total, m_output);
  VRX_TRY(RefuseSourceAsOutput(timeline, m_plan.path));
  return AlphaMovie::Create(m_plan, m_total, m_output);
}

/// A picture that stays is not converted and encoded again.
Result OverlaySequence::RenderNext() {
  if (m_done == 0) m_spans.SkipTo(m_first);
  const std::int64_t number = m_first + m_done;
  const std::uint32_t* drawing = DrawingOf(number);
  const std::size_t pixels = m_clear.size();
  if (m_shown.empty() || std::memcmp(m_shown.data(), drawing, pixels * sizeof *drawing) != 0) {
    m_shown.assign(drawing, drawing + pixels);
    VRX_TRY(m_output->SetPicture(drawing));
  }
  VRX_TRY(m_output->Write(number));
  ++m_done;
  return kOk;
}

const std::uint32_t* OverlaySequence::DrawingOf(std::int64_t number) {
  const OverlaySpan* span = m_spans.Find(number);
  if (span == nullptr || !m_spans.Process(number, *span, m_ground)) return m_clear.data();
  const std::uint32_t* drawing = m_spans.GetCallback()->GetDrawing();
  return drawing == nullptr ? m_clear.data() : drawing;
}

Result OverlaySequence::Finish() {
  VRX_TRY(m_output->Finish());
  m_finished = true;
  KeepRenderSummary({static_cast<std::uint64_t>(m_done), 0, m_output->GetBytes(), 0});
  return kOk;
}

}  // namespace vrx::engine
