// A JPEG file as the cameras write it, with everything that a rewrite has to bring along: dates, a maker note
// with a preview and a rating, a thumbnail, a profile, XMP and further pictures.
#pragma once

#include "tests/imaging/JpegFiles.h"

namespace jpegfiles {

inline constexpr char kCameraDate[] = "2020:01:02 03:04:05";

struct CameraForm {
  bool hasNote = true;
  bool hasRating = true;
  bool hasThumbnail = true;
  bool hasBrokenTag = false;  // a value after the end of the file
  Bytes noteDate = kCameraDate;
  std::uint32_t filling = 0;         // bytes of a tag that makes the Exif block larger
  std::vector<Bytes> segments = {};  // after Exif
  Bytes preview = {};                // after the picture
  Bytes tail = {};                   // after everything
};

Bytes CameraThumbnail();
Bytes CameraPicture();  // the coded picture alone
Bytes CameraFile(const CameraForm& form = {});

}  // namespace jpegfiles
