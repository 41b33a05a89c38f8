// What it costs to bring a picture of 16 megapixels to another size, next to a pass over memory that reads
// the same source once and writes the same target once.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>

#include "imaging/resample/AdobeRgb.h"
#include "imaging/resample/XpPixmapResample.h"

namespace {

constexpr std::int32_t kSide = 4000;

const XpPixmap24NoHandle& Source(std::int32_t width, std::int32_t height) {
  static XpPixmap24NoHandle source;
  if (source.width == width && source.height == height) return source;
  if (source.Allocate(width, height) != XpOk) std::abort();
  std::mt19937 random(1);
  for (std::uint32_t i = 0; i + 4 <= source.size; i += 4) {
    const auto value = static_cast<std::uint32_t>(random());
    std::memcpy(source.data + i, &value, sizeof value);
  }
  return source;
}

/// Times `work` alone, on a fresh copy of the source each time.
template <class Work>
void TimeOnCopies(benchmark::State& state, std::int32_t width, std::int32_t height, Work work) {
  const XpPixmap24NoHandle& source = Source(width, height);
  for (auto _ : state) {
    const auto copy = source.Clone();
    const auto begin = std::chrono::steady_clock::now();
    work(static_cast<XpPixmap24NoHandle&>(*copy));
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    state.SetIterationTime(taken.count());
  }
}

void Resample(benchmark::State& state) {
  const auto width = static_cast<std::int32_t>(state.range(2)),
             height = static_cast<std::int32_t>(state.range(3));
  TimeOnCopies(state, static_cast<std::int32_t>(state.range(0)), static_cast<std::int32_t>(state.range(1)),
               [&](XpPixmap24NoHandle& pixmap) {
                 if (ResamplePixmap(pixmap, width, height) != XpOk) state.SkipWithError("not resampled");
               });
}

/// Adds up the source, and fills the target, for which the source makes room, with the sum.
void MemoryPass(benchmark::State& state) {
  const auto width = static_cast<std::int32_t>(state.range(2)),
             height = static_cast<std::int32_t>(state.range(3));
  TimeOnCopies(state, static_cast<std::int32_t>(state.range(0)), static_cast<std::int32_t>(state.range(1)),
               [&](XpPixmap24NoHandle& pixmap) {
                 std::uint32_t sum = 0;
                 for (std::uint32_t i = 0; i + 4 <= pixmap.size; i += 4) {
                   std::uint32_t word;
                   std::memcpy(&word, pixmap.data + i, sizeof word);
                   sum += word;
                 }
                 if (pixmap.Allocate(width, height) != XpOk) state.SkipWithError("no memory");
                 std::memset(pixmap.data, static_cast<int>(sum & 0xFF), pixmap.size);
                 benchmark::DoNotOptimize(pixmap.data);
               });
}

void Sizes(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"from", "by", "to", "by"})
      ->Args({kSide, kSide, kSide / 2, kSide / 2})
      ->Args({3999, 3999, 1333, 1333})
      ->Args({kSide, kSide, 640, 480})
      ->Args({kSide, kSide, 1000, 1000})
      ->Args({kSide, kSide, 3600, 3600})
      ->Args({kSide, kSide, 3601, 3599})
      ->Args({kSide, kSide, 6000, 6000})
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}
BENCHMARK(Resample)->Apply(Sizes);
BENCHMARK(MemoryPass)->Apply(Sizes);

void Crop(benchmark::State& state) {
  TimeOnCopies(state, kSide, kSide, [&](XpPixmap24NoHandle& pixmap) {
    if (CropPixmap(pixmap, 1, 500, kSide - 1, kSide - 500) != XpOk) state.SkipWithError("not cropped");
  });
}
BENCHMARK(Crop)->UseManualTime()->Unit(benchmark::kMillisecond);

void AdobeRgbToSrgb(benchmark::State& state) {
  TimeOnCopies(state, kSide, kSide, [](XpPixmap24NoHandle& pixmap) { ConvertAdobeRgbToSrgb(pixmap); });
}
BENCHMARK(AdobeRgbToSrgb)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
