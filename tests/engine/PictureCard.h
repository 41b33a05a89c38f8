// A test card of uniform patches in any planar or half planar format, and exact conversions in doubles to
// compare with. Used by the tests of the engine's colours.
#pragma once

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "engine/AvPointers.h"

namespace vrx::engine {

using Triple = std::array<double, 3>;

struct Encoding {
  AVColorSpace matrix;
  double kr, kb;
  bool fullRange;

  /// 8-bit levels with a fraction from colours between 0 and 1.
  Triple SamplesOf(const Triple& rgb) const {
    const double y = kr * rgb[0] + (1 - kr - kb) * rgb[1] + kb * rgb[2];
    const double chroma = fullRange ? 255 : 224;
    return {fullRange ? 255 * y : 16 + 219 * y, 128 + chroma * (rgb[2] - y) / (2 * (1 - kb)),
            128 + chroma * (rgb[0] - y) / (2 * (1 - kr))};
  }
  Triple ColoursOf(const Triple& samples) const {
    const double y = fullRange ? samples[0] / 255 : (samples[0] - 16) / 219;
    const double chroma = fullRange ? 255 : 224;
    const double red = y + 2 * (1 - kr) * (samples[2] - 128) / chroma;
    const double blue = y + 2 * (1 - kb) * (samples[1] - 128) / chroma;
    return {red, (y - kr * red - kb * blue) / (1 - kr - kb), blue};
  }
};

inline constexpr Encoding kMovie601{AVCOL_SPC_SMPTE170M, 0.299, 0.114, false};
inline constexpr Encoding kMovie709{AVCOL_SPC_BT709, 0.2126, 0.0722, false};

/// `columns` patches in a row, as many rows as there are patches for; `samples` has 8-bit levels and is
/// rounded to the format's depth, and changed to what the picture really holds.
inline FramePtr MakeCard(AVPixelFormat format, int width, int height, int columns, const Encoding& encoding,
                         std::vector<Triple>& samples) {
  FramePtr frame(av_frame_alloc());
  frame->format = format;
  frame->width = width;
  frame->height = height;
  frame->colorspace = encoding.matrix;
  frame->color_range = encoding.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  av_frame_get_buffer(frame.get(), 0);
  const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(format);
  const int depth = descriptor.comp[0].depth, rows = static_cast<int>(samples.size()) / columns;
  // A full-range sample of 10 bits is not four times one of 8 bits.
  const double scale = encoding.fullRange ? ((1 << depth) - 1) / 255.0 : 1 << (depth - 8);
  const double neutral = 128 * (1 << (depth - 8));
  for (std::size_t part = 0; part < 3; ++part) {
    const AVComponentDescriptor& place = descriptor.comp[part];
    const int shiftX = part == 0 ? 0 : descriptor.log2_chroma_w,
              shiftY = part == 0 ? 0 : descriptor.log2_chroma_h;
    std::vector<int> levels;
    for (Triple& sample : samples) {
      const double exact = part == 0 ? sample[part] * scale : neutral + (sample[part] - 128) * scale;
      const double level = std::min(std::floor(exact + 0.5), double((1 << depth) - 1));
      levels.push_back(static_cast<int>(level));
      sample[part] = part == 0 ? level / scale : 128 + (level - neutral) / scale;
    }
    for (int y = 0; y < height >> shiftY; ++y) {
      for (int x = 0; x < width >> shiftX; ++x) {
        const int patch = (y << shiftY) * rows / height * columns + (x << shiftX) * columns / width;
        const int level = levels[static_cast<std::size_t>(patch)] << place.shift;
        std::uint8_t* at =
            frame->data[place.plane] + y * frame->linesize[place.plane] + x * place.step + place.offset;
        at[0] = static_cast<std::uint8_t>(level);
        if (depth > 8) at[1] = static_cast<std::uint8_t>(level >> 8);
      }
    }
  }
  return frame;
}

/// What an 8-bit 4:2:0 picture has in the middle of a patch.
inline Triple MiddleOf(const AVFrame& frame, int columns, int rows, int patch) {
  const int x = (2 * (patch % columns) + 1) * frame.width / columns / 2;
  const int y = (2 * (patch / columns) + 1) * frame.height / rows / 2;
  return {double(frame.data[0][y * frame.linesize[0] + x]),
          double(frame.data[1][y / 2 * frame.linesize[1] + x / 2]),
          double(frame.data[2][y / 2 * frame.linesize[2] + x / 2])};
}

}  // namespace vrx::engine
