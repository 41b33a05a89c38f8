#include "drawing/pango/PangoTextRenderer.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <string>
#include <vector>

#include "drawing/TextLines.h"
#include "drawing/pango/PangoTextLayout.h"
#include "foundation/number/Saturate.h"

namespace vrx::drawing {
namespace {

// The bits that decide how a text falls into lines.
constexpr std::uint32_t kLayoutBits = DT_SINGLELINE | DT_WORDBREAK | DT_NOPREFIX | DT_EDITCONTROL;
constexpr std::uint32_t kAlignBits = DT_CENTER | DT_RIGHT;
constexpr std::size_t kPicturesPerLayout = 4;
constexpr std::size_t kLayoutBytesPerUnit = 128;  // glyphs, log attributes and lines of one code unit

struct Picture {
  TextView view;
  std::shared_ptr<const Coverage> coverage;
};

struct Entry {
  std::u16string text;
  Font font;
  std::int32_t wrapWidth;
  std::uint32_t format;
  std::unique_ptr<PangoTextLayout> layout;
  LruCache<Picture> pictures{kPicturesPerLayout};

  std::size_t Bytes() const {
    std::size_t bytes = text.size() * (kLayoutBytesPerUnit + sizeof(char16_t));
    for (const Picture& picture : pictures) bytes += picture.coverage->bytes.size();
    return bytes;
  }
};

TextView ViewOf(std::size_t lineCount, const Rect& rect, std::uint32_t format) {
  const std::uint32_t align = format & kAlignBits;
  return {.box = {}, .lineCount = lineCount, .rectWidth = align == 0 ? 0 : rect.Width(), .format = align};
}

/// The whole pixel at or before `at`, which keeps the rest.
std::int32_t TakeWholePixels(double& at) {
  const auto whole = Saturate<std::int32_t>(std::floor(at));
  at -= whole;
  return whole;
}

}  // namespace

class PangoTextRenderer::Impl {
 public:
  explicit Impl(const TextCacheLimits& limits)
      : m_entries(std::max<std::size_t>(limits.layouts, 1)), m_maxBytes(limits.bytes) {}

  /// The entry is valid while the lock is held and no other one is asked for.
  Entry& LayOut(std::u16string_view text, const Font& font, std::int32_t width, std::uint32_t format) {
    format &= kLayoutBits;
    const bool wraps = (format & DT_WORDBREAK) != 0 && (format & DT_SINGLELINE) == 0;
    const std::int32_t wrapWidth = wraps ? std::max(width, 1) : 0;
    const std::u16string_view seen = CutText(text, kMaxTextUnits);
    const auto matches = [&](const Entry& e) {
      return e.wrapWidth == wrapWidth && e.format == format && e.text == seen && e.font == font;
    };
    if (Entry* known = m_entries.Find(matches)) return *known;
    auto layout = std::make_unique<PangoTextLayout>(m_fonts, seen, font, wrapWidth, format);
    return m_entries.Insert({std::u16string(seen), font, wrapWidth, format, std::move(layout)});
  }

  std::shared_ptr<const Coverage> CoverageOf(Entry& entry, const TextView& view) {
    if (Picture* known = entry.pictures.Find([&](const Picture& p) { return p.view == view; })) {
      return known->coverage;
    }
    auto coverage = entry.layout->Render(view);
    if (coverage == nullptr) return nullptr;
    ++m_rendered;
    if (coverage->bytes.size() <= m_maxBytes) entry.pictures.Insert({view, coverage});
    return coverage;
  }

  /// Drops the oldest texts until the rest fits; the youngest stays.
  void Shrink() {
    while (m_entries.Count() > 1 && UsedBytes() > m_maxBytes) m_entries.DropOldest();
  }

  TextCacheUse GetUse() const { return {m_entries.Count(), UsedBytes(), m_rendered}; }

  std::mutex mutex;

 private:
  std::size_t UsedBytes() const {
    std::size_t bytes = 0;
    for (const Entry& entry : m_entries) bytes += entry.Bytes();
    return bytes;
  }

  PangoFonts m_fonts;
  LruCache<Entry> m_entries;
  std::size_t m_maxBytes;
  std::size_t m_rendered = 0;
};

PangoTextRenderer::PangoTextRenderer(const TextCacheLimits& limits)
    : m_impl(std::make_unique<Impl>(limits)) {}
PangoTextRenderer::~PangoTextRenderer() = default;

Size PangoTextRenderer::Measure(std::u16string_view text, const Font& font, std::int32_t width,
                                std::uint32_t format) {
  const std::scoped_lock lock(m_impl->mutex);
  const Size size = SizeOfLines(m_impl->LayOut(text, font, width, format).layout->GetLineSizes());
  m_impl->Shrink();
  return text.empty() ? Size{0, size.height} : size;
}

std::size_t PangoTextRenderer::CountLines(std::u16string_view text, const Font& font, std::int32_t width,
                                          std::uint32_t format) {
  const std::scoped_lock lock(m_impl->mutex);
  const std::size_t lines = m_impl->LayOut(text, font, width, format).layout->GetLineSizes().size();
  m_impl->Shrink();
  return lines;
}

void PangoTextRenderer::Draw(const Canvas& canvas, std::u16string_view text, const Font& font, ColorRef color,
                             const Rect& rect, std::uint32_t format) {
  const Rect all = canvas.GetClipBox();
  const Rect clip = (format & DT_NOCLIP) != 0 ? all : Intersect(rect, all);
  if (rect.IsEmpty() || clip.IsEmpty() || text.empty()) return;
  std::shared_ptr<const Coverage> coverage;
  Point origin{rect.left, 0};
  {
    const std::scoped_lock lock(m_impl->mutex);
    Entry& entry = m_impl->LayOut(text, font, Saturated(rect.Width()), format);
    const LinePlacement placement = PlaceLines(entry.layout->GetLineSizes(), rect, format);
    origin.y = Saturated(placement.top);
    TextView view = ViewOf(placement.lineCount, rect, format);
    const Rect ink = entry.layout->InkBox(view);
    view.box = Intersect(ink, Moved(clip, -std::int64_t{origin.x}, -std::int64_t{origin.y}));
    if (view.box.IsEmpty()) return;
    if (entry.layout->IsColored()) view.color = color;
    coverage = m_impl->CoverageOf(entry, view);
    m_impl->Shrink();
  }
  if (coverage != nullptr) Compose(canvas.GetBitmap(), *coverage, origin, clip, color);
}

Rect PangoTextRenderer::DrawScaled(const Canvas& canvas, const ScaledText& text, const TextInk& ink,
                                   const Rect& clip) {
  const Rect visible = Intersect(clip, canvas.GetClipBox());
  if (text.rect.IsEmpty() || visible.IsEmpty() || text.text.empty() || !text.scale.IsUsable()) return {};
  std::shared_ptr<const Coverage> coverage;
  Point origin;
  {
    const std::scoped_lock lock(m_impl->mutex);
    Entry& entry = m_impl->LayOut(text.text, text.font, Saturated(text.rect.Width()), text.format);
    const LinePlacement placement = PlaceLines(entry.layout->GetLineSizes(), text.rect, text.format);
    TextView view = ViewOf(placement.lineCount, text.rect, text.format);
    view.isScaled = true;
    view.scale = text.scale;
    view.scale.left += text.rect.left * text.scale.xFactor;
    view.scale.top += static_cast<double>(placement.top) * text.scale.yFactor;
    const Point start{TakeWholePixels(view.scale.left), TakeWholePixels(view.scale.top)};
    origin = {Saturated(std::int64_t{start.x} + ink.offset.x),
              Saturated(std::int64_t{start.y} + ink.offset.y)};
    view.outline = LimitOutline(ink.outline, entry.layout->GetEmPixels(), text.text);
    if (entry.layout->IsColored()) {
      view.isSilhouette = ink.isSilhouette;
      if (!ink.isSilhouette) view.color = ink.color;
    }
    view.box = Intersect(entry.layout->InkBox(view),
                         Moved(visible, -std::int64_t{origin.x}, -std::int64_t{origin.y}));
    if (view.box.IsEmpty()) return {};
    coverage = m_impl->CoverageOf(entry, view);
    m_impl->Shrink();
  }
  if (coverage == nullptr) return {};
  Compose(canvas.GetBitmap(), *coverage, origin, visible, ink.color, ink.alpha);
  return Moved(coverage->box, origin.x, origin.y);
}

TextCacheUse PangoTextRenderer::GetCacheUse() const {
  const std::scoped_lock lock(m_impl->mutex);
  return m_impl->GetUse();
}

}  // namespace vrx::drawing
