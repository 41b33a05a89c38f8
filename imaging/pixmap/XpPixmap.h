// The one picture type of this system: pixels in memory, top row first, with a description of their layout.
// Codecs decode into it, painters draw on it, the frame callback blends it.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "imaging/pixmap/XpBitmapAllocator.h"
#include "imaging/pixmap/XpPlane.h"
#include "vrx/XpResult.h"

/// Empty, or holding memory of a size above 0 and all four planes. Not locked: one thread at a time.
class XpPixmapBase {
 public:
  static constexpr int kPlanes = 4;

  virtual ~XpPixmapBase() = default;
  /// Zeroed memory for `width` by `height` pixels, in place of what there was; a negative height counts as
  /// its amount. XpErrOutOfMemory, and an empty pixmap, when the width is below 1, the height 0, the size
  /// beyond 31 bits, or no memory is left.
  virtual XpResult Allocate(std::int32_t newWidth, std::int32_t newHeight) = 0;
  virtual void Release() noexcept = 0;
  /// A pixmap of the same kind, size and bytes; an empty one when there is no memory for the pixels.
  virtual std::unique_ptr<XpPixmapBase> Clone() const = 0;
  virtual std::int32_t GetPlaneCount() const noexcept = 0;
  /// Null in an empty pixmap and for an index outside 0 to 3. Planes 1 to 3 have no pixels.
  virtual XpPlaneBase* GetPlane(int index) const noexcept = 0;
  /// The plane's constants; 0 where GetPlane is null.
  virtual std::uint32_t GetPlaneBitsPerPixel(int index) const noexcept = 0;
  virtual std::uint32_t GetPlaneBitsPerChannel(int index) const noexcept = 0;
  virtual std::uint32_t GetPlaneBytesPerPixel(int index) const noexcept = 0;
  virtual std::uint32_t GetPlaneChannelMask(int index) const noexcept = 0;
  virtual XpBitmapHandle GetBitmapHandle() const noexcept = 0;
  virtual const XpBitmapInfo* GetBitmapInfo() const noexcept = 0;

  unsigned char* data = nullptr;  // the pixel memory, owned by the allocator; null when empty
  std::uint32_t size = 0;         // bytes
  std::int32_t width = 0;
  std::int32_t height = 0;
};

template <class AllocatorType, class P0, class P1, class P2, class P3>
struct XpPixmapDesc {
  using Allocator = AllocatorType;
  using Plane0 = P0;
  using Plane1 = P1;
  using Plane2 = P2;
  using Plane3 = P3;
};

template <class Desc>
class XpPixmap final : public XpPixmapBase {
 public:
  XpPixmap() = default;
  XpPixmap(const XpPixmap&) = delete;
  XpPixmap& operator=(const XpPixmap&) = delete;
  ~XpPixmap() override { XpPixmap::Release(); }

  XpResult Allocate(std::int32_t newWidth, std::int32_t newHeight) override {
    Release();
    unsigned char* bits = m_allocator.Allocate(newWidth, newHeight);
    if (bits == nullptr) return XpErrOutOfMemory;
    const std::int32_t rows = newHeight < 0 ? -newHeight : newHeight;
    unsigned char* end = bits;
    m_planes[0] = MakePlane<typename Desc::Plane0>(newWidth, rows, end);
    m_planes[1] = MakePlane<typename Desc::Plane1>(newWidth, rows, end);
    m_planes[2] = MakePlane<typename Desc::Plane2>(newWidth, rows, end);
    m_planes[3] = MakePlane<typename Desc::Plane3>(newWidth, rows, end);
    data = bits;
    size = static_cast<std::uint32_t>(end - bits);
    width = newWidth;
    height = rows;
    return XpOk;
  }

  void Release() noexcept override {
    m_allocator.Release();
    data = nullptr;
    size = 0;
    for (auto& plane : m_planes) plane.reset();
    width = height = 0;
  }

  /// Exchanges the pixels with all that describes them. Pixels and planes stay where they are in memory.
  void Swap(XpPixmap& other) noexcept {
    m_allocator.Swap(other.m_allocator);
    m_planes.swap(other.m_planes);
    std::swap(data, other.data);
    std::swap(size, other.size);
    std::swap(width, other.width);
    std::swap(height, other.height);
  }

  std::unique_ptr<XpPixmapBase> Clone() const override {
    auto clone = std::make_unique<XpPixmap>();
    if (data != nullptr && clone->Allocate(width, height) == XpOk) std::memcpy(clone->data, data, size);
    return clone;
  }

  std::int32_t GetPlaneCount() const noexcept override { return 1; }
  XpPlaneBase* GetPlane(int index) const noexcept override {
    return index < 0 || index >= kPlanes ? nullptr : m_planes[static_cast<std::size_t>(index)].get();
  }
  std::uint32_t GetPlaneBitsPerPixel(int index) const noexcept override {
    return Ask(index, &XpPlaneBase::GetBitsPerPixel);
  }
  std::uint32_t GetPlaneBitsPerChannel(int index) const noexcept override {
    return Ask(index, &XpPlaneBase::GetBitsPerChannel);
  }
  std::uint32_t GetPlaneBytesPerPixel(int index) const noexcept override {
    return Ask(index, &XpPlaneBase::GetBytesPerPixel);
  }
  std::uint32_t GetPlaneChannelMask(int index) const noexcept override {
    return Ask(index, &XpPlaneBase::GetChannelMask);
  }
  XpBitmapHandle GetBitmapHandle() const noexcept override { return m_allocator.GetHandle(); }
  const XpBitmapInfo* GetBitmapInfo() const noexcept override { return m_allocator.GetInfo(); }

  const typename Desc::Allocator& GetAllocator() const noexcept { return m_allocator; }

 private:
  template <class PlaneDesc>
  static std::unique_ptr<XpPlaneBase> MakePlane(std::int32_t w, std::int32_t h, unsigned char*& end) {
    auto plane = std::make_unique<XpPlane<PlaneDesc>>();
    plane->data = end;
    plane->width = PlaneDesc::Width(w);
    plane->height = PlaneDesc::Height(h);
    plane->rowBytes = static_cast<std::int32_t>(PlaneDesc::RowBytes(w));
    end += std::int64_t{plane->rowBytes} * plane->height;
    return plane;
  }
  std::uint32_t Ask(int index, std::uint32_t (XpPlaneBase::*question)() const noexcept) const noexcept {
    const XpPlaneBase* plane = GetPlane(index);
    return plane == nullptr ? 0 : (plane->*question)();
  }

  typename Desc::Allocator m_allocator;
  std::array<std::unique_ptr<XpPlaneBase>, kPlanes> m_planes;
};

using XpNullPlane = XpPlaneDesc<XpPixelNull<unsigned char>, 4, 32, 32>;
template <class Allocator, class Pixel>
using XpPackedPixmap =
    XpPixmap<XpPixmapDesc<Allocator, XpPlaneDesc<Pixel, 4, 1, 1>, XpNullPlane, XpNullPlane, XpNullPlane>>;

/// Overlays and pictures with transparency.
using XpPixmap32 = XpPackedPixmap<XpBitmapAllocator32, XpPixelBGRA<unsigned char>>;
/// Opaque pictures that are drawn into.
using XpPixmap24 = XpPackedPixmap<XpBitmapAllocator24, XpPixelBGR<unsigned char>>;
/// What the codecs decode into.
using XpPixmap24NoHandle = XpPackedPixmap<XpBitmapAllocator24NoHandle, XpPixelBGR<unsigned char>>;
