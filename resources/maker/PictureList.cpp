#include "resources/maker/PictureList.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "resources/maker/Swing.h"

namespace vrx::pictures {
namespace {

using Json = nlohmann::json;

std::string NumberText(double number) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.3f", number);
  return text;
}

/// A value is a text, a number, a list with one entry a frame, or an object: `first` in frame 0 and `step`
/// more in each later one.
std::string ValueText(const Json& value, int frame) {
  if (value.is_array()) return ValueText(value.at(static_cast<std::size_t>(frame)), frame);
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number()) return NumberText(value.get<double>());
  return NumberText(value.at("first").get<double>() + frame * value.at("step").get<double>());
}

/// "back_%02d.bmp" with the frame's number.
std::string NumberedName(const std::string& pattern, int frame) {
  const std::size_t start = pattern.find("%0");
  if (start == std::string::npos) return pattern;
  const std::size_t end = pattern.find('d', start);
  if (end == std::string::npos) throw std::runtime_error(pattern + ": the number has no end");
  const auto digits = static_cast<std::size_t>(std::stoi(pattern.substr(start + 2, end - start - 2)));
  std::string number = std::to_string(frame);
  if (number.size() < digits) number.insert(0, digits - number.size(), '0');
  return pattern.substr(0, start) + number + pattern.substr(end + 1);
}

Swing ReadSwing(const Json& entry) {
  Swing swing;
  for (const Json& row : entry.at("poses")) {
    const auto number = [&row](std::size_t i) { return row.at(i).get<double>(); };
    swing.poses.push_back({number(0), number(1), number(2), number(3), number(4)});
  }
  swing.head = {entry.at("head").at(0).get<double>(), entry.at("head").at(1).get<double>()};
  swing.grip = {entry.at("grip").at(0).get<double>(), entry.at("grip").at(1).get<double>()};
  swing.innerReach = entry.at("innerReach").get<double>();
  return swing;
}

Picture ReadPicture(const Json& entry, int frame) {
  Picture picture;
  picture.name = NumberedName(entry.at("file").get<std::string>(), frame);
  picture.drawing = entry.at("drawing").get<std::string>();
  picture.width = entry.at("size").at(0).get<int>();
  picture.height = entry.at("size").at(1).get<int>();
  const Json values = entry.value("values", Json::object());
  for (const auto& [name, value] : values.items()) picture.values[name] = ValueText(value, frame);
  return picture;
}

}  // namespace

std::filesystem::path Picture::PathBelow(const std::filesystem::path& folder, const char* extension) const {
  std::string native = name;
  std::replace(native.begin(), native.end(), '\\', '/');
  return (folder / native).replace_extension(extension);
}

std::vector<Picture> ReadPictureList(const std::filesystem::path& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error(file.string() + " cannot be read");
  const Json list = Json::parse(stream);
  std::vector<Picture> pictures;
  for (const Json& entry : list.at("pictures")) {
    const int frames = entry.value("frames", 1);
    for (int frame = 0; frame < frames; ++frame) {
      Picture picture = ReadPicture(entry, frame);
      if (const auto swing = entry.find("swing"); swing != entry.end()) {
        const Json& motion = list.at("swings").at(swing->get<std::string>());
        picture.values.merge(SwingValues(ReadSwing(motion), frame));
      }
      pictures.push_back(std::move(picture));
    }
  }
  return pictures;
}

}  // namespace vrx::pictures
