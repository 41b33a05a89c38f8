#include "overlay/resources/PictureRenditions.h"

#include <utility>

#include "drawing/PictureScaler.h"

namespace vrx::overlay {
namespace {

const XpPixmap32* AsIs(const XpPixmapBase& picture, std::int32_t width, std::int32_t height) {
  if (picture.width != width || picture.height != height) return nullptr;
  const auto* straight = dynamic_cast<const XpPixmap32*>(&picture);
  return straight != nullptr && straight->data != nullptr ? straight : nullptr;
}

}  // namespace

void PictureRenditions::Reset(std::shared_ptr<const PainterResourceBase> resources) {
  m_resources = std::move(resources);
  Forget();
}

const XpPixmapBase& PictureRenditions::SourceFor(const XpPixmapBase& picture, std::int32_t width,
                                                 std::int32_t height) const {
  if (m_resources == nullptr || (width <= picture.width && height <= picture.height)) return picture;
  const auto doubled = m_resources->doubled.find(&picture);
  return doubled == m_resources->doubled.end() ? picture : *doubled->second;
}

const XpPixmap32* PictureRenditions::Get(const PainterPicture& picture, std::int32_t width,
                                         std::int32_t height) {
  if (!picture || width < 1 || height < 1) return nullptr;
  const XpPixmapBase& source = SourceFor(*picture, width, height);
  if (const XpPixmap32* same = AsIs(source, width, height)) return same;
  const auto [place, isNew] = m_made.try_emplace({picture.Get(), width, height});
  if (isNew) place->second = {picture, drawing::ScalePicture(source, width, height)};
  return place->second.scaled.get();
}

}  // namespace vrx::overlay
