// The files of the overlays' pictures: what each is called, what it should measure, and where its picture
// goes. The loader, the tests of the build and `vrx resources` walk these tables.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "overlay/resources/PainterResources.h"
#include "vrx/XpString.h"

namespace vrx::overlay {

inline constexpr std::int32_t kAnyScenario = 0;

/// The frame for which the pictures have their nominal sizes.
inline constexpr std::int32_t kNominalFrameWidth = 1920;
inline constexpr std::int32_t kNominalFrameHeight = 1080;

/// The file that holds the picture `name` doubled: a PNG in the folder "2x".
XpString DoubledPictureName(const XpString& name);

/// One picture of a set, or the frames of an animation. Names are relative to the folder of the pictures.
template <class Set>
struct PictureRow {
  const char16_t* name;  // of an animation: with a conversion for the frame's number
  std::int32_t width;    // pixels in a frame of 1920 by 1080, for which the layouts are made
  std::int32_t height;
  PainterPicture Set::*picture = nullptr;
  std::vector<PainterPicture> Set::*frames = nullptr;  // of an animation; `picture` is then null
  std::int32_t frameCount = 1;                         // numbered from 0
  std::int32_t scenario = kAnyScenario;                // of TemplateInfo

  XpString GetName(std::int32_t frame) const;
};

/// In the order of loading.
std::span<const PictureRow<TemplateResource>> TemplatePictures() noexcept;
std::span<const PictureRow<TennisMetaResource>> TennisPictures() noexcept;

struct PictureFile {
  XpString name;
  std::int32_t width;
  std::int32_t height;
};

/// Each file of both tables, animations frame by frame.
std::vector<PictureFile> ListPictureFiles();

}  // namespace vrx::overlay
