// The overlays of a render job: the painters, what the painter document says, and the callback that draws
// into the engine's frames. A RenderJob owns one.
#pragma once

#include <memory>

#include "drawing/pango/PangoTextRenderer.h"
#include "overlay/callback/VRXIntermediateRawOutputCallback.h"
#include "overlay/document/TKLXPainterInfoXml.h"
#include "overlay/painter/IKVSDynamicInfoPainter.h"
#include "src/overlayplan/OverlayRanges.h"
#include "vrx/VRXOutputSetting.h"

namespace vrx::job {

class JobOverlays {
 public:
  /// Makes the painter manager if there is none; false when there is no memory. It is kept for later
  /// projects.
  bool EnsurePainters();

  /// Drops the callback of the project before. The engine must not use it any more.
  void Reset() { m_rawOutputCallback.reset(); }

  /// Reads the painter document at `path`, registers its ranges in `output` and configures the painters. A
  /// document that fails leaves the movie without overlays. `movie` holds the frame length and the clips.
  void SetUp(const XpString& path, const overlayplan::MovieTimes& movie, VRXSystemOutputSetting& output);

  VRXIntermediateRawOutputCallback* GetRawOutputCallback() const { return m_rawOutputCallback.get(); }

 private:
  struct PainterRelease {
    void operator()(IKVSDynamicInfoPainter* painters) const { painters->Release(); }
  };

  void SetUpCallback(const overlayplan::OverlayPlan& plan, VRXSystemOutputSetting& output);

  PainterInfo m_painterInfo;  // adopted from the last document that could be read
  // Made when first needed, since it loads the fonts; of the painters, so it is destroyed after them.
  std::unique_ptr<drawing::PangoTextRenderer> m_textRenderer;
  std::unique_ptr<IKVSDynamicInfoPainter, PainterRelease> m_painters;
  std::unique_ptr<TKLXPainterInfoXml> m_painterDocument;
  std::unique_ptr<VRXIntermediateRawOutputCallback> m_rawOutputCallback;  // replaced with each project
};

}  // namespace vrx::job
