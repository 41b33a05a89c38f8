#include "src/overlayplan/PainterTable.h"

#include <array>

#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "overlay/contentimage/KVSContentImagePainterPlugIn.h"
#include "overlay/document/PainterKeys.h"

namespace vrx::overlayplan {
namespace {

using namespace overlay;

std::unique_ptr<KVSPainterPlugInBase> MakeCaption(const PainterTools& tools) {
  return std::make_unique<KVSCaptionPainterPlugIn>(*tools.textRenderer);
}

std::unique_ptr<KVSPainterPlugInBase> MakeContentImage(const PainterTools&) {
  return std::make_unique<KVSContentImagePainterPlugIn>();
}

constexpr std::array kPainterKinds{
    PainterKind{KVSPainterGPSOverlay, kTemplateInfo.name, RecordOf<&PainterInfo::templateInfo>,
                PainterClock::Gps, PainterRange::Template, nullptr},
    PainterKind{KVSPainterTennisMeta, kTennisMetaInfo.name, RecordOf<&PainterInfo::tennisMetaInfo>,
                PainterClock::Tennis, PainterRange::Template, nullptr},
    PainterKind{KVSPainterCaption, kCaptionInfo.name, RecordOf<&PainterInfo::captionInfo>,
                PainterClock::Caption, PainterRange::Captions, MakeCaption},
    PainterKind{KVSPainterContentImage, nullptr, RecordOf<&PainterInfo::contentImageInfo>, PainterClock::None,
                PainterRange::None, MakeContentImage},
};

}  // namespace

overlay::PainterKinds GetPainterKinds() { return kPainterKinds; }

}  // namespace vrx::overlayplan
