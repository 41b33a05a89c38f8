// JPEG for the loader: grey, colour and print colours, baseline and progressive, scaled down by the decoder
// itself.
#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include "imaging/jpeg/JpegDecoder.h"
#include "imaging/loader/ImageFormats.h"

namespace vrx::imaging {

namespace {

// Halvings only: at these the decoder gives averages of blocks but for rounding, and is vectorised. At other
// scales it cuts off frequencies, and fine detail differs by far more than rounding.
constexpr unsigned kScales[] = {8, 4, 2};
constexpr int kInkChannels = 4;
constexpr int kMaxJpegSample = 255;

/// The coarsest scale at which the picture covers what is enough.
unsigned ChooseScale(const ImageReading& reading) {
  const StillImageRequest& request = reading.Request();
  if (request.enoughWidth <= 0 || request.enoughHeight <= 0) return 1;
  const auto covers = [](std::int64_t whole, unsigned scale, std::int32_t enough) {
    return (whole + scale - 1) / scale >= enough;
  };
  for (const unsigned scale : kScales) {
    if (covers(reading.Width(), scale, request.enoughWidth) &&
        covers(reading.Height(), scale, request.enoughHeight)) {
      return scale;
    }
  }
  return 1;
}

unsigned char Multiply(int a, int b) {
  return static_cast<unsigned char>((a * b + kMaxJpegSample / 2) / kMaxJpegSample);
}

/// Files with an Adobe marker store ink inverted: 255 is none.
void InkToBgr(const unsigned char* ink, bool isInverted, std::int32_t width, unsigned char* bgr) {
  const int flip = isInverted ? 0 : kMaxJpegSample;
  for (std::int32_t x = 0; x < width; ++x, ink += kInkChannels, bgr += 3) {
    const int black = ink[3] ^ flip;
    bgr[0] = Multiply(ink[2] ^ flip, black);
    bgr[1] = Multiply(ink[1] ^ flip, black);
    bgr[2] = Multiply(ink[0] ^ flip, black);
  }
}

/// What the decoder says of a step that ended with `isDone`.
bool NoteStep(ImageReading& reading, const JpegDecoder& decoder, bool isDone) {
  if (decoder.Damage() != nullptr) reading.Damaged(decoder.Damage());
  return isDone || reading.Fail(decoder.Result(), decoder.Words());
}

bool ReadRows(ImageReading& reading, JpegDecoder& decoder) {
  const bool isInk = decoder.IsInk();
  std::unique_ptr<unsigned char[]> inkRow;
  if (isInk) {
    const auto bytes = static_cast<std::size_t>(decoder.OutputWidth()) * kInkChannels;
    inkRow.reset(new (std::nothrow) unsigned char[bytes]);
    if (inkRow == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  }
  if (!reading.TakeMemory(decoder.OutputWidth(), decoder.OutputHeight())) return false;
  for (std::int32_t y = 0; decoder.HasMoreRows(); ++y) {
    unsigned char* row = reading.Row(y);
    if (!NoteStep(reading, decoder, decoder.ReadRow(isInk ? inkRow.get() : row))) return false;
    if (isInk) InkToBgr(inkRow.get(), decoder.HasAdobeMarker(), decoder.OutputWidth(), row);
    reading.NoteRow();
  }
  return NoteStep(reading, decoder, decoder.Finish());
}

}  // namespace

bool ReadJpeg(ImageReading& reading) {
  JpegDecoder decoder(reading.Source(), JpegShortage::NeedsRows);
  if (!NoteStep(reading, decoder, decoder.ReadHead())) return false;
  if (!reading.Start(decoder.Width(), decoder.Height())) return false;
  if (!reading.WantsPixels()) return true;
  const JpegForm form{ChooseScale(reading), decoder.IsInk() ? JpegColours::Ink : JpegColours::Bgr};
  return NoteStep(reading, decoder, decoder.Start(form)) && ReadRows(reading, decoder);
}

}  // namespace vrx::imaging
