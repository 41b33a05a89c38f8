// Small picture files in memory for the loader's tests, written by the formats' own libraries, and the
// loading of such bytes.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/loader/ImageFormats.h"
#include "imaging/loader/StillImage.h"

namespace imagefiles {

using Bytes = std::string;

/// A sample by its column, its row and its channel, red first.
using SampleRule = std::function<int(int x, int y, int c)>;

/// Rows from the top without padding, `channels` samples a pixel, 8 bits each unless the writer says more.
struct Samples {
  int width = 0, height = 0, channels = 0;
  std::vector<std::uint8_t> data;

  const std::uint8_t* At(int x, int y) const {
    return &data[static_cast<std::size_t>((y * width + x) * channels)];
  }
};

/// Seeded noise, or smooth ramps with every channel its own.
Samples Noise(int width, int height, int channels);
Samples Smooth(int width, int height, int channels);

struct JpegForm {
  bool isProgressive = false;
  bool isAdobeInk = false;    // with four channels: the Adobe marker and YCCK
  bool isFromCamera = false;  // three channels, colour at half the size, and restart markers
};
Bytes Jpeg(const Samples& samples, const JpegForm& form = {});

struct PngForm {
  int colourType = 2;  // as in the file
  int depth = 8;       // samples of 16 bits come near the 8 bits; below 8 the sample's low bits are taken
  bool isInterlaced = false;
  std::vector<std::uint8_t> palette = {};       // RGB
  std::vector<std::uint8_t> paletteAlpha = {};  // with a palette
  int key = -1;                                 // the transparent sample value in every channel; -1 for none
};
Bytes Png(const Samples& samples, const PngForm& form = {});

struct GifForm {
  int screenWidth = 0, screenHeight = 0, left = 0, top = 0;
  int transparent = -1;
  bool isInterlaced = false;
};
/// One channel: indices into a palette of 256, see GifColour.
Bytes Gif(const Samples& indices, const GifForm& form);
int GifColour(int index, int channel);

struct TiffForm {
  int photometric = 2;
  int compression = 1;
  int tile = 0;           // side in pixels, a multiple of 16; 0 for strips of 3 rows
  int extraSample = 0;    // TIFF's kind of the last channel; 0 for none
  bool isPlanar = false;  // strips of one channel after another
};
Bytes Tiff(const Samples& samples, const TiffForm& form = {});

/// The lowest `bytes` bytes of a number, in either order.
Bytes Little(std::uint32_t value, int bytes);
Bytes Big(std::uint32_t value, int bytes);

struct BmpForm {
  int bits = 24;
  std::uint32_t compression = 0;
  Bytes palette = {};  // or masks
  Bytes data;
};

Bytes Bmp(int width, int height, const BmpForm& form);

/// A grey TIFF whose directory comes before its strips, as in most files of cameras and scanners.
Bytes TiffInOrder(const Samples& samples, int photometric, int rowsPerStrip, bool isDeflated);

struct Loaded {
  XpResult result = XpOk;
  vrx::imaging::StillImage image;
  std::int32_t width = 0, height = 0;
  std::string problem;
};
Loaded Load(Bytes bytes, const vrx::imaging::StillImageRequest& request = {}, bool wantsPixels = true);

/// What a file that is not whole may give: nothing, or a part of the picture, each with the cause.
void ExpectErrorOrPart(const Loaded& loaded);

}  // namespace imagefiles
