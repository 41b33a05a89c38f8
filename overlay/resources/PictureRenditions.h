// The pictures of an overlay in the sizes in which its frames show them, each made once. Painters keep one
// for their set.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <tuple>

#include "overlay/resources/PainterResources.h"

namespace vrx::overlay {

class PictureRenditions {
 public:
  /// Forgets all renditions. `resources` brings the doubled pictures and may be null.
  void Reset(std::shared_ptr<const PainterResourceBase> resources);
  /// Forgets the renditions, when the size of the frames changes.
  void Forget() { m_made.clear(); }

  /// The picture itself where it has that size; otherwise a smooth copy, from the doubled picture where the
  /// nominal one is too small. With straight alpha; null for an empty picture or size, and without memory.
  /// Valid until the renditions are forgotten.
  const XpPixmap32* Get(const PainterPicture& picture, std::int32_t width, std::int32_t height);

 private:
  const XpPixmapBase& SourceFor(const XpPixmapBase& picture, std::int32_t width, std::int32_t height) const;

  struct Rendition {
    PainterPicture picture;  // keeps the address in the key from being used again
    std::unique_ptr<XpPixmap32> scaled;
  };
  using Key = std::tuple<const XpPixmapBase*, std::int32_t, std::int32_t>;

  std::shared_ptr<const PainterResourceBase> m_resources;
  std::map<Key, Rendition> m_made;
};

}  // namespace vrx::overlay
