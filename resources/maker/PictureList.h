// What is to be drawn: the list in pictures.json, with animations unfolded into single pictures. Used by
// vrx-draw-pictures.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vrx::pictures {

struct Picture {
  std::string name;     // relative to the folder of the set, with backslashes
  std::string drawing;  // file name of the SVG template
  int width = 0;        // nominal, in pixels of a frame of 1920 by 1080
  int height = 0;
  std::map<std::string, std::string> values;  // for the places of the template

  /// Where it lies below `folder`, with `extension` in place of its own.
  std::filesystem::path PathBelow(const std::filesystem::path& folder, const char* extension) const;
};

/// Throws std::runtime_error or a JSON exception that says what is wrong with the list.
std::vector<Picture> ReadPictureList(const std::filesystem::path& file);

}  // namespace vrx::pictures
