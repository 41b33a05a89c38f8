// Memory for the pixels of a pixmap, and the bitmap record that describes it. Used by XpPixmap only.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/pixmap/XpBitmap.h"

class XpBitmapAllocator {
 public:
  virtual ~XpBitmapAllocator();
  XpBitmapAllocator(const XpBitmapAllocator&) = delete;
  XpBitmapAllocator& operator=(const XpBitmapAllocator&) = delete;

  /// Memory for `width` by |`height`| pixels, all bytes zero; earlier memory is freed first. Null when
  /// the width is below 1, the height 0, the size beyond 31 bits, or no memory is left; GetLastError then
  /// gives the cause, when the allocator makes bitmaps with a handle.
  unsigned char* Allocate(std::int32_t width, std::int32_t height);
  void Release() noexcept;
  /// Exchanges the memory and its description with an allocator of the same kind. Handles go with the memory
  /// that they describe, but are other ones.
  void Swap(XpBitmapAllocator& other) noexcept;

  /// Null for an allocator of plain memory, and while there is no memory.
  XpBitmapHandle GetHandle() const noexcept { return m_handle; }
  const XpBitmapInfo* GetInfo() const noexcept { return m_info.get(); }
  std::uint32_t GetLastError() const noexcept { return m_lastError; }

 protected:
  XpBitmapAllocator(std::uint16_t bitCount, std::int32_t useHandle);

 private:
  XpBitmapHandle m_handle = nullptr;
  std::unique_ptr<XpBitmapInfo> m_info;
  unsigned char* m_bits = nullptr;
  std::uint32_t m_lastError = 0;
  std::int32_t m_useHandle;
  XpBitmap m_bitmap;
};

class XpBitmapAllocator32 final : public XpBitmapAllocator {
 public:
  XpBitmapAllocator32() : XpBitmapAllocator(32, 1) {}
};

class XpBitmapAllocator24 final : public XpBitmapAllocator {
 public:
  XpBitmapAllocator24() : XpBitmapAllocator(24, 1) {}
};

class XpBitmapAllocator24NoHandle final : public XpBitmapAllocator {
 public:
  XpBitmapAllocator24NoHandle() : XpBitmapAllocator(24, 0) {}
};
