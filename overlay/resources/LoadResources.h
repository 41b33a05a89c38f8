// Loads the sets of pictures that a painter document's overlays need. Files that are missing or unreadable
// never stop a render: a transparent pixel takes their place.
#pragma once

#include <memory>

#include "overlay/document/PainterInfo.h"
#include "overlay/resources/PainterResources.h"

namespace vrx::overlay {

/// `name` is relative to the folder of the pictures and has backslashes. Not null unless memory runs out.
PainterPicture LoadResourcePicture(const XpString& name);

/// Null unless `scenarioType` is 1 to 4.
std::shared_ptr<TemplateResource> LoadTemplateResource(std::int32_t scenarioType);
std::shared_ptr<TennisMetaResource> LoadTennisMetaResource();

/// Gives each valid overlay of `info` its set; the others lose theirs.
void LoadPainterResources(PainterInfo& info);

}  // namespace vrx::overlay
