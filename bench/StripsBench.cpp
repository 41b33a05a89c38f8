// What reading a TIFF file of strips and a GIF file costs, beside the least that it can cost: the read of the
// bytes and the conversion of the rows, and giflib's decoding alone. libtiff stands beside the strips.
#include <benchmark/benchmark.h>
#include <gif_lib.h>
#include <tiffio.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/file/XpFile.h"
#include "foundation/platform/Paths.h"
#include "imaging/codecs/XpImageIoGIF.h"
#include "imaging/codecs/XpImageIoTIFF.h"

namespace {

constexpr std::uint32_t kWidth = 4608, kHeight = 3456;  // 16 megapixels
constexpr std::uint32_t kRowBytes = kWidth * 3, kRowsPerStrip = 16;

std::uint8_t Sample(std::uint32_t x, std::uint32_t y) {
  return static_cast<std::uint8_t>((x * x + y * y) / 4096 + x / 3 + y / 5);
}

/// The files in a folder of their own.
class Files {
 public:
  Files() {
    std::string folder = "vrx-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) std::abort();
    m_folder = std::filesystem::absolute(folder);
    WriteTiff();
    WriteGif();
  }
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;
  ~Files() { std::filesystem::remove_all(m_folder); }

  std::string Tiff() const { return m_folder / "strips.tif"; }
  std::string Gif() const { return m_folder / "picture.gif"; }

 private:
  void WriteTiff() const {
    TIFF* tiff = TIFFOpen(Tiff().c_str(), "w");
    if (tiff == nullptr) std::abort();
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kHeight);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kRowsPerStrip);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    std::vector<std::uint8_t> row(kRowBytes);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      for (std::uint32_t x = 0; x < kRowBytes; ++x) row[x] = Sample(x, y);
      TIFFWriteScanline(tiff, row.data(), y, 0);
    }
    TIFFClose(tiff);
  }

  void WriteGif() const {
    int error = 0;
    GifFileType* gif = EGifOpenFileName(Gif().c_str(), false, &error);
    if (gif == nullptr) std::abort();
    std::vector<GifColorType> colours(256);
    for (int i = 0; i < 256; ++i) {
      const auto level = static_cast<GifByteType>(i);
      colours[static_cast<std::size_t>(i)] = {level, static_cast<GifByteType>(255 - i), level};
    }
    ColorMapObject* map = GifMakeMapObject(256, colours.data());
    EGifPutScreenDesc(gif, kWidth / 2, kHeight / 2, 8, 0, map);
    EGifPutImageDesc(gif, 0, 0, kWidth / 2, kHeight / 2, false, nullptr);
    std::vector<GifPixelType> row(kWidth / 2);
    for (std::uint32_t y = 0; y < kHeight / 2; ++y) {
      for (std::uint32_t x = 0; x < kWidth / 2; ++x)
        row[x] = static_cast<GifPixelType>(Sample(x / 8, y / 8) & 0xF8);
      EGifPutLine(gif, row.data(), static_cast<int>(row.size()));
    }
    GifFreeMapObject(map);
    EGifCloseFile(gif, &error);
  }

  std::filesystem::path m_folder;
};

const Files& TheFiles() {
  static const Files files;
  return files;
}

void Check(benchmark::State& state, bool isDone) {
  if (!isDone) state.SkipWithError("failed");
}

void LoadStripTiff(benchmark::State& state) {
  const XpString path = vrx::platform::PathFromNative(TheFiles().Tiff());
  for (auto _ : state) Check(state, XpImageIoTIFF().Load(path, 1, {}) != nullptr);
}
BENCHMARK(LoadStripTiff)->Unit(benchmark::kMillisecond);

/// The bytes of the file, some rows at a time, into rows of a new picture with red and blue exchanged.
void ReadAndConvertAlone(benchmark::State& state) {
  const XpString path = vrx::platform::PathFromNative(TheFiles().Tiff());
  std::vector<std::uint8_t> strip(std::size_t{kRowBytes} * kRowsPerStrip);
  for (auto _ : state) {
    XpFile file(path);
    XpPixmap24NoHandle picture;
    Check(state, file.Open(XpOpenRead, XpShareRead) == XpOk && picture.Allocate(kWidth, kHeight) == XpOk);
    file.Seek(8, XpSeekStart);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      const std::uint32_t row = y % kRowsPerStrip;
      if (row == 0) Check(state, file.Read(strip.data(), strip.size(), nullptr) == XpOk);
      const std::uint8_t* rgb = strip.data() + std::size_t{row} * kRowBytes;
      unsigned char* bgr = picture.GetPlane(0)->Row(static_cast<std::int32_t>(y));
      for (std::uint32_t x = 0; x < kWidth; ++x, rgb += 3, bgr += 3) {
        bgr[0] = rgb[2];
        bgr[1] = rgb[1];
        bgr[2] = rgb[0];
      }
    }
    benchmark::DoNotOptimize(picture.data);
  }
}
BENCHMARK(ReadAndConvertAlone)->Unit(benchmark::kMillisecond);

void LibtiffStripsAlone(benchmark::State& state) {
  std::vector<std::uint8_t> picture(std::size_t{kRowBytes} * kHeight);
  for (auto _ : state) {
    TIFF* tiff = TIFFOpen(TheFiles().Tiff().c_str(), "r");
    const std::uint32_t strips = TIFFNumberOfStrips(tiff);
    for (std::uint32_t i = 0; i < strips; ++i) {
      TIFFReadEncodedStrip(tiff, i, picture.data() + std::size_t{i} * kRowsPerStrip * kRowBytes, -1);
    }
    TIFFClose(tiff);
    benchmark::DoNotOptimize(picture.data());
  }
}
BENCHMARK(LibtiffStripsAlone)->Unit(benchmark::kMillisecond);

void LoadGif(benchmark::State& state) {
  const XpString path = vrx::platform::PathFromNative(TheFiles().Gif());
  for (auto _ : state) Check(state, XpImageIoGIF().Load(path, 1, {}) != nullptr);
}
BENCHMARK(LoadGif)->Unit(benchmark::kMillisecond);

void GiflibRowsAlone(benchmark::State& state) {
  std::vector<GifPixelType> picture(std::size_t{kWidth / 2} * (kHeight / 2));
  for (auto _ : state) {
    int error = 0;
    GifFileType* gif = DGifOpenFileName(TheFiles().Gif().c_str(), &error);
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    Check(state, DGifGetRecordType(gif, &type) != GIF_ERROR && DGifGetImageDesc(gif) != GIF_ERROR);
    for (std::uint32_t y = 0; y < kHeight / 2; ++y) {
      Check(state, DGifGetLine(gif, picture.data() + std::size_t{y} * (kWidth / 2), kWidth / 2) != GIF_ERROR);
    }
    DGifCloseFile(gif, &error);
    benchmark::DoNotOptimize(picture.data());
  }
}
BENCHMARK(GiflibRowsAlone)->Unit(benchmark::kMillisecond);

}  // namespace
