// What a photograph of 24 megapixels costs, whole and where a frame of 1920 by 1080 is enough.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include <jpeglib.h>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/loader/ImageFormats.h"

namespace {

constexpr int kWidth = 6000, kHeight = 4000;

struct Encoded {
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  ~Encoded() { std::free(bytes); }
};

/// Ramps with some grain, subsampled as cameras do.
void Encode(Encoded& out) {
  jpeg_compress_struct encoder{};
  jpeg_error_mgr errors;
  encoder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&encoder);
  jpeg_mem_dest(&encoder, &out.bytes, &out.size);
  encoder.image_width = kWidth;
  encoder.image_height = kHeight;
  encoder.input_components = 3;
  encoder.in_color_space = JCS_RGB;
  jpeg_set_defaults(&encoder);
  jpeg_set_quality(&encoder, 92, TRUE);
  jpeg_start_compress(&encoder, TRUE);
  std::mt19937 random(1);
  std::vector<unsigned char> row(kWidth * 3);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth * 3; ++x) {
      row[static_cast<std::size_t>(x)] =
          static_cast<unsigned char>(x * 100 / kWidth / 3 + y * 100 / kHeight + random() % 24);
    }
    JSAMPROW rows = row.data();
    jpeg_write_scanlines(&encoder, &rows, 1);
  }
  jpeg_finish_compress(&encoder);
  jpeg_destroy_compress(&encoder);
}

void DecodeJpeg(benchmark::State& state) {
  static Encoded encoded;
  if (encoded.bytes == nullptr) Encode(encoded);
  vrx::imaging::StillImageRequest request;
  request.enoughWidth = static_cast<std::int32_t>(state.range(0));
  request.enoughHeight = static_cast<std::int32_t>(state.range(1));
  XpMemoryFile file;
  file.Attach(encoded.bytes, static_cast<std::int64_t>(encoded.size), false);
  std::int32_t width = 0, height = 0;
  for (auto _ : state) {
    vrx::imaging::StillImage image;
    if (vrx::imaging::ReadStillImage(file, request, &image, width, height, nullptr) != XpOk) {
      state.SkipWithError("the picture did not decode");
    }
  }
  state.counters["bytes"] = static_cast<double>(encoded.size);
}
BENCHMARK(DecodeJpeg)->Args({0, 0})->Args({1920, 1080})->Unit(benchmark::kMillisecond);

}  // namespace
