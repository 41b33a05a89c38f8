// The text renderer of the movie: any script, with the system's fonts, smooth over video. One is shared by
// all painters of a render.
#pragma once

#include <cstddef>
#include <memory>

#include "drawing/TextRenderer.h"

namespace vrx::drawing {

/// What a renderer keeps of texts it has drawn; the least recently used goes first.
struct TextCacheLimits {
  std::size_t layouts = 64;
  std::size_t bytes = 16u << 20;
};

struct TextCacheUse {
  std::size_t layouts = 0;
  std::size_t bytes = 0;     // estimated for the layouts, exact for the coverage
  std::size_t rendered = 0;  // coverages made so far
};

/// Laid-out texts and their coverage are kept under everything that decides their pixels, so drawing a text
/// again costs one composition of its coverage, and measuring it nothing. Coverage is made under a lock and
/// composed outside of it.
class PangoTextRenderer final : public TextRenderer {
 public:
  explicit PangoTextRenderer(const TextCacheLimits& limits = {});
  ~PangoTextRenderer() override;

  Size Measure(std::u16string_view text, const Font& font, std::int32_t width, std::uint32_t format) override;
  std::size_t CountLines(std::u16string_view text, const Font& font, std::int32_t width,
                         std::uint32_t format) override;
  void Draw(const Canvas& canvas, std::u16string_view text, const Font& font, ColorRef color,
            const Rect& rect, std::uint32_t format) override;
  Rect DrawScaled(const Canvas& canvas, const ScaledText& text, const TextInk& ink,
                  const Rect& clip) override;
  TextCacheUse GetCacheUse() const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace vrx::drawing
