// The records of a GIF file (GIF89a) by giflib. The only code that knows that library: the GIF codec and the
// still-image loader read through it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "imaging/source/ImageSource.h"
#include "vrx/XpResult.h"

struct GifFileType;

namespace vrx::imaging {

enum class GifRecord { Image, Extension, End, Failed };

/// An image on the logical screen, in pixels.
struct GifImage {
  std::int32_t left = 0, top = 0, width = 0, height = 0;
};

/// What the graphic controls before an image say.
struct GifControl {
  int transparent = -1;   // colour index; -1 for none
  bool hasDelay = false;  // one of them has; stays set
};

/// Nothing throws. After a failure the library goes on with whatever bytes come next, as its caller likes.
class GifDecoder {
 public:
  static constexpr std::int64_t kMostBytesToPixels =
      2731;  // a code of 12 bits stands for 4096 pixels at most

  /// Borrows the source, and reads the head of the file at its position.
  explicit GifDecoder(ImageSource& source) noexcept;
  ~GifDecoder();
  GifDecoder(const GifDecoder&) = delete;
  GifDecoder& operator=(const GifDecoder&) = delete;

  /// There is a GIF file. Other functions may be used only then.
  bool IsOpen() const noexcept { return m_gif != nullptr; }
  /// Of the last failure: XpErrOutOfMemory or XpErrInvalidFile, and in words.
  XpResult Failure() const noexcept;
  const char* FailureWords() const noexcept;

  std::int32_t ScreenWidth() const noexcept;
  std::int32_t ScreenHeight() const noexcept;
  /// The background of the screen, BGR in the lowest bytes; black without colours of the whole file.
  std::uint32_t Background() const noexcept;

  GifRecord NextRecord() noexcept;
  /// After an Extension record.
  bool ReadExtension(GifControl& control) noexcept;
  /// After an Image record. False for a damaged one.
  bool ReadImage(GifImage& image) noexcept;
  /// Over the pixels of an image whose rows have not been read.
  bool SkipPixels() noexcept;

  /// After ReadImage, so often as the image is high: the next row in the order of the file, an index a pixel,
  /// and where it belongs in the image. `indices` has room for its width.
  bool ReadRow(std::uint8_t* indices, std::int32_t& row) noexcept;
  /// The image has colours of its own, or else the whole file has.
  bool HasColours() const noexcept { return m_colourCount > 0; }
  /// Puts a row of the image into a row of the screen, BGR. What lies past the screen is cut off; an index
  /// that is transparent or has no colour leaves what is there.
  void PaintRow(const std::uint8_t* indices, int transparent, unsigned char* screenRow,
                std::int32_t screenWidth) const noexcept;

 private:
  void NoteColours() noexcept;
  void AdvanceRow() noexcept;

  GifFileType* m_gif = nullptr;
  int m_openError = 0;
  int m_pass = 0;  // over the rows of an interlaced image
  std::int32_t m_row = 0;
  int m_colourCount = 0;                       // of the image
  std::array<std::uint32_t, 256> m_colours{};  // BGR in the lowest bytes
};

}  // namespace vrx::imaging
