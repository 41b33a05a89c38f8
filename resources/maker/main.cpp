// vrx-draw-pictures: draws the pictures of the overlays from their descriptions. The build runs it.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include <CLI/CLI.hpp>

#include "resources/maker/ContactSheet.h"
#include "resources/maker/Drawing.h"
#include "resources/maker/PictureList.h"
#include "resources/maker/PictureWriter.h"

namespace {

using namespace vrx::pictures;

constexpr char kDoubledFolder[] = "2x";

void WriteSet(const std::vector<Picture>& pictures, const std::filesystem::path& drawings,
              const std::filesystem::path& folder, bool doubled) {
  for (const Picture& picture : pictures) {
    const std::filesystem::path file =
        doubled ? picture.PathBelow(folder / kDoubledFolder, ".png") : picture.PathBelow(folder, ".bmp");
    std::filesystem::create_directories(file.parent_path());
    const Pixels pixels = Draw(picture, drawings, doubled ? 2 : 1);
    doubled ? WritePng(pixels, file) : WriteBmp(pixels, file);
  }
}

}  // namespace

int main(int argc, char** argv) try {
  CLI::App app("Draws the pictures of the overlays.", "vrx-draw-pictures");
  std::filesystem::path source, output, sheets;
  app.add_option("SOURCE", source, "Folder with pictures.json and drawings/")->required();
  app.add_option("-o,--output", output, "Folder to write the set and its doubled copy into");
  app.add_option("--sheets", sheets, "Folder to write contact sheets into, as PNG files");
  CLI11_PARSE(app, argc, argv);
  const std::vector<Picture> pictures = ReadPictureList(source / "pictures.json");
  const std::filesystem::path drawings = source / "drawings";
  if (!output.empty()) {
    WriteSet(pictures, drawings, output, false);
    WriteSet(pictures, drawings, output, true);
  }
  if (!sheets.empty()) WriteContactSheets(pictures, drawings, sheets);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "vrx-draw-pictures: %s\n", error.what());
  return 1;
}
