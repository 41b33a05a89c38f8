#include "drawing/PictureScaler.h"

#include <cairo.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "imaging/pixmap/XpPixmapBilinear.h"
#include "imaging/pixmap/XpStraightAlpha.h"

namespace vrx::drawing {
namespace {

struct CairoRelease {
  void operator()(cairo_t* p) const { cairo_destroy(p); }
  void operator()(cairo_surface_t* p) const { cairo_surface_destroy(p); }
};
using Surface = std::unique_ptr<cairo_surface_t, CairoRelease>;

constexpr std::int32_t kMaxSide = 32'767;  // of a cairo surface

Surface MakeSurface(std::int32_t width, std::int32_t height) {
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
  return cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS ? std::move(surface) : nullptr;
}

unsigned char* RowOf(cairo_surface_t* surface, std::int32_t y) {
  return cairo_image_surface_get_data(surface) + std::ptrdiff_t{y} * cairo_image_surface_get_stride(surface);
}

Surface Premultiplied(const XpPixmap32& source) {
  Surface surface = MakeSurface(source.width, source.height);
  if (!surface) return nullptr;
  cairo_surface_flush(surface.get());
  for (std::int32_t y = 0; y < source.height; ++y) {
    const unsigned char* from = source.GetPlane(0)->Row(y);
    unsigned char* to = RowOf(surface.get(), y);
    for (std::int32_t x = 0; x < source.width; ++x, from += 4, to += 4) {
      for (int c = 0; c < 3; ++c) to[c] = pixels::Mixed(0, from[c], from[3]);
      to[3] = from[3];
    }
  }
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

std::unique_ptr<XpPixmap32> Straightened(cairo_surface_t* surface, std::int32_t width, std::int32_t height) {
  auto picture = std::make_unique<XpPixmap32>();
  if (picture->Allocate(width, height) != XpOk) return nullptr;
  cairo_surface_flush(surface);
  for (std::int32_t y = 0; y < height; ++y) {
    const unsigned char* from = RowOf(surface, y);
    unsigned char* to = picture->GetPlane(0)->Row(y);
    for (std::int32_t x = 0; x < width; ++x, from += 4, to += 4) {
      const std::uint32_t alpha = from[3];
      for (int c = 0; c < 3; ++c) {
        const std::uint32_t color = alpha == 0 ? 0 : (from[c] * pixels::kOpaque + alpha / 2) / alpha;
        to[c] = static_cast<unsigned char>(std::min(color, pixels::kOpaque));
      }
      to[3] = from[3];
    }
  }
  return picture;
}

bool Paint(cairo_surface_t* source, cairo_surface_t* target, double scaleX, double scaleY) {
  const std::unique_ptr<cairo_t, CairoRelease> context(cairo_create(target));
  cairo_scale(context.get(), scaleX, scaleY);
  cairo_set_source_surface(context.get(), source, 0, 0);
  cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_GOOD);
  cairo_pattern_set_extend(cairo_get_source(context.get()), CAIRO_EXTEND_PAD);
  cairo_set_operator(context.get(), CAIRO_OPERATOR_SOURCE);
  cairo_paint(context.get());
  return cairo_status(context.get()) == CAIRO_STATUS_SUCCESS;
}

}  // namespace

std::unique_ptr<XpPixmap32> ScalePicture(const XpPixmapBase& source, std::int32_t width,
                                         std::int32_t height) {
  if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) return nullptr;
  const auto* straight = dynamic_cast<const XpPixmap32*>(&source);
  const std::unique_ptr<XpPixmap32> opaque = straight == nullptr ? MakeOpaquePixmap32(source) : nullptr;
  if (straight == nullptr) straight = opaque.get();
  if (straight == nullptr || straight->data == nullptr) return nullptr;
  const Surface from = Premultiplied(*straight);
  const Surface to = MakeSurface(width, height);
  const double scaleX = double{1} * width / straight->width, scaleY = double{1} * height / straight->height;
  if (!from || !to || !Paint(from.get(), to.get(), scaleX, scaleY)) return nullptr;
  return Straightened(to.get(), width, height);
}

}  // namespace vrx::drawing
