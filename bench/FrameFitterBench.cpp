// What it costs to bring a decoded picture into a full HD movie, for the kinds of pictures that sources have.
#include <benchmark/benchmark.h>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
}

#include <cstring>
#include <random>

#include "engine/FrameFitter.h"

namespace {

using namespace vrx::engine;

struct Picture {
  const char* name;
  int width;
  int height;
  AVPixelFormat format;
  AVColorSpace matrix;
  AVColorRange range;
  int clockwise = 0;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_BT709;
};

constexpr Picture kPictures[] = {
    {"another matrix", 1920, 1080, AV_PIX_FMT_YUV420P, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG},
    {"full range", 1920, 1080, AV_PIX_FMT_YUVJ420P, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG},
    {"full range between bars", 1080, 1080, AV_PIX_FMT_YUVJ420P, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG},
    {"another matrix, enlarged", 1280, 720, AV_PIX_FMT_YUV420P, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG},
    {"another matrix, reduced", 3840, 2160, AV_PIX_FMT_YUV420P, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG},
    {"full range, turned", 1080, 1920, AV_PIX_FMT_YUVJ420P, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG, 90},
    {"10 bit", 1920, 1080, AV_PIX_FMT_YUV420P10LE, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
    {"10 bit 4:2:2 of another matrix", 1920, 1080, AV_PIX_FMT_YUV422P10LE, AVCOL_SPC_BT2020_NCL,
     AVCOL_RANGE_MPEG},
    {"10 bit between bars", 1440, 1080, AV_PIX_FMT_YUV420P10LE, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
    {"reduced", 3840, 2160, AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
    {"10 bit HLG", 1920, 1080, AV_PIX_FMT_YUV420P10LE, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, 0,
     AVCOL_TRC_ARIB_STD_B67},
    {"10 bit PQ, reduced", 3840, 2160, AV_PIX_FMT_YUV420P10LE, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, 0,
     AVCOL_TRC_SMPTE2084},
    {"10 bit half planar", 1920, 1080, AV_PIX_FMT_P010LE, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
    {"RGB", 1920, 1080, AV_PIX_FMT_RGB24, AVCOL_SPC_RGB, AVCOL_RANGE_JPEG},
};

FramePtr Make(const Picture& picture) {
  FramePtr frame(av_frame_alloc());
  frame->format = picture.format;
  frame->width = picture.width;
  frame->height = picture.height;
  frame->colorspace = picture.matrix;
  frame->color_range = picture.range;
  frame->color_trc = picture.transfer;
  av_frame_get_buffer(frame.get(), 0);
  std::mt19937 random(1);
  for (AVBufferRef* buffer : frame->buf) {
    if (buffer == nullptr) break;
    for (std::size_t i = 0; i < buffer->size; ++i) {
      // The second byte of a 10-bit sample has two bits.
      const bool high = picture.format != AV_PIX_FMT_RGB24 && picture.name[0] == '1' && i % 2 == 1;
      buffer->data[i] = static_cast<std::uint8_t>(high ? random() % 4 : random());
    }
  }
  return frame;
}

void Fit(benchmark::State& state) {
  const Picture& picture = kPictures[state.range(0)];
  const FramePtr source = Make(picture);
  FrameFitter fitter(1920, 1080);
  FramePtr fitted;
  for (auto _ : state) {
    if (fitter.Fit(*source, Orientation{picture.clockwise}, fitted) != kOk) state.SkipWithError("not fitted");
    benchmark::DoNotOptimize(fitted->data[0]);
  }
  state.SetLabel(picture.name);
}
BENCHMARK(Fit)->DenseRange(0, std::ssize(kPictures) - 1)->Unit(benchmark::kMicrosecond);

}  // namespace
