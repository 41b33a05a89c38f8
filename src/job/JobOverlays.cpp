#include "src/job/JobOverlays.h"

#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "overlay/resources/LoadResources.h"
#include "src/overlayplan/LogPaths.h"
#include "src/overlayplan/PainterTable.h"

namespace vrx::job {

bool JobOverlays::EnsurePainters() {
  if (m_painters) return true;
  if (!m_textRenderer) m_textRenderer = std::make_unique<drawing::PangoTextRenderer>();
  IKVSDynamicInfoPainter* painters = nullptr;
  const overlay::PainterTools tools{m_textRenderer.get(), overlay::ChooseTextResolution()};
  if (!CreateDynamicInfoPainter(&painters, overlayplan::GetPainterKinds(), tools)) return false;
  m_painters.reset(painters);
  return true;
}

void JobOverlays::SetUp(const XpString& path, const overlayplan::MovieTimes& movie,
                        VRXSystemOutputSetting& output) {
  m_painterDocument = std::make_unique<TKLXPainterInfoXml>();
  if (m_painterDocument->Load(XpPath(path)) != XpOk) return;
  AdoptPainterInfo(m_painterDocument->GetPainterInfo(), m_painterInfo);
  overlayplan::ResolveLogPaths(path, m_painterInfo);
  overlay::LoadPainterResources(m_painterInfo, output.video->width, output.video->height);
  const overlayplan::OverlayPlan plan = overlayplan::PlanOverlays(movie, m_painterInfo);
  if (!plan.isWanted || !EnsurePainters()) return;
  for (const overlayplan::OverlayRange& range : plan.ranges) {
    VRXIntermediateRawOutputSetting setting;
    setting.startTime = {static_cast<std::uint64_t>(range.start), movie.frame.scale};
    setting.endTime = {static_cast<std::uint64_t>(range.end), movie.frame.scale};
    setting.stage = VRXIntermediateRawOutputCallback::kStage;
    setting.format = VRXIntermediateRawOutputCallback::kFormat;
    output.AddRange(setting);
  }
  SetUpCallback(plan, output);
}

void JobOverlays::SetUpCallback(const overlayplan::OverlayPlan& plan, VRXSystemOutputSetting& output) {
  const VRXVideoOutputSetting& video = *output.video;
  m_painterInfo.templateInfo.width = video.width;
  m_painterInfo.templateInfo.height = video.height;
  m_rawOutputCallback = std::make_unique<VRXIntermediateRawOutputCallback>(
      OverlayContext{.width = video.width,
                     .height = video.height,
                     .frameLength = video.frameDuration,
                     .info = &m_painterInfo,
                     .painters = m_painters.get(),
                     .kinds = overlayplan::GetPainterKinds()});
  m_rawOutputCallback->ResetTimeGenerators(plan.speedSections);
  output.rawOutput = m_rawOutputCallback.get();
  m_painters->SetPainterInfo(&m_painterInfo);
  KVSPainterPlugInBase* painter = m_painters->FindPainterByType(KVSPainterCaption);
  if (auto* caption = dynamic_cast<KVSCaptionPainterPlugIn*>(painter))
    caption->SetCaptionItems(plan.captions);
}

}  // namespace vrx::job
