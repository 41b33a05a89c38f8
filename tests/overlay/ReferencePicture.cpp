#include "tests/overlay/ReferencePicture.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <filesystem>

#include "overlay/resources/PictureFile.h"

namespace vrx::test_support {
namespace {

bool AreSame(const XpPixmap32& drawn, const XpPixmapBase* wanted) {
  if (wanted == nullptr || wanted->GetPlaneBitsPerPixel(0) != 32) return false;
  if (wanted->width != drawn.width || wanted->height != drawn.height) return false;
  for (std::uint32_t i = 0; i < drawn.size; i += 4) {
    const bool isVisible = (drawn.data[i + 3] | wanted->data[i + 3]) != 0;
    if (isVisible && std::memcmp(drawn.data + i, wanted->data + i, 4) != 0) return false;
  }
  return true;
}

std::string WritePng(const XpPixmap32& picture, const std::string& name) {
  const std::string path = (std::filesystem::path(testing::TempDir()) / (name + ".png")).string();
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.width);
  image.height = static_cast<png_uint_32>(picture.height);
  image.format = PNG_FORMAT_BGRA;
  png_image_write_to_file(&image, path.c_str(), 0, picture.data, 0, nullptr);
  return path;
}

}  // namespace

void ExpectReference(const XpPixmap32& drawn, const std::string& name) {
  const std::string reference = std::string(VRX_REFERENCE_PICTURES) + "/" + name + ".png";
  const overlay::OwnedPicture wanted = overlay::LoadPictureFile(XpNarrowString(reference).ToWide());
  if (AreSame(drawn, wanted.get())) return;
  ADD_FAILURE() << "not as in " << reference << ": " << WritePng(drawn, name);
}

}  // namespace vrx::test_support
