// What the engine spends to hand a full-HD frame to the overlay callback and to take over what was drawn,
// without the time of the drawing itself.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>

extern "C" {
#include <libavutil/frame.h>
}

#include "engine/FramePool.h"
#include "engine/OverlayStage.h"

namespace {

using namespace vrx::engine;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

using Clock = std::chrono::steady_clock;

/// Changes every pixel of the lowest rows, and knows how long that took.
class Painter final : public IVRXIntermediateRawOutputCallback {
 public:
  explicit Painter(int rows) : m_rows(rows) {}
  bool ProcessFrame(std::uint64_t, void* buffer, std::uint32_t, std::int32_t, std::int32_t) override {
    const auto start = Clock::now();
    auto* pixels = static_cast<std::uint32_t*>(buffer);
    for (int i = 0; i < m_rows * kWidth; ++i) pixels[i] ^= 0x00404040;
    m_spent = Clock::now() - start;
    return true;
  }
  Clock::duration Spent() const { return m_spent; }

 private:
  int m_rows;
  Clock::duration m_spent{};
};

void HandOverAndTakeBack(benchmark::State& state) {
  Painter painter(static_cast<int>(state.range(0)));
  OverlayStage stage(&painter, {{0, INT64_MAX, 2, 5}}, kWidth, kHeight);
  FramePool pool;
  FramePtr source = pool.Get(kWidth, kHeight);
  FillBlack(*source);
  for (int y = 0; y < kHeight; ++y)
    std::memset(source->data[0] + y * source->linesize[0], 16 + y % 200, kWidth);
  std::int64_t number = 0;
  for (auto _ : state) {
    FramePtr frame = ShareFrame(*source);
    const auto start = Clock::now();
    stage.Apply(number++, frame);
    const Clock::duration spent = Clock::now() - start - painter.Spent();
    benchmark::DoNotOptimize(frame->data[0]);
    state.SetIterationTime(std::chrono::duration<double>(spent).count());
  }
}
// Nothing drawn, a band as high as three lines of text, and the whole picture.
BENCHMARK(HandOverAndTakeBack)
    ->Arg(0)
    ->Arg(240)
    ->Arg(kHeight)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
