// Loads a picture from bytes in memory, for the loader's tests.
#pragma once

#include <string>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/loader/ImageFormats.h"
#include "imaging/loader/StillImage.h"

struct Loaded {
  XpResult result = XpOk;
  vrx::imaging::StillImage image;
  std::int32_t width = 0, height = 0;
  std::string problem;
};

inline Loaded Load(std::string bytes, const vrx::imaging::StillImageRequest& request,
                   bool wantsPixels = true) {
  XpMemoryFile file;
  file.Attach(bytes.data(), static_cast<std::int64_t>(bytes.size()), false);
  Loaded loaded;
  XpString problem;
  loaded.result = vrx::imaging::ReadStillImage(file, request, wantsPixels ? &loaded.image : nullptr,
                                               loaded.width, loaded.height, &problem);
  loaded.problem = problem.ToNarrow().c_str();
  return loaded;
}
