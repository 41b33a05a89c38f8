#include "imaging/pixmap/XpBitmapAllocator.h"

#include <cstdlib>
#include <limits>
#include <utility>

namespace {

constexpr std::uint32_t kErrorInvalidParameter = 87;
constexpr std::uint32_t kErrorNotEnoughMemory = 8;

}  // namespace

XpBitmapAllocator::XpBitmapAllocator(std::uint16_t bitCount, std::int32_t useHandle)
    : m_info(std::make_unique<XpBitmapInfo>()), m_useHandle(useHandle) {
  m_info->biSize = sizeof(XpBitmapInfo);
  m_info->biPlanes = 1;
  m_info->biBitCount = bitCount;
}

XpBitmapAllocator::~XpBitmapAllocator() { Release(); }

unsigned char* XpBitmapAllocator::Allocate(std::int32_t width, std::int32_t height) {
  Release();
  const std::int64_t rows = height < 0 ? -std::int64_t{height} : std::int64_t{height};
  const std::int64_t rowBytes = (std::int64_t{width} * m_info->biBitCount + 31) / 32 * 4;
  const bool sizeFits = width > 0 && rows > 0 && rowBytes <= std::numeric_limits<std::int32_t>::max() / rows;
  m_info->biWidth = width;
  m_info->biHeight = static_cast<std::int32_t>(-rows);
  m_info->biSizeImage = sizeFits ? static_cast<std::uint32_t>(rowBytes * rows) : 0;

  // Zeroed also without a handle: a picture that is decoded only in part must not show old heap contents.
  if (sizeFits) m_bits = static_cast<unsigned char*>(std::calloc(m_info->biSizeImage, 1));
  if (m_useHandle == 0) return m_bits;
  if (m_bits == nullptr) {
    m_lastError = sizeFits ? kErrorNotEnoughMemory : kErrorInvalidParameter;
    return nullptr;
  }
  m_bitmap = XpBitmap{m_bits, width, static_cast<std::int32_t>(rows), static_cast<std::int32_t>(rowBytes),
                      m_info->biBitCount == 32 ? XpBitmapFormat::Bgra32 : XpBitmapFormat::Bgr24};
  m_handle = &m_bitmap;
  return m_bits;
}

void XpBitmapAllocator::Release() noexcept {
  std::free(m_bits);
  m_bits = nullptr;
  m_handle = nullptr;
}

void XpBitmapAllocator::Swap(XpBitmapAllocator& other) noexcept {
  std::swap(m_info, other.m_info);
  std::swap(m_bits, other.m_bits);
  std::swap(m_lastError, other.m_lastError);
  std::swap(m_bitmap, other.m_bitmap);
  // A handle leads to the record in its own allocator.
  const bool hadHandle = m_handle != nullptr;
  m_handle = other.m_handle == nullptr ? nullptr : &m_bitmap;
  other.m_handle = hadHandle ? &other.m_bitmap : nullptr;
}
