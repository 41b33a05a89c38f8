// What a format's reader works with: the file's bytes, the limits, the picture to fill and the words for a
// failure. The loader makes one for each picture.
#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/loader/StillImage.h"
#include "imaging/source/ImageSource.h"

namespace vrx::imaging {

/// Nothing throws, since C libraries lie between the loader and some of the calls.
class ImageReading {
 public:
  /// Without an `image` only the size is wanted. Everything is borrowed.
  ImageReading(ImageSource& source, const StillImageRequest& request, StillImage* image) noexcept
      : m_source(source), m_request(request), m_image(image) {}

  ImageSource& Source() noexcept { return m_source; }
  const StillImageRequest& Request() const noexcept { return m_request; }
  bool WantsPixels() const noexcept { return m_image != nullptr; }

  /// To be called with the size in the head, before anything of that size is allocated. False, with the
  /// failure noted, beyond the limits.
  bool Start(std::int64_t width, std::int64_t height) noexcept;
  std::int32_t Width() const noexcept { return m_width; }
  std::int32_t Height() const noexcept { return m_height; }
  /// For formats that cannot pack a picture into less than this: a smaller file is damaged.
  bool NeedsBytes(std::int64_t bytes) noexcept;
  /// Allocates black pixels of the size that the picture is decoded to. False, with the failure noted,
  /// without memory.
  bool TakeMemory(std::int32_t width, std::int32_t height) noexcept;
  /// Row `y` of the picture counted from its top, wherever the wanted order puts it. BGR.
  unsigned char* Row(std::int32_t y) const noexcept;
  /// To be called for each row that was decoded, or row of a pass over the picture. From the first one on a
  /// damaged file gives a partial picture instead of none.
  void NoteRow() noexcept { m_hasRows = true; }

  /// Notes the first failure; the words are copied. Always false, so that readers return it.
  bool Fail(XpResult result, const char* words) noexcept;
  bool Damaged(const char* words) noexcept { return Fail(XpErrInvalidFile, words); }
  bool HasFailed() const noexcept { return m_result != XpOk; }
  /// XpOk without a failure. A failure of the file itself is reported instead of the damage that it caused.
  XpResult Result() const noexcept;
  /// There is something to show in spite of the failure.
  bool IsPartial() const noexcept { return HasFailed() && m_hasRows && m_result != XpErrOutOfMemory; }
  /// The cause of the failure.
  const char* Words() const noexcept;

 private:
  static constexpr std::size_t kWordsCapacity = 256;

  ImageSource& m_source;
  const StillImageRequest& m_request;
  StillImage* m_image;
  std::int32_t m_width = 0;
  std::int32_t m_height = 0;
  XpPlaneBase* m_plane = nullptr;
  bool m_hasRows = false;
  XpResult m_result = XpOk;
  char m_words[kWordsCapacity] = {};
};

}  // namespace vrx::imaging
