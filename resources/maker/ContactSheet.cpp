#include "resources/maker/ContactSheet.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string>

#include "resources/maker/PictureWriter.h"

namespace vrx::pictures {
namespace {

constexpr int kGroundWidth = 1000;
constexpr int kGap = 12;

struct Ground {
  std::array<std::uint8_t, 3> colour;  // blue, green, red
};
constexpr std::array kGrounds{Ground{{240, 236, 232}}, Ground{{30, 24, 20}}};  // snow and night

/// Small pictures are shown enlarged, large ones and long animations reduced.
double ScaleOf(const Picture& picture) {
  constexpr double kFullWidth = kGroundWidth - 2.0 * kGap;
  if (picture.width > kFullWidth) return kFullWidth / picture.width;
  if (picture.width >= 500) return 0.75;
  if (picture.width >= 300) return picture.height >= 300 ? 0.36 : 0.23;
  if (picture.width >= 200) return 0.36;
  return picture.width <= 28 && picture.height <= 28 ? 3.0 : 1.0;
}

struct Shown {
  Pixels pixels;
  int x = 0;
  int y = 0;
};

/// Lays the pictures out in rows; each folder starts a new one. Gives the height that they take.
int LayOut(std::vector<Shown>& shown, const std::vector<std::string>& folders) {
  int x = kGap, y = kGap, rowHeight = 0;
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const Pixels& pixels = shown[i].pixels;
    const bool isNewFolder = i > 0 && folders[i] != folders[i - 1];
    const bool isOtherSize = i > 0 && pixels.height != shown[i - 1].pixels.height;
    if (x > kGap && (isNewFolder || isOtherSize || x + pixels.width + kGap > kGroundWidth)) {
      x = kGap;
      y += rowHeight + kGap;
      rowHeight = 0;
    }
    shown[i].x = x;
    shown[i].y = y;
    x += pixels.width + kGap;
    rowHeight = std::max(rowHeight, pixels.height);
  }
  return y + rowHeight + kGap;
}

void Lay(const Shown& picture, int left, Pixels& sheet) {
  for (int y = 0; y < picture.pixels.height; ++y) {
    for (int x = 0; x < picture.pixels.width; ++x) {
      const std::uint8_t* from = picture.pixels.At(x, y);
      std::uint8_t* to = sheet.At(left + picture.x + x, picture.y + y);
      for (int channel = 0; channel < 3; ++channel) {
        const int mixed = from[channel] * from[3] + to[channel] * (255 - from[3]);
        to[channel] = static_cast<std::uint8_t>((mixed + 127) / 255);
      }
    }
  }
}

Pixels SheetOf(const std::vector<Shown>& shown, int height) {
  Pixels sheet{kGroundWidth * static_cast<int>(kGrounds.size()), height, {}};
  sheet.bytes.resize(static_cast<std::size_t>(sheet.width) * static_cast<std::size_t>(sheet.height) * 4, 255);
  for (std::size_t i = 0; i < kGrounds.size(); ++i) {
    const int left = static_cast<int>(i) * kGroundWidth;
    for (int y = 0; y < height; ++y) {
      for (int x = left; x < left + kGroundWidth; ++x) std::ranges::copy(kGrounds[i].colour, sheet.At(x, y));
    }
    for (const Shown& picture : shown) Lay(picture, left, sheet);
  }
  return sheet;
}

}  // namespace

void WriteContactSheets(const std::vector<Picture>& pictures, const std::filesystem::path& drawings,
                        const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  std::set<std::string> sheets;
  for (const Picture& picture : pictures) sheets.insert(picture.name.substr(0, picture.name.find('\\')));
  for (const std::string& sheet : sheets) {
    std::vector<Shown> shown;
    std::vector<std::string> folders;
    for (const Picture& picture : pictures) {
      if (!picture.name.starts_with(sheet + '\\')) continue;
      shown.push_back({Draw(picture, drawings, ScaleOf(picture))});
      folders.push_back(picture.name.substr(0, picture.name.rfind('\\')));
    }
    const int height = LayOut(shown, folders);
    WritePng(SheetOf(shown, height), folder / ("overlay-" + sheet + ".png"));
  }
}

}  // namespace vrx::pictures
