#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "src/manager/VRXWrapperManager.h"
#include "src/overlay/PainterTable.h"
#include "src/project/ProjectPath.h"

bool VRXWrapperManager::EnsurePainters() {
  if (m_pDynamicInfoPainter) return true;
  if (!m_textRenderer) m_textRenderer = std::make_unique<vrx::drawing::PangoTextRenderer>();
  IKVSDynamicInfoPainter* painters = nullptr;
  if (!CreateDynamicInfoPainter(&painters, vrx::overlay::MakePainterTable(*m_textRenderer))) return false;
  m_pDynamicInfoPainter.reset(painters);
  return true;
}

void VRXWrapperManager::SetupOverlays(const XpString& painterEffect) {
  if (painterEffect.IsEmpty()) return;
  m_pPainterDocument = std::make_unique<TKLXPainterInfoXml>();
  const XpString path = vrx::project::ResolvePath(m_strProjectFilePath, painterEffect);
  if (m_pPainterDocument->Load(XpPath(path)) != XpOk) return;
  AdoptPainterInfo(m_pPainterDocument->GetPainterInfo(), m_painterInfo);
  SetupOverlayRanges();
}

void VRXWrapperManager::SetupOverlayRanges() {
  const VRXVideoOutputSetting& video = *m_pSystemOutput->video;
  vrx::overlay::OverlayPlan plan = vrx::overlay::PlanOverlays(
      {video.frameDuration, m_clipSums, m_pBasebandObject != nullptr}, m_painterInfo);
  m_speedSections = std::move(plan.speedSections);
  m_captions = std::move(plan.captions);
  if (!plan.isWanted || !EnsurePainters()) return;
  for (const vrx::overlay::OverlayRange& range : plan.ranges) {
    VRXIntermediateRawOutputSetting setting;
    setting.startTime = {static_cast<std::uint64_t>(range.start), video.frameDuration.scale};
    setting.endTime = {static_cast<std::uint64_t>(range.end), video.frameDuration.scale};
    setting.stage = VRXIntermediateRawOutputCallback::kStage;
    setting.format = VRXIntermediateRawOutputCallback::kFormat;
    m_pSystemOutput->AddRange(setting);
  }
  m_painterInfo.templateInfo.width = video.width;
  m_painterInfo.templateInfo.height = video.height;
  m_pRawOutputCallback = std::make_unique<VRXIntermediateRawOutputCallback>(
      OverlayContext{.width = video.width,
                     .height = video.height,
                     .frameLength = {video.frameDuration.value, video.frameDuration.scale},
                     .info = &m_painterInfo,
                     .painters = m_pDynamicInfoPainter.get()});
  m_pRawOutputCallback->ResetTimeGenerators(m_speedSections);
  m_pSystemOutput->rawOutput = m_pRawOutputCallback.get();
  m_pDynamicInfoPainter->SetPainterInfo(&m_painterInfo);
  KVSPainterPlugInBase* painter = m_pDynamicInfoPainter->FindPainterByType(KVSPainterCaption);
  if (auto* caption = dynamic_cast<KVSCaptionPainterPlugIn*>(painter)) caption->SetCaptionItems(m_captions);
}
