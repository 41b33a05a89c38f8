// TIFF by libtiff's reading to RGBA: strips and tiles of whatever colour form it knows, some rows at a time.
#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "imaging/loader/ImageFormats.h"
#include "imaging/loader/TiffLab.h"

namespace vrx::imaging {

namespace {

constexpr std::int64_t kMaxBytesPerPixel = 8;                 // four channels of 16 bits
constexpr std::int64_t kSpareBytes = std::int64_t{16} << 20;  // for tables, and tiles beyond the edges
constexpr std::uint32_t kBandRows = 16;                       // at least, so that thin strips cost few calls
constexpr std::int64_t kMostMissing = 7;                      // times what is there of a file that is cut off
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

/// Goes on after a strip or tile that is damaged.
class RgbaImage {
 public:
  RgbaImage(TIFF* tiff, char* words) : m_isOpen(TIFFRGBAImageBegin(&m_image, tiff, 0, words) != 0) {}
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

/// What the library's callbacks reach.
struct TiffState {
  ImageReading& reading;
  int errors = 0;
  std::int64_t padding = 0;  // bytes that may still be read after the end of the file

  void Damaged(const char* words) {
    reading.Damaged(words);
    ++errors;
  }
};

TiffState& StateOf(void* handle) { return *static_cast<TiffState*>(handle); }

/// The library decodes no strip that it cannot read whole, so what the file lacks of its last one is read as
/// zeros.
tmsize_t ReadBytes(thandle_t handle, void* buffer, tmsize_t count) {
  if (count <= 0) return 0;
  TiffState& state = StateOf(handle);
  const auto read =
      static_cast<tmsize_t>(state.reading.Source().Read(buffer, static_cast<std::size_t>(count)));
  const tmsize_t padding = std::min<tmsize_t>(count - read, state.padding);
  if (read == 0 || padding <= 0) return read;
  std::memset(static_cast<char*>(buffer) + read, 0, static_cast<std::size_t>(padding));
  state.padding -= padding;
  state.Damaged("the file ends within the picture");
  return read + padding;
}

tmsize_t RefuseWrite(thandle_t, void*, tmsize_t) { return -1; }

toff_t SeekTo(thandle_t handle, toff_t offset, int whence) {
  ImageSource& source = StateOf(handle).reading.Source();
  const std::int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? source.Position() : source.Size();
  std::int64_t position = 0;
  if (__builtin_add_overflow(base, static_cast<std::int64_t>(offset), &position) || !source.Seek(position)) {
    return static_cast<toff_t>(-1);
  }
  return static_cast<toff_t>(position);
}

int KeepOpen(thandle_t) { return 0; }
toff_t SizeOf(thandle_t handle) { return static_cast<toff_t>(StateOf(handle).reading.Source().Size()); }

/// The first message is kept; a result above 0 keeps the library's global handler silent.
int OnError(TIFF*, void* handle, const char*, const char* format, va_list arguments) {
  char words[kWords];
  std::vsnprintf(words, sizeof words, format, arguments);
  StateOf(handle).Damaged(words);
  return 1;
}

int IgnoreWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

TiffPtr OpenTiff(TiffState& state) {
  const OptionsPtr options(TIFFOpenOptionsAlloc());
  if (options == nullptr) return nullptr;
  const std::int64_t pixels = state.reading.Request().limits.pixels;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), pixels * kMaxBytesPerPixel + kSpareBytes);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, &state);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), IgnoreWarning, &state);
  // "m" keeps the library from mapping the file.
  return TiffPtr(TIFFClientOpenExt("picture", "rm", &state, ReadBytes, RefuseWrite, SeekTo, KeepOpen, SizeOf,
                                   nullptr, nullptr, options.get()));
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

/// The library takes an unpacked tile only from a raw buffer of exactly its size, which its own buffers,
/// rounded up, may not have. False, with the failure noted, without memory.
bool GiveTileBuffer(ImageReading& reading, TIFF* tiff, std::unique_ptr<unsigned char[]>& buffer) {
  std::uint16_t compression = COMPRESSION_NONE;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &compression);
  if (TIFFIsTiled(tiff) == 0 || compression != COMPRESSION_NONE) return true;
  const tmsize_t bytes = TIFFTileSize(tiff);
  if (bytes <= 0) return reading.Damaged("the picture's tiles have no size");
  buffer.reset(new (std::nothrow) unsigned char[static_cast<std::size_t>(bytes)]);
  if (buffer == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  return TIFFReadBufferSetup(tiff, buffer.get(), bytes) != 0 || reading.Damaged("the picture is damaged");
}

void CopyRow(const std::uint32_t* pixels, std::int32_t width, unsigned char* bgr) {
  for (std::int32_t x = 0; x < width; ++x, bgr += 3) {
    // Alpha is multiplied in already, which is composing on black.
    bgr[0] = static_cast<unsigned char>(TIFFGetB(pixels[x]));
    bgr[1] = static_cast<unsigned char>(TIFFGetG(pixels[x]));
    bgr[2] = static_cast<unsigned char>(TIFFGetR(pixels[x]));
  }
}

bool HasColour(const std::uint32_t* pixels, std::size_t count) {
  constexpr std::uint32_t kColour = 0x00FFFFFF;
  return std::any_of(pixels, pixels + count, [](std::uint32_t pixel) { return (pixel & kColour) != 0; });
}

/// Of a band with damage, the rows that show nothing may not have been decoded.
void ReadBand(TiffState& state, TIFFRGBAImage& rgba, std::uint32_t* band, std::uint32_t y,
              std::uint32_t rows) {
  ImageReading& reading = state.reading;
  const auto width = static_cast<std::size_t>(reading.Width());
  const int errors = state.errors;
  std::fill_n(band, width * rows, 0u);
  rgba.row_offset = static_cast<int>(y);
  if (!TIFFRGBAImageGet(&rgba, band, rgba.width, rows)) state.Damaged("the picture's data is damaged");
  for (std::uint32_t row = 0; row < rows; ++row) {
    const std::uint32_t* pixels = band + row * width;
    CopyRow(pixels, reading.Width(), reading.Row(static_cast<std::int32_t>(y + row)));
    if (state.errors == errors || HasColour(pixels, width)) reading.NoteRow();
  }
}

bool ReadRows(TiffState& state, TIFF* tiff) {
  ImageReading& reading = state.reading;
  const std::uint32_t bandRows = BandRows(reading, tiff);
  if (bandRows == 0) return false;
  std::unique_ptr<unsigned char[]> tileBuffer;
  if (!GiveTileBuffer(reading, tiff, tileBuffer)) return false;
  char words[kEmsgBytes] = {};
  RgbaImage image(tiff, words);
  if (!image.IsOpen()) return reading.Damaged(words[0] != 0 ? words : "the picture's form is not known");
  TIFFRGBAImage& rgba = image.Get();
  UseLabColours(rgba);
  rgba.orientation = rgba.req_orientation = ORIENTATION_TOPLEFT;
  const auto width = static_cast<std::size_t>(reading.Width());
  const std::unique_ptr<std::uint32_t[]> band(new (std::nothrow) std::uint32_t[width * bandRows]);
  if (band == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  if (!reading.TakeMemory(reading.Width(), reading.Height())) return false;
  const auto height = static_cast<std::uint32_t>(reading.Height());
  state.padding = reading.Source().Size() * kMostMissing;
  for (std::uint32_t y = 0; y < height; y += bandRows) {
    ReadBand(state, rgba, band.get(), y, std::min(bandRows, height - y));
  }
  return true;
}

}  // namespace

bool ReadTiff(ImageReading& reading) {
  TiffState state{reading};
  const TiffPtr tiff = OpenTiff(state);
  if (tiff == nullptr || reading.HasFailed()) return reading.Damaged("the file has no picture");
  std::uint32_t width = 0, height = 0;
  TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
  if (!reading.Start(width, height)) return false;
  return !reading.WantsPixels() || ReadRows(state, tiff.get());
}

}  // namespace vrx::imaging
