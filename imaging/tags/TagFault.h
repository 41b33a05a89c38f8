// One thing that was wrong in stored tags, for the reader's report.
#pragma once

#include <cstdint>
#include <string>

namespace vrx::imaging {

struct TagFault {
  std::string ifd;        // "0", "1" and so on, "exif", "gps", "interop", "maker", or "sub" for any other
  std::uint16_t tag = 0;  // 0 when the IFD as a whole is meant
  std::string words;
  bool isLoss = false;  // something that the file holds is missing in the tree
};

}  // namespace vrx::imaging
