// What composing pictures costs a frame of 1920 by 1080.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>

#include "drawing/Canvas.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "imaging/pixmap/XpPixmapOverlay.h"

namespace {

constexpr std::int32_t kWidth = 1920, kHeight = 1080;

enum Content { kClear, kSparse, kDense };

/// Clear, three lines' worth of random pixels, or random pixels all over.
void Prepare(XpPixmap32& pixmap, Content content) {
  if (pixmap.Allocate(kWidth, kHeight) != XpOk || content == kClear) return;
  std::mt19937 random(1);
  const std::uint32_t first = content == kSparse ? pixmap.size / 5 * 4 : 0;
  for (std::uint32_t i = first; i < pixmap.size; ++i) pixmap.data[i] = static_cast<unsigned char>(random());
}

void Overlay(benchmark::State& state) {
  XpPixmap32 dest, source;
  Prepare(source, static_cast<Content>(state.range(0)));
  Prepare(dest, kDense);
  const auto shrunk = static_cast<std::int32_t>(state.range(1));
  for (auto _ : state) {
    OverlayPixmap(dest, shrunk / 2, shrunk / 2, kWidth - shrunk, kHeight - shrunk, source, kWidth, kHeight);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Overlay)->ArgsProduct({{kClear, kSparse, kDense}, {0, 20}})->Unit(benchmark::kMicrosecond);

void OverlayWithAlpha(benchmark::State& state) {
  XpPixmap32 dest, source;
  Prepare(source, static_cast<Content>(state.range(0)));
  Prepare(dest, static_cast<Content>(state.range(0)));
  for (auto _ : state) {
    OverlayPixmapWithAlpha(dest, 10, 10, kWidth - 20, kHeight - 20, source, kWidth, kHeight, 0x80);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(OverlayWithAlpha)->Arg(kClear)->Arg(kSparse)->Arg(kDense)->Unit(benchmark::kMicrosecond);

void AlphaBlend(benchmark::State& state) {
  XpPixmap32 dest, source;
  Prepare(source, static_cast<Content>(state.range(0)));
  Prepare(dest, kDense);
  vrx::drawing::Canvas canvas(dest.GetBitmapHandle());
  for (auto _ : state) {
    canvas.AlphaBlend({0, 0, kWidth, kHeight}, source.GetBitmapHandle(), {0, 0, kWidth, kHeight});
    benchmark::ClobberMemory();
  }
}
BENCHMARK(AlphaBlend)->Arg(kClear)->Arg(kSparse)->Arg(kDense)->Unit(benchmark::kMicrosecond);

void Fill(benchmark::State& state) {
  XpPixmap32 dest;
  Prepare(dest, kDense);
  for (auto _ : state) {
    FillPixmap(dest, 1, 2, 3, 4);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Fill)->Unit(benchmark::kMicrosecond);

void Stretch(benchmark::State& state) {
  XpPixmap24 dest, source;
  if (dest.Allocate(kWidth, kHeight) != XpOk || source.Allocate(1280, 720) != XpOk) return;
  for (auto _ : state) {
    StretchPixmapBlock(dest, 0, 0, kWidth, kHeight, source, 0, 0, 1280, 720);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Stretch)->Unit(benchmark::kMicrosecond);

}  // namespace
