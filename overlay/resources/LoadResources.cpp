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

/// One of another size than twice that of `picture` does not belong to it.
void LoadDoubled(const XpString& folder, const XpString& name, const PainterPicture& picture,
                 PainterResourceBase& set) {
  OwnedPicture doubled = LoadPictureFile(ResourcePath(folder, DoubledPictureName(name)));
  if (doubled == nullptr || doubled->width != 2 * picture->width || doubled->height != 2 * picture->height) {
    return;
  }
  set.doubled[picture.Get()] = PainterPicture(doubled.release());
}

template <class Set>
void LoadRow(const XpString& folder, const PictureRow<Set>& row, PictureScale scale, Set& set) {
  for (std::int32_t frame = 0; frame < row.frameCount; ++frame) {
    const PainterPicture picture = LoadFrom(folder, row.GetName(frame));
    if (row.frames == nullptr) {
      set.*row.picture = picture;
    } else {
      (set.*row.frames).push_back(picture);
    }
    if (scale == PictureScale::Doubled) LoadDoubled(folder, row.GetName(frame), picture, set);
  }
}

PictureScale ScaleFor(std::int32_t width, std::int32_t height) {
  const bool isLarger = width > kNominalFrameWidth || height > kNominalFrameHeight;
  return isLarger ? PictureScale::Doubled : PictureScale::Nominal;
}

}  // namespace

PainterPicture LoadResourcePicture(const XpString& name) { return LoadFrom(FindResourceFolder(), name); }

std::shared_ptr<TemplateResource> LoadTemplateResource(std::int32_t scenarioType, PictureScale scale) {
  if (scenarioType < kFirstScenario || scenarioType > kLastScenario) return nullptr;
  auto set = std::make_shared<TemplateResource>();
  const XpString folder = FindResourceFolder();
  for (const auto& row : TemplatePictures()) {
    if (row.scenario == kAnyScenario || row.scenario == scenarioType) LoadRow(folder, row, scale, *set);
  }
  return set;
}

std::shared_ptr<TennisMetaResource> LoadTennisMetaResource(PictureScale scale) {
  auto set = std::make_shared<TennisMetaResource>();
  const XpString folder = FindResourceFolder();
  for (const auto& row : TennisPictures()) LoadRow(folder, row, scale, *set);
  set->shade = PainterPicture(MakeSolidPixmap(0, 0, 0, kShadeAlpha).release());
  return set;
}

void LoadPainterResources(PainterInfo& info, std::int32_t width, std::int32_t height) {
  const PictureScale scale = ScaleFor(width, height);
  info.templateInfo.resources =
      info.templateInfo.valid ? LoadTemplateResource(info.templateInfo.scenarioType, scale) : nullptr;
  info.tennisMetaInfo.resources = info.tennisMetaInfo.valid ? LoadTennisMetaResource(scale) : nullptr;
}

}  // namespace vrx::overlay
