// GIF by giflib: the first picture of the file on its logical screen; the rest and what is transparent is
// black.
#include <gif_lib.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include "imaging/loader/ImageFormats.h"

namespace vrx::imaging {

namespace {

constexpr std::int64_t kMaxLzwRatio = 2731;  // a code of 12 bits stands for 4096 pixels at most

struct Pass {
  std::int32_t first, step;
};
constexpr Pass kInterlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
constexpr Pass kPlain[] = {{0, 1}};

struct CloseGif {
  void operator()(GifFileType* gif) const noexcept {
    int error = 0;
    DGifCloseFile(gif, &error);
  }
};
using GifPtr = std::unique_ptr<GifFileType, CloseGif>;

int ReadBytes(GifFileType* gif, GifByteType* buffer, int count) {
  auto& source = *static_cast<ImageSource*>(gif->UserData);
  return count <= 0 ? 0 : static_cast<int>(source.Read(buffer, static_cast<std::size_t>(count)));
}

bool GifProblem(ImageReading& reading, int error) {
  const char* words = GifErrorString(error);
  const bool isMemory = error == D_GIF_ERR_NOT_ENOUGH_MEM;
  return reading.Fail(isMemory ? XpErrOutOfMemory : XpErrInvalidFile,
                      words == nullptr ? "the picture is damaged" : words);
}

/// Reads an extension; sets `transparent` when it names the colour index that is transparent.
bool ReadExtension(ImageReading& reading, GifFileType& gif, int& transparent) {
  int code = 0;
  GifByteType* block = nullptr;
  if (DGifGetExtension(&gif, &code, &block) == GIF_ERROR) return GifProblem(reading, gif.Error);
  while (block != nullptr) {
    GraphicsControlBlock control;
    // The block's first byte is its length.
    if (code == GRAPHICS_EXT_FUNC_CODE && DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
      transparent = control.TransparentColor;
    }
    if (DGifGetExtensionNext(&gif, &block) == GIF_ERROR) return GifProblem(reading, gif.Error);
  }
  return true;
}

/// Goes to the first picture and reads its description.
bool FindPicture(ImageReading& reading, GifFileType& gif, int& transparent) {
  transparent = NO_TRANSPARENT_COLOR;
  for (;;) {
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    if (DGifGetRecordType(&gif, &type) == GIF_ERROR) return GifProblem(reading, gif.Error);
    if (type == IMAGE_DESC_RECORD_TYPE) {
      return DGifGetImageDesc(&gif) != GIF_ERROR || GifProblem(reading, gif.Error);
    }
    if (type != EXTENSION_RECORD_TYPE) return reading.Damaged("the file has no picture");
    if (!ReadExtension(reading, gif, transparent)) return false;
  }
}

void PaintRow(const ImageReading& reading, const GifFileType& gif, const ColorMapObject& colours,
              int transparent, std::int32_t y, const GifPixelType* line) {
  const std::int32_t screenY = gif.Image.Top + y;
  if (screenY >= reading.Height()) return;
  const std::int32_t width = std::min(gif.Image.Width, reading.Width() - gif.Image.Left);
  unsigned char* bgr = width > 0 ? reading.Row(screenY) + std::ptrdiff_t{gif.Image.Left} * 3 : nullptr;
  for (std::int32_t x = 0; x < width; ++x, bgr += 3) {
    const int index = line[x];
    if (index == transparent || index >= colours.ColorCount) continue;
    bgr[0] = colours.Colors[index].Blue;
    bgr[1] = colours.Colors[index].Green;
    bgr[2] = colours.Colors[index].Red;
  }
}

bool ReadRows(ImageReading& reading, GifFileType& gif, int transparent) {
  const ColorMapObject* colours = gif.Image.ColorMap != nullptr ? gif.Image.ColorMap : gif.SColorMap;
  if (colours == nullptr) return reading.Damaged("the picture has no colours");
  if (gif.Image.Width < 1 || gif.Image.Height < 1) return reading.Damaged("the picture has no pixels");
  if (!reading.NeedsBytes(std::int64_t{gif.Image.Width} * gif.Image.Height / kMaxLzwRatio)) return false;
  const auto lineBytes = static_cast<std::size_t>(gif.Image.Width);
  const std::unique_ptr<GifPixelType[]> line(new (std::nothrow) GifPixelType[lineBytes]);
  if (line == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  if (!reading.TakeMemory(reading.Width(), reading.Height())) return false;
  const std::span<const Pass> passes = gif.Image.Interlace ? std::span<const Pass>(kInterlaced) : kPlain;
  for (const Pass& pass : passes) {
    for (std::int32_t y = pass.first; y < gif.Image.Height; y += pass.step) {
      if (DGifGetLine(&gif, line.get(), gif.Image.Width) == GIF_ERROR) return GifProblem(reading, gif.Error);
      PaintRow(reading, gif, *colours, transparent, y, line.get());
      reading.NoteRow();
    }
  }
  return true;
}

}  // namespace

bool ReadGif(ImageReading& reading) {
  int error = 0;
  const GifPtr gif(DGifOpen(&reading.Source(), ReadBytes, &error));
  if (gif == nullptr) return GifProblem(reading, error);
  int transparent = NO_TRANSPARENT_COLOR;
  if (!FindPicture(reading, *gif, transparent)) return false;
  // Some writers leave the screen's size at 0; the picture is the screen then.
  const bool hasScreen = gif->SWidth > 0 && gif->SHeight > 0;
  const int width = hasScreen ? gif->SWidth : gif->Image.Left + gif->Image.Width;
  const int height = hasScreen ? gif->SHeight : gif->Image.Top + gif->Image.Height;
  if (!reading.Start(width, height)) return false;
  return !reading.WantsPixels() || ReadRows(reading, *gif, transparent);
}

}  // namespace vrx::imaging
