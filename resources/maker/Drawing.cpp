#include "resources/maker/Drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include <librsvg/rsvg.h>

namespace vrx::pictures {
namespace {

constexpr char kIncludes[] = "file:";

std::string ReadText(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error(file.string() + " cannot be read");
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The template with each {{name}} replaced by the value, and each {{file:name}} by that file.
std::string FillIn(const std::filesystem::path& folder, const std::string& file, const Picture& picture) {
  std::string text = ReadText(folder / file);
  for (std::size_t start = 0; (start = text.find("{{", start)) != std::string::npos;) {
    const std::size_t end = text.find("}}", start);
    if (end == std::string::npos) throw std::runtime_error(file + ": a place has no end");
    const std::string name = text.substr(start + 2, end - start - 2);
    std::string value;
    if (name.starts_with(kIncludes)) {
      value = FillIn(folder, name.substr(sizeof(kIncludes) - 1), picture);
    } else if (const auto found = picture.values.find(name); found != picture.values.end()) {
      value = found->second;
    } else {
      throw std::runtime_error(file + ": there is no value for " + name + " in " + picture.name);
    }
    text.replace(start, end + 2 - start, value);  // and a value may have places too
  }
  return text;
}

struct Free {
  void operator()(RsvgHandle* handle) const { g_object_unref(handle); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
  void operator()(GError* error) const { g_error_free(error); }
};
template <class T>
using Owned = std::unique_ptr<T, Free>;

Owned<cairo_surface_t> Render(const std::string& svg, const std::string& name, int width, int height) {
  const auto fail = [&name](GError* error) {
    const Owned<GError> owned(error);
    throw std::runtime_error(name + ": " + error->message);
  };
  GError* error = nullptr;
  const auto* data = reinterpret_cast<const guint8*>(svg.data());
  const Owned<RsvgHandle> handle(rsvg_handle_new_from_data(data, svg.size(), &error));
  if (!handle) fail(error);
  Owned<cairo_surface_t> surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
  const Owned<cairo_t> cairo(cairo_create(surface.get()));
  const RsvgRectangle whole{0.0, 0.0, static_cast<double>(width), static_cast<double>(height)};
  if (!rsvg_handle_render_document(handle.get(), cairo.get(), &whole, &error)) fail(error);
  cairo_surface_flush(surface.get());
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error(name + ": no memory");
  return surface;
}

Pixels ToStraightAlpha(cairo_surface_t* surface) {
  Pixels pixels{cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface), {}};
  pixels.bytes.resize(static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height) * 4);
  const unsigned char* row = cairo_image_surface_get_data(surface);
  for (int y = 0; y < pixels.height; ++y, row += cairo_image_surface_get_stride(surface)) {
    for (int x = 0; x < pixels.width; ++x) {
      std::uint32_t pixel = 0;
      std::copy_n(row + x * 4, 4, reinterpret_cast<unsigned char*>(&pixel));
      const std::uint32_t alpha = pixel >> 24;
      if (alpha == 0) continue;
      std::uint8_t* out = pixels.At(x, y);
      for (int channel = 0; channel < 3; ++channel) {
        const std::uint32_t value = (pixel >> (8 * channel)) & 0xFF;
        out[channel] = static_cast<std::uint8_t>(std::min(255u, (value * 255 + alpha / 2) / alpha));
      }
      out[3] = static_cast<std::uint8_t>(alpha);
    }
  }
  return pixels;
}

/// Spreads the colours of the visible pixels outwards, ring by ring.
void ColourTheClear(Pixels& pixels) {
  struct Place {
    int x, y;
  };
  constexpr std::array<Place, 8> kAround{
      {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, -1}, {-1, 1}, {1, 1}}};
  std::vector<bool> known(pixels.bytes.size() / 4);
  const auto index = [&pixels](int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(pixels.width) + static_cast<std::size_t>(x);
  };
  std::vector<Place> queue;
  for (int y = 0; y < pixels.height; ++y) {
    for (int x = 0; x < pixels.width; ++x) {
      if (pixels.At(x, y)[3] == 0) continue;
      known[index(x, y)] = true;
      queue.push_back({x, y});
    }
  }
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const Place from = queue[i];
    for (const Place step : kAround) {
      const int x = from.x + step.x, y = from.y + step.y;
      if (x < 0 || y < 0 || x >= pixels.width || y >= pixels.height || known[index(x, y)]) continue;
      known[index(x, y)] = true;
      std::copy_n(pixels.At(from.x, from.y), 3, pixels.At(x, y));
      queue.push_back({x, y});
    }
  }
}

}  // namespace

Pixels Draw(const Picture& picture, const std::filesystem::path& folder, double scale) {
  const std::string svg = FillIn(folder, picture.drawing, picture);
  const auto scaled = [scale](int side) { return static_cast<int>(std::lround(side * scale)); };
  const Owned<cairo_surface_t> surface =
      Render(svg, picture.drawing, scaled(picture.width), scaled(picture.height));
  Pixels pixels = ToStraightAlpha(surface.get());
  ColourTheClear(pixels);
  return pixels;
}

}  // namespace vrx::pictures
