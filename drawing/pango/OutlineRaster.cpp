#include "drawing/pango/OutlineRaster.h"

#include <cmath>
#include <limits>
#include <memory>

#include "imaging/pixmap/XpStraightAlpha.h"

namespace vrx::drawing {
namespace {

constexpr double kUnitsPerPixel = 64;       // of FreeType's coordinates
constexpr double kFarthestPixel = 1 << 20;  // pixels; FreeType counts with less than 32 bits inside
constexpr std::size_t kMostPoints = std::numeric_limits<short>::max();

struct PathRelease {
  void operator()(cairo_path_t* path) const { cairo_path_destroy(path); }
};

struct Target {
  unsigned char* data;
  int stride;
  bool isColored;
  unsigned char color[3];  // blue, green, red
};

unsigned char Over(unsigned char under, std::uint32_t color, std::uint32_t coverage) {
  return pixels::Mixed(under, color, coverage);
}

void FillSpans(int y, int count, const FT_Span* spans, void* user) {
  const Target& target = *static_cast<const Target*>(user);
  unsigned char* row = target.data + std::ptrdiff_t{y} * target.stride;
  for (const FT_Span* span = spans; span != spans + count; ++span) {
    for (int x = span->x; x < span->x + span->len; ++x) {
      if (!target.isColored) {
        row[x] = Over(row[x], pixels::kOpaque, span->coverage);
        continue;
      }
      // Premultiplied colours move like a coverage does.
      unsigned char* pixel = row + std::ptrdiff_t{x} * 4;
      for (int c = 0; c < 3; ++c) pixel[c] = Over(pixel[c], target.color[c], span->coverage);
      pixel[3] = Over(pixel[3], pixels::kOpaque, span->coverage);
    }
  }
}

FT_Pos UnitsOf(double pixels) {
  if (!(std::abs(pixels) <= kFarthestPixel)) return pixels > 0 ? FT_Pos{1} << 26 : -(FT_Pos{1} << 26);
  return std::lround(pixels * kUnitsPerPixel);
}

}  // namespace

OutlineRaster::OutlineRaster() {
  if (FT_Init_FreeType(&m_library) != 0) m_library = nullptr;
}

OutlineRaster::~OutlineRaster() {
  if (m_library != nullptr) FT_Done_FreeType(m_library);
}

void OutlineRaster::Fill(cairo_t* context, cairo_surface_t* surface, ColorRef color) {
  TakePath(context);
  if (m_library == nullptr || m_contours.empty() || m_points.size() > kMostPoints) return;
  FT_Outline outline{};
  outline.n_contours = static_cast<short>(m_contours.size());
  outline.n_points = static_cast<short>(m_points.size());
  outline.points = m_points.data();
  outline.tags = m_tags.data();
  outline.contours = m_contours.data();
  cairo_surface_flush(surface);
  Target target{cairo_image_surface_get_data(surface),
                cairo_image_surface_get_stride(surface),
                cairo_image_surface_get_format(surface) == CAIRO_FORMAT_ARGB32,
                {BlueOf(color), GreenOf(color), RedOf(color)}};
  FT_Raster_Params params{};
  params.source = &outline;
  params.flags = FT_RASTER_FLAG_AA | FT_RASTER_FLAG_DIRECT | FT_RASTER_FLAG_CLIP;
  params.gray_spans = &FillSpans;
  params.user = &target;
  params.clip_box = {0, 0, cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface)};
  FT_Outline_Render(m_library, &outline, &params);
  cairo_surface_mark_dirty(surface);
}

void OutlineRaster::TakePath(cairo_t* context) {
  m_points.clear();
  m_tags.clear();
  m_contours.clear();
  const std::unique_ptr<cairo_path_t, PathRelease> path(cairo_copy_path(context));
  cairo_new_path(context);
  for (int i = 0; i < path->num_data && m_points.size() <= kMostPoints; i += path->data[i].header.length) {
    const cairo_path_data_t* data = &path->data[i];
    switch (data->header.type) {
      case CAIRO_PATH_MOVE_TO:
        CloseContour();
        AddPoint(data[1], true);
        break;
      case CAIRO_PATH_LINE_TO:
        AddPoint(data[1], true);
        break;
      case CAIRO_PATH_CURVE_TO:
        AddPoint(data[1], false);
        AddPoint(data[2], false);
        AddPoint(data[3], true);
        break;
      case CAIRO_PATH_CLOSE_PATH:
        CloseContour();
        break;
    }
  }
  CloseContour();
}

void OutlineRaster::AddPoint(const cairo_path_data_t& data, bool isOnCurve) {
  m_points.push_back({UnitsOf(data.point.x), UnitsOf(data.point.y)});
  m_tags.push_back(isOnCurve ? FT_CURVE_TAG_ON : FT_CURVE_TAG_CUBIC);
}

/// Ends the contour, or drops a point that began none.
void OutlineRaster::CloseContour() {
  const std::size_t first = m_contours.empty() ? 0 : static_cast<std::size_t>(m_contours.back()) + 1;
  if (m_points.size() > first + 1 && m_points.size() <= kMostPoints) {
    m_contours.push_back(static_cast<short>(m_points.size() - 1));
  } else if (m_points.size() == first + 1) {
    m_points.pop_back();
    m_tags.pop_back();
  }
}

}  // namespace vrx::drawing
