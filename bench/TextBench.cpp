// What a caption of three lines with its shadow costs: laid out for the first time, and on the frames after.
#include <benchmark/benchmark.h>

#include "drawing/pango/PangoTextRenderer.h"
#include "imaging/pixmap/XpPixmap.h"

namespace {

using namespace vrx::drawing;

constexpr std::uint32_t kFormat = DT_EDITCONTROL | DT_NOPREFIX | DT_WORDBREAK | DT_CENTER;
constexpr char16_t kText[] =
    u"Third day: from the pass down\nto the lake, 1,240 m of descent\nin a little more than an hour";

void DrawCaption(TextRenderer& renderer, Canvas& canvas) {
  Font font;
  font.face = u"DejaVu Sans";
  font.height = -64;
  Rect rect{0, 0, 1920, 1080};
  renderer.DrawText(canvas, kText, font, 0, rect, kFormat | DT_CALCRECT);
  rect = {0, 1080 - static_cast<std::int32_t>(rect.Height()), 1920, 1080};
  renderer.Draw(canvas, kText, font, 0x020000, rect, kFormat);
  renderer.Draw(canvas, kText, font, 0xFFFFFF, Moved(rect, -2, -2), kFormat);
}

void CaptionFirst(benchmark::State& state) {
  XpPixmap32 pixmap;
  if (pixmap.Allocate(1920, 1080) != XpOk) return;
  Canvas canvas(pixmap.GetBitmapHandle());
  const TextCacheLimits nothingKept{1, 0};
  PangoTextRenderer renderer(nothingKept);
  Font other;
  other.height = -20;
  for (auto _ : state) {
    renderer.Measure(u"x", other, 0, 0);  // pushes the caption out of the cache
    DrawCaption(renderer, canvas);
  }
}
BENCHMARK(CaptionFirst)->Unit(benchmark::kMicrosecond);

void CaptionAgain(benchmark::State& state) {
  XpPixmap32 pixmap;
  if (pixmap.Allocate(1920, 1080) != XpOk) return;
  Canvas canvas(pixmap.GetBitmapHandle());
  PangoTextRenderer renderer;
  for (auto _ : state) DrawCaption(renderer, canvas);
}
BENCHMARK(CaptionAgain)->Unit(benchmark::kMicrosecond);

}  // namespace
