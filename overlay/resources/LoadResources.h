// Loads the sets of pictures that a painter document's overlays need. Files that are missing or unreadable
// never stop a render: a transparent pixel takes their place.
#pragma once

#include <memory>

#include "overlay/document/PainterInfo.h"
#include "overlay/resources/PainterResources.h"
#include "overlay/resources/PictureTable.h"

namespace vrx::overlay {

/// `name` is relative to the folder of the pictures and has backslashes. Not null unless memory runs out.
PainterPicture LoadResourcePicture(const XpString& name);

enum class PictureScale {
  Nominal,  // for frames of up to 1920 by 1080
  Doubled,  // also the doubled pictures, for larger ones
};

/// Null unless `scenarioType` is 1 to 4.
std::shared_ptr<TemplateResource> LoadTemplateResource(std::int32_t scenarioType,
                                                       PictureScale scale = PictureScale::Nominal);
std::shared_ptr<TennisMetaResource> LoadTennisMetaResource(PictureScale scale = PictureScale::Nominal);

/// Gives each valid overlay of `info` its set, in the scale that frames of this size need; the others lose
/// theirs.
void LoadPainterResources(PainterInfo& info, std::int32_t width = kNominalFrameWidth,
                          std::int32_t height = kNominalFrameHeight);

}  // namespace vrx::overlay
