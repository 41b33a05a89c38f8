#include "overlay/resources/LoadResources.h"

#include <utility>

#include "imaging/pixmap/XpPixmapBlock.h"
#include "overlay/resources/PictureFile.h"
#include "overlay/resources/PictureTable.h"
#include "overlay/resources/ResourceFolder.h"

namespace vrx::overlay {
namespace {

constexpr std::int32_t kFirstScenario = 1;
constexpr std::int32_t kLastScenario = 4;
constexpr std::uint8_t kShadeAlpha = 178;

PainterPicture LoadFrom(const XpString& folder, const XpString& name) {
  OwnedPicture picture = LoadPictureFile(ResourcePath(folder, name));
  if (picture == nullptr) picture = MakeSolidPixmap(0, 0, 0, 0);
  return PainterPicture(picture.release());
}

template <class Set>
void LoadRow(const XpString& folder, const PictureRow<Set>& row, Set& set) {
  if (row.frames == nullptr) {
    set.*row.picture = LoadFrom(folder, row.GetName(0));
    return;
  }
  for (std::int32_t frame = 0; frame < row.frameCount; ++frame) {
    (set.*row.frames).push_back(LoadFrom(folder, row.GetName(frame)));
  }
}

}  // namespace

PainterPicture LoadResourcePicture(const XpString& name) { return LoadFrom(FindResourceFolder(), name); }

std::shared_ptr<TemplateResource> LoadTemplateResource(std::int32_t scenarioType) {
  if (scenarioType < kFirstScenario || scenarioType > kLastScenario) return nullptr;
  auto set = std::make_shared<TemplateResource>();
  const XpString folder = FindResourceFolder();
  for (const auto& row : TemplatePictures()) {
    if (row.scenario == kAnyScenario || row.scenario == scenarioType) LoadRow(folder, row, *set);
  }
  return set;
}

std::shared_ptr<TennisMetaResource> LoadTennisMetaResource() {
  auto set = std::make_shared<TennisMetaResource>();
  const XpString folder = FindResourceFolder();
  for (const auto& row : TennisPictures()) LoadRow(folder, row, *set);
  set->shade = PainterPicture(MakeSolidPixmap(0, 0, 0, kShadeAlpha).release());
  return set;
}

void LoadPainterResources(PainterInfo& info) {
  info.templateInfo.resources =
      info.templateInfo.valid ? LoadTemplateResource(info.templateInfo.scenarioType) : nullptr;
  info.tennisMetaInfo.resources = info.tennisMetaInfo.valid ? LoadTennisMetaResource() : nullptr;
}

}  // namespace vrx::overlay
