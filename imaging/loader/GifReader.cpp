// GIF: the first picture of the file on its logical screen; the rest and what is transparent is black.
#include <cstdint>
#include <memory>
#include <new>

#include "imaging/gif/GifDecoder.h"
#include "imaging/loader/ImageFormats.h"

namespace vrx::imaging {

namespace {

bool GifProblem(ImageReading& reading, const GifDecoder& gif) {
  return reading.Fail(gif.Failure(), gif.FailureWords());
}

/// Goes to the first picture and reads its description.
bool FindPicture(ImageReading& reading, GifDecoder& gif, GifControl& control, GifImage& image) {
  for (;;) {
    switch (gif.NextRecord()) {
      case GifRecord::Image:
        return gif.ReadImage(image) || GifProblem(reading, gif);
      case GifRecord::Extension:
        if (!gif.ReadExtension(control)) return GifProblem(reading, gif);
        break;
      case GifRecord::End:
        return reading.Damaged("the file has no picture");
      case GifRecord::Failed:
        return GifProblem(reading, gif);
    }
  }
}

bool ReadRows(ImageReading& reading, GifDecoder& gif, const GifImage& image, int transparent) {
  if (!gif.HasColours()) return reading.Damaged("the picture has no colours");
  if (image.width < 1 || image.height < 1) return reading.Damaged("the picture has no pixels");
  const std::int64_t pixels = std::int64_t{image.width} * image.height;
  if (!reading.NeedsBytes(pixels / GifDecoder::kMostBytesToPixels)) return false;
  const auto lineBytes = static_cast<std::size_t>(image.width);
  const std::unique_ptr<std::uint8_t[]> line(new (std::nothrow) std::uint8_t[lineBytes]);
  if (line == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  if (!reading.TakeMemory(reading.Width(), reading.Height())) return false;
  for (std::int32_t i = 0; i < image.height; ++i) {
    std::int32_t row = 0;
    if (!gif.ReadRow(line.get(), row)) return GifProblem(reading, gif);
    const std::int32_t y = image.top + row;
    if (y < reading.Height()) gif.PaintRow(line.get(), transparent, reading.Row(y), reading.Width());
    reading.NoteRow();
  }
  return true;
}

}  // namespace

bool ReadGif(ImageReading& reading) {
  GifDecoder gif(reading.Source());
  if (!gif.IsOpen()) return GifProblem(reading, gif);
  GifControl control;
  GifImage image;
  if (!FindPicture(reading, gif, control, image)) return false;
  // Some writers leave the screen's size at 0; the picture is the screen then.
  const bool hasScreen = gif.ScreenWidth() > 0 && gif.ScreenHeight() > 0;
  const std::int32_t width = hasScreen ? gif.ScreenWidth() : image.left + image.width;
  const std::int32_t height = hasScreen ? gif.ScreenHeight() : image.top + image.height;
  if (!reading.Start(width, height)) return false;
  return !reading.WantsPixels() || ReadRows(reading, gif, image, control.transparent);
}

}  // namespace vrx::imaging
