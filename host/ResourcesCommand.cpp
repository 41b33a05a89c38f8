#include "host/Commands.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/Console.h"
#include "overlay/resources/PictureFile.h"
#include "overlay/resources/PictureTable.h"
#include "overlay/resources/ResourceFolder.h"

namespace vrx::host {
namespace {

struct ResourcesOptions {
  bool json = false;
};

struct FoundPicture {
  overlay::PictureFile file;
  std::int32_t width = 0;  // pixels; 0 when the picture cannot be used
  std::int32_t height = 0;
  bool hasAlpha = false;
  XpString problem;

  bool IsUsable() const { return width > 0; }
  bool HasNominalSize() const { return width == file.width && height == file.height; }
};

FoundPicture LookAt(const XpString& folder, const overlay::PictureFile& file) {
  FoundPicture found{.file = file};
  const auto picture = overlay::LoadPictureFile(overlay::ResourcePath(folder, file.name), &found.problem);
  if (picture == nullptr) return found;
  found.width = picture->width;
  found.height = picture->height;
  found.hasAlpha = picture->GetPlaneBitsPerPixel(0) == 32;
  return found;
}

void PrintText(const XpString& folder, const std::vector<FoundPicture>& pictures, std::ptrdiff_t missing) {
  std::printf("Folder    %s\n", Plain(folder).c_str());
  std::printf("Pictures  %zu, of which %td cannot be used\n\n", pictures.size(), missing);
  for (const FoundPicture& picture : pictures) {
    const std::string name = Plain(picture.file.name);
    if (!picture.IsUsable()) {
      std::printf("%-58s nothing is drawn: %s\n", name.c_str(), Plain(picture.problem).c_str());
      continue;
    }
    std::printf("%-58s %d x %d", name.c_str(), picture.width, picture.height);
    if (!picture.HasNominalSize())
      std::printf(", scaled to %d x %d", picture.file.width, picture.file.height);
    std::puts(picture.hasAlpha ? "" : ", no transparency");
  }
}

Json PictureJson(const FoundPicture& picture) {
  Json object{{"file", Utf8(picture.file.name)},
              {"usable", picture.IsUsable()},
              {"nominalWidth", picture.file.width},
              {"nominalHeight", picture.file.height}};
  if (picture.IsUsable()) {
    object["width"] = picture.width;
    object["height"] = picture.height;
    object["alpha"] = picture.hasAlpha;
  } else {
    object["problem"] = Utf8(picture.problem);
  }
  return object;
}

int RunResources(const ResourcesOptions& options) {
  const XpString folder = overlay::FindResourceFolder();
  std::vector<FoundPicture> pictures;
  for (const auto& file : overlay::ListPictureFiles()) pictures.push_back(LookAt(folder, file));
  const auto missing =
      std::ranges::count_if(pictures, [](const FoundPicture& picture) { return !picture.IsUsable(); });
  if (options.json) {
    Json list = Json::array();
    for (const FoundPicture& picture : pictures) list.push_back(PictureJson(picture));
    PrintJson({{"folder", Utf8(folder)}, {"pictures", list}}, 2);
  } else {
    PrintText(folder, pictures, missing);
  }
  return missing == 0 ? kDone : kFailed;
}

}  // namespace

CommandRun AddResources(CLI::App& command) {
  const auto options = std::make_shared<ResourcesOptions>();
  command.add_flag("--json", options->json, "Print one JSON document");
  command.footer("Exit status: 0 all pictures can be used, 1 some cannot and draw nothing, 2 wrong use.");
  return [options] { return RunResources(*options); };
}

}  // namespace vrx::host
