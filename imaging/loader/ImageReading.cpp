#include "imaging/loader/ImageReading.h"

#include <cstdio>
#include <memory>
#include <new>

namespace vrx::imaging {

bool ImageReading::Start(std::int64_t width, std::int64_t height) noexcept {
  if (width < 1 || height < 1) return Damaged("the picture has no pixels");
  const StillImageLimits& limits = m_request.limits;
  if (width > limits.side || height > limits.side || width * height > limits.pixels) {
    char words[kWordsCapacity];
    std::snprintf(words, sizeof words, "the picture is too large, %lld by %lld pixels",
                  static_cast<long long>(width), static_cast<long long>(height));
    return Fail(XpErrOutOfMemory, words);
  }
  m_width = static_cast<std::int32_t>(width);
  m_height = static_cast<std::int32_t>(height);
  return true;
}

bool ImageReading::NeedsBytes(std::int64_t bytes) noexcept {
  return m_source.Size() >= bytes || Damaged("the file is too short for the picture's size");
}

bool ImageReading::TakeMemory(std::int32_t width, std::int32_t height) noexcept {
  std::unique_ptr<XpPixmap24NoHandle> pixmap(new (std::nothrow) XpPixmap24NoHandle);
  try {
    if (pixmap == nullptr || pixmap->Allocate(width, height) != XpOk) pixmap.reset();
  } catch (const std::bad_alloc&) {
    pixmap.reset();
  }
  if (pixmap == nullptr) return Fail(XpErrOutOfMemory, "there is no memory for the picture");
  m_plane = pixmap->GetPlane(0);
  m_image->pixmap = std::move(pixmap);
  m_image->fullWidth = m_width;
  m_image->fullHeight = m_height;
  return true;
}

unsigned char* ImageReading::Row(std::int32_t y) const noexcept {
  return m_plane->Row(m_request.rows == RowOrder::TopDown ? y : m_plane->height - 1 - y);
}

bool ImageReading::Fail(XpResult result, const char* words) noexcept {
  if (m_result != XpOk) return false;
  m_result = result;
  std::snprintf(m_words, sizeof m_words, "%s", words);
  return false;
}

const char* ImageReading::Words() const noexcept {
  return m_source.Result() == XpOk ? m_words : "the file cannot be read";
}

XpResult ImageReading::Result() const noexcept {
  if (m_result == XpOk || m_source.Result() == XpOk) return m_result;
  return m_source.Result();
}

}  // namespace vrx::imaging
