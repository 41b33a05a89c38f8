// Baseband documents for tests, written image by image.
#pragma once

#include <string>

inline std::string ImageText(int id, const std::string& path, long in, long out, int rotation = 0,
                             int mirror = 0) {
  return "<DecImage ImageId=\"" + std::to_string(id) + "\" ImagePath=\"" + path + "\" InFrame=\"" +
         std::to_string(in) + "\" OutFrame=\"" + std::to_string(out) +
         "\" RectTop=\"0\" RectBottom=\"0\" RectLeft=\"0\" RectRight=\"0\" Mirror=\"" +
         std::to_string(mirror) + "\" Rotation=\"" + std::to_string(rotation) + "\"/>\n";
}

inline std::string BasebandText(const std::string& images) {
  return "<VRXBaseband Version=\"1.00\"><Properties>"
         "<BasebandType SystemType=\"Video\" SourceType=\"ImageFile\"/></Properties><Timeline>\n" +
         images + "</Timeline></VRXBaseband>\n";
}

/// A picture of one pixel.
inline std::string PixelBmp() {
  using namespace std::string_literals;
  return "BM\x3A\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\1\0\0\0\1\0\0\0\1\0\x18\0"s + std::string(24, '\0') +
         std::string(4, '\x7F');
}
