// TIFF by libtiff's reading to RGBA: strips and tiles of whatever colour form it knows, some rows at a time.
#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "imaging/loader/ImageFormats.h"

namespace vrx::imaging {

namespace {

constexpr std::int64_t kMaxBytesPerPixel = 8;                 // four channels of 16 bits
constexpr std::int64_t kSpareBytes = std::int64_t{16} << 20;  // for tables, and tiles beyond the edges
constexpr std::uint32_t kBandRows = 16;                       // at least, so that thin strips cost few calls
constexpr std::size_t kWords = 200;
constexpr std::size_t kEmsgBytes = 1024;  // what TIFFRGBAImageBegin may write

struct CloseTiff {
  void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};
struct FreeOptions {
  void operator()(TIFFOpenOptions* options) const noexcept { TIFFOpenOptionsFree(options); }
};
using TiffPtr = std::unique_ptr<TIFF, CloseTiff>;
using OptionsPtr = std::unique_ptr<TIFFOpenOptions, FreeOptions>;

class RgbaImage {
 public:
  RgbaImage(TIFF* tiff, char* words) : m_isOpen(TIFFRGBAImageBegin(&m_image, tiff, 1, words) != 0) {}
  RgbaImage(const RgbaImage&) = delete;
  RgbaImage& operator=(const RgbaImage&) = delete;
  ~RgbaImage() {
    if (m_isOpen) TIFFRGBAImageEnd(&m_image);
  }
  bool IsOpen() const { return m_isOpen; }
  TIFFRGBAImage& Get() { return m_image; }

 private:
  TIFFRGBAImage m_image{};
  bool m_isOpen;
};

ImageReading& ReadingOf(void* handle) { return *static_cast<ImageReading*>(handle); }

tmsize_t ReadBytes(thandle_t handle, void* buffer, tmsize_t count) {
  if (count <= 0) return 0;
  return static_cast<tmsize_t>(ReadingOf(handle).Source().Read(buffer, static_cast<std::size_t>(count)));
}

tmsize_t RefuseWrite(thandle_t, void*, tmsize_t) { return -1; }

toff_t SeekTo(thandle_t handle, toff_t offset, int whence) {
  ImageSource& source = ReadingOf(handle).Source();
  const std::int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? source.Position() : source.Size();
  std::int64_t position = 0;
  if (__builtin_add_overflow(base, static_cast<std::int64_t>(offset), &position) || !source.Seek(position)) {
    return static_cast<toff_t>(-1);
  }
  return static_cast<toff_t>(position);
}

int KeepOpen(thandle_t) { return 0; }
toff_t SizeOf(thandle_t handle) { return static_cast<toff_t>(ReadingOf(handle).Source().Size()); }

/// The first message goes into the reading; a result above 0 keeps the library's global handler silent.
int OnError(TIFF*, void* handle, const char*, const char* format, va_list arguments) {
  char words[kWords];
  std::vsnprintf(words, sizeof words, format, arguments);
  ReadingOf(handle).Damaged(words);
  return 1;
}

int IgnoreWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

TiffPtr OpenTiff(ImageReading& reading) {
  const OptionsPtr options(TIFFOpenOptionsAlloc());
  if (options == nullptr) return nullptr;
  const std::int64_t pixels = reading.Request().limits.pixels;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), pixels * kMaxBytesPerPixel + kSpareBytes);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, &reading);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), IgnoreWarning, &reading);
  // "m" keeps the library from mapping the file.
  return TiffPtr(TIFFClientOpenExt("picture", "rm", &reading, ReadBytes, RefuseWrite, SeekTo, KeepOpen,
                                   SizeOf, nullptr, nullptr, options.get()));
}

/// Rows that one call reads: whole strips or tiles. 0, with the failure noted, when a strip or tile claims
/// more memory than a picture of this size can need.
std::uint32_t BandRows(ImageReading& reading, TIFF* tiff) {
  const bool isTiled = TIFFIsTiled(tiff) != 0;
  std::uint32_t unit = 0;
  if (isTiled) {
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &unit);
  } else {
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &unit);
  }
  const std::uint64_t bytes = isTiled ? TIFFTileSize64(tiff) : TIFFStripSize64(tiff);
  const std::int64_t most =
      std::int64_t{reading.Width()} * reading.Height() * kMaxBytesPerPixel + kSpareBytes;
  if (unit == 0 || bytes == 0) {
    reading.Damaged("the picture has no pixels");
    return 0;
  }
  if (bytes > static_cast<std::uint64_t>(most)) {
    reading.Fail(XpErrOutOfMemory, "a strip or tile is too large for the picture");
    return 0;
  }
  const auto height = static_cast<std::uint32_t>(reading.Height());
  if (unit >= height) return height;
  return std::min(height, unit * ((kBandRows + unit - 1) / unit));
}

void CopyRow(const std::uint32_t* pixels, std::int32_t width, unsigned char* bgr) {
  for (std::int32_t x = 0; x < width; ++x, bgr += 3) {
    // Alpha is multiplied in already, which is composing on black.
    bgr[0] = static_cast<unsigned char>(TIFFGetB(pixels[x]));
    bgr[1] = static_cast<unsigned char>(TIFFGetG(pixels[x]));
    bgr[2] = static_cast<unsigned char>(TIFFGetR(pixels[x]));
  }
}

bool ReadRows(ImageReading& reading, TIFF* tiff) {
  const std::uint32_t bandRows = BandRows(reading, tiff);
  if (bandRows == 0) return false;
  char words[kEmsgBytes] = {};
  RgbaImage image(tiff, words);
  if (!image.IsOpen()) return reading.Damaged(words[0] != 0 ? words : "the picture's form is not known");
  TIFFRGBAImage& rgba = image.Get();
  rgba.orientation = rgba.req_orientation = ORIENTATION_TOPLEFT;
  const auto width = static_cast<std::size_t>(reading.Width());
  const std::unique_ptr<std::uint32_t[]> band(new (std::nothrow) std::uint32_t[width * bandRows]);
  if (band == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  if (!reading.TakeMemory(reading.Width(), reading.Height())) return false;
  const auto height = static_cast<std::uint32_t>(reading.Height());
  for (std::uint32_t y = 0; y < height; y += bandRows) {
    const std::uint32_t rows = std::min(bandRows, height - y);
    rgba.row_offset = static_cast<int>(y);
    if (!TIFFRGBAImageGet(&rgba, band.get(), rgba.width, rows) || reading.HasFailed()) {
      return reading.Damaged("the picture's data is damaged");
    }
    for (std::uint32_t row = 0; row < rows; ++row) {
      CopyRow(band.get() + row * width, reading.Width(), reading.Row(static_cast<std::int32_t>(y + row)));
    }
  }
  return true;
}

}  // namespace

bool ReadTiff(ImageReading& reading) {
  const TiffPtr tiff = OpenTiff(reading);
  if (tiff == nullptr || reading.HasFailed()) return reading.Damaged("the file has no picture");
  std::uint32_t width = 0, height = 0;
  TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
  if (!reading.Start(width, height)) return false;
  return !reading.WantsPixels() || ReadRows(reading, tiff.get());
}

}  // namespace vrx::imaging
