#include "src/overlayplan/PainterTable.h"

#include <array>

#include "gps/painter/KVSGPSOverlayPainterPlugIn.h"
#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "overlay/contentimage/KVSContentImagePainterPlugIn.h"
#include "overlay/document/PainterKeys.h"
#include "overlay/tennis/KVSTennisMetaPainterPlugIn.h"

namespace vrx::overlayplan {
namespace {

using namespace overlay;

std::unique_ptr<KVSPainterPlugInBase> MakeCaption(const PainterTools& tools) {
  return std::make_unique<KVSCaptionPainterPlugIn>(*tools.textRenderer, tools.textResolution);
}

std::unique_ptr<KVSPainterPlugInBase> MakeContentImage(const PainterTools&) {
  return std::make_unique<KVSContentImagePainterPlugIn>();
}

std::unique_ptr<KVSPainterPlugInBase> MakeGps(const PainterTools& tools) {
  return std::make_unique<KVSGPSOverlayPainterPlugIn>(*tools.textRenderer, tools.textResolution);
}

std::unique_ptr<KVSPainterPlugInBase> MakeTennis(const PainterTools& tools) {
  return std::make_unique<KVSTennisMetaPainterPlugIn>(*tools.textRenderer);
}

constexpr std::array kPainterKinds{
    PainterKind{KVSPainterGPSOverlay, kTemplateInfo.name, RecordOf<&PainterInfo::templateInfo>,
                PainterClock::Gps, PainterRange::Template, MakeGps},
    PainterKind{KVSPainterTennisMeta, kTennisMetaInfo.name, RecordOf<&PainterInfo::tennisMetaInfo>,
                PainterClock::Tennis, PainterRange::Template, MakeTennis},
    PainterKind{KVSPainterCaption, kCaptionInfo.name, RecordOf<&PainterInfo::captionInfo>,
                PainterClock::Caption, PainterRange::Captions, MakeCaption},
    PainterKind{KVSPainterContentImage, nullptr, RecordOf<&PainterInfo::contentImageInfo>, PainterClock::None,
                PainterRange::None, MakeContentImage},
};

}  // namespace

overlay::PainterKinds GetPainterKinds() { return kPainterKinds; }

}  // namespace vrx::overlayplan
