// JPEG files with application segments, built byte by byte around a small coded picture, and the codec on
// them.
#pragma once

#include <string>
#include <vector>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/codecs/XpImageIoJpeg.h"
#include "tests/imaging/ImageFiles.h"
#include "tests/imaging/TagBytes.h"

namespace jpegfiles {

using imagefiles::Bytes;

/// A segment with its marker and length.
Bytes App(int number, const Bytes& body);
Bytes Exif(const Bytes& tiff);
/// The thumbnail resource of a picture editor among others. `format` 1 is JPEG.
Bytes Resources(const Bytes& thumbnail, int format = 1);
/// A profile of version 2 that calls itself `name`.
Bytes Profile(const Bytes& name);
/// The picture with segments after its start marker, in place of its own JFIF segment.
Bytes WithSegments(const Bytes& jpeg, const std::vector<Bytes>& segments);

/// A TIFF block in which IFD 0 holds an orientation and, when not 0, the Exif IFD a colour space.
Bytes Orientation(int orientation, int colourSpace = 0);

/// A memory file over bytes that outlive it, with a name.
class Stream : public XpMemoryFile {
 public:
  explicit Stream(const Bytes& bytes, const char16_t* name = u"/a.jpg") {
    Attach(const_cast<char*>(bytes.data()), static_cast<std::int64_t>(bytes.size()), false);
    SetPathText(name);
  }
};

/// The pixels in rows without padding, BGR; empty for null.
Bytes Pixels(const XpImageIo::Picture& picture);

}  // namespace jpegfiles
