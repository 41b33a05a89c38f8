// What the decoder and the copy of coefficients share: the library's own object for reading.
#pragma once

#include <cstddef>

#include "imaging/jpeg/JpegDecoder.h"
#include "imaging/jpeg/JpegGuard.h"

namespace vrx::imaging {

inline constexpr std::size_t kJpegBufferBytes = 64 * 1024;

struct JpegDecoder::State : JpegGuard {
  explicit State(ImageSource& from, JpegShortage shortageRule) : source(from), shortage(shortageRule) {}
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() {
    if (isCreated) jpeg_destroy_decompress(&decoder);
  }

  ImageSource& source;
  JpegShortage shortage;
  jpeg_decompress_struct decoder{};
  jpeg_source_mgr input{};
  jpeg_progress_mgr progress{};
  bool isCreated = false;
  bool isDamaged = false;
  char damage[JMSG_LENGTH_MAX] = {};
  // Arguments of the step that runs.
  int number = 0;
  JpegForm form;
  unsigned char* row = nullptr;
  unsigned char bytes[kJpegBufferBytes];
};

}  // namespace vrx::imaging
