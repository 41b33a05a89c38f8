#include "engine/PictureScaler.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <zimg.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr double kLobes = 3;
// Of planes that are smaller already, and of pictures that shrink to half or less, where the filter is long
// and the picture large: it costs a fiftieth of the time of such a render less, and is still as good as
// bicubic.
constexpr double kShortLobes = 2;
constexpr int kAlignment = 64;      // bytes, for the widest vectors
constexpr int kMaxSubsampling = 2;  // powers of two that zimg takes
constexpr int kPlanes = 3;

/// What pictures that zimg cannot read become first.
constexpr AVPixelFormat kPlanarFormats[] = {
    AV_PIX_FMT_GRAY8,     AV_PIX_FMT_GRAY16,    AV_PIX_FMT_YUV420P,   AV_PIX_FMT_YUV422P,
    AV_PIX_FMT_YUV440P,   AV_PIX_FMT_YUV444P,   AV_PIX_FMT_YUV411P,   AV_PIX_FMT_YUV410P,
    AV_PIX_FMT_YUV420P10, AV_PIX_FMT_YUV422P10, AV_PIX_FMT_YUV444P10, AV_PIX_FMT_YUV420P12,
    AV_PIX_FMT_YUV422P12, AV_PIX_FMT_YUV444P12, AV_PIX_FMT_YUV420P16, AV_PIX_FMT_YUV422P16,
    AV_PIX_FMT_YUV444P16, AV_PIX_FMT_GBRP,      AV_PIX_FMT_GBRP10,    AV_PIX_FMT_GBRP16,
    AV_PIX_FMT_NONE,
};

AVPixelFormat FormatOf(const AVFrame& frame) {
  return WithoutRange(static_cast<AVPixelFormat>(frame.format));
}

int CountPlanes(const AVPixFmtDescriptor& descriptor) {
  return descriptor.nb_components < kPlanes ? 1 : kPlanes;
}

/// Whether each component is a plane of bytes or of words in the machine's order.
bool IsReadable(AVPixelFormat format) {
  constexpr std::uint64_t kForeign = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                                     AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
  if (descriptor == nullptr || (descriptor->flags & kForeign) != 0) return false;
  const int depth = descriptor->comp[0].depth, bytes = depth > 8 ? 2 : 1;
  const bool isForeignOrder = ((descriptor->flags & AV_PIX_FMT_FLAG_BE) != 0) != AV_HAVE_BIGENDIAN;
  if (depth < 8 || depth > 16 || (bytes > 1 && isForeignOrder)) return false;
  if (std::max(descriptor->log2_chroma_w, descriptor->log2_chroma_h) > kMaxSubsampling) return false;
  for (int i = 0; i < CountPlanes(*descriptor); ++i) {
    const AVComponentDescriptor& part = descriptor->comp[i];
    if (part.step != bytes || part.offset != 0 || part.shift != 0 || part.depth != depth) return false;
  }
  return true;
}

/// `size` up to a whole number of chroma samples.
int PaddedSize(int size, int subsampling) { return AV_CEIL_RSHIFT(size, subsampling) << subsampling; }

bool IsWhole(const AVFrame& frame) {
  const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(FormatOf(frame));
  return PaddedSize(frame.width, descriptor.log2_chroma_w) == frame.width &&
         PaddedSize(frame.height, descriptor.log2_chroma_h) == frame.height;
}

/// Repeats the last column and row of the first plane as far as the chroma samples reach.
void PadEdges(AVFrame& frame, const AVPixFmtDescriptor& descriptor) {
  const auto bytes = static_cast<std::size_t>(descriptor.comp[0].step);
  const auto width = static_cast<std::size_t>(frame.width);
  const auto padded = static_cast<std::size_t>(PaddedSize(frame.width, descriptor.log2_chroma_w));
  for (int y = 0; y < frame.height; ++y) {
    std::uint8_t* row = frame.data[0] + static_cast<std::ptrdiff_t>(y) * frame.linesize[0];
    for (std::size_t x = width; x < padded; ++x)
      std::memcpy(row + x * bytes, row + (width - 1) * bytes, bytes);
  }
  const std::uint8_t* last =
      frame.data[0] + static_cast<std::ptrdiff_t>(frame.height - 1) * frame.linesize[0];
  for (int y = frame.height; y < PaddedSize(frame.height, descriptor.log2_chroma_h); ++y) {
    std::memcpy(frame.data[0] + static_cast<std::ptrdiff_t>(y) * frame.linesize[0], last, padded * bytes);
  }
}

zimg_matrix_coefficients_e MatrixOf(AVColorSpace matrix) {
  const LumaWeights weights = WeightsOf(matrix);
  for (const auto& [known, result] :
       {std::pair{AVCOL_SPC_BT709, ZIMG_MATRIX_BT709}, std::pair{AVCOL_SPC_FCC, ZIMG_MATRIX_FCC},
        std::pair{AVCOL_SPC_SMPTE240M, ZIMG_MATRIX_ST240_M},
        std::pair{AVCOL_SPC_BT2020_NCL, ZIMG_MATRIX_BT2020_NCL}}) {
    if (weights == WeightsOf(known)) return result;
  }
  return ZIMG_MATRIX_ST170_M;
}

zimg_chroma_location_e ChromaOf(AVChromaLocation location) {
  switch (location) {
    case AVCHROMA_LOC_CENTER:
      return ZIMG_CHROMA_CENTER;
    case AVCHROMA_LOC_TOPLEFT:
      return ZIMG_CHROMA_TOP_LEFT;
    case AVCHROMA_LOC_TOP:
      return ZIMG_CHROMA_TOP;
    case AVCHROMA_LOC_BOTTOMLEFT:
      return ZIMG_CHROMA_BOTTOM_LEFT;
    case AVCHROMA_LOC_BOTTOM:
      return ZIMG_CHROMA_BOTTOM;
    default:
      return ZIMG_CHROMA_LEFT;
  }
}

zimg_image_format MakeImage(int width, int height, AVPixelFormat format, const PictureColour& colour,
                            AVChromaLocation chroma) {
  const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(format);
  zimg_image_format image;
  zimg_image_format_default(&image, ZIMG_API_VERSION);
  image.subsample_w = descriptor.log2_chroma_w;
  image.subsample_h = descriptor.log2_chroma_h;
  image.width = static_cast<unsigned>(PaddedSize(width, descriptor.log2_chroma_w));
  image.height = static_cast<unsigned>(PaddedSize(height, descriptor.log2_chroma_h));
  image.active_region = {0, 0, double(width), double(height)};
  image.depth = static_cast<unsigned>(descriptor.comp[0].depth);
  image.pixel_type = image.depth > 8 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
  image.pixel_range = colour.fullRange ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
  image.chroma_location = ChromaOf(chroma);
  if (IsRgb(format)) {
    image.color_family = ZIMG_COLOR_RGB;
    image.matrix_coefficients = ZIMG_MATRIX_RGB;
  } else if (CountPlanes(descriptor) == 1) {
    image.color_family = ZIMG_COLOR_GREY;
  } else {
    image.color_family = ZIMG_COLOR_YUV;
    image.matrix_coefficients = MatrixOf(colour.matrix);
  }
  return image;
}

template <typename Buffer>
Buffer BufferOf(const AVFrame& frame) {
  const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(FormatOf(frame));
  Buffer buffer{.version = ZIMG_API_VERSION};
  for (int i = 0; i < CountPlanes(descriptor); ++i) {
    const int plane = descriptor.comp[i].plane;
    buffer.plane[i] = {frame.data[plane], frame.linesize[plane], ZIMG_BUFFER_MAX};
  }
  return buffer;
}

Result Refuse(int format, const std::string& cause) {
  const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(format));
  Log(VRXLogError, std::string("pictures of the format ") + (name == nullptr ? "?" : name) +
                       " cannot be converted: " + cause);
  return kSourceUnreadable;
}

}  // namespace

bool IsAligned(const AVFrame& frame) {
  for (std::size_t plane = 0; plane < kPlanes && frame.data[plane] != nullptr; ++plane) {
    if (reinterpret_cast<std::uintptr_t>(frame.data[plane]) % kAlignment != 0) return false;
    if (frame.linesize[plane] <= 0 || frame.linesize[plane] % kAlignment != 0) return false;
  }
  return true;
}

void PictureScaler::GraphDeleter::operator()(zimg_filter_graph* graph) const {
  zimg_filter_graph_free(graph);
}

Result PictureScaler::Scale(const AVFrame& source, const PictureColour& from, AVFrame& target,
                            const PictureColour& to) {
  const AVFrame* planar = nullptr;
  VRX_TRY(MakePlanar(source, planar));
  PictureColour colour = from;
  colour.fullRange = colour.fullRange || IsRgb(FormatOf(*planar));
  VRX_TRY(PrepareGraph({source.width, source.height, planar->format, colour, source.chroma_location},
                       {target.width, target.height, target.format, to, AVCHROMA_LOC_LEFT}));
  const auto input = BufferOf<zimg_image_buffer_const>(*planar);
  const auto output = BufferOf<zimg_image_buffer>(target);
  const int error = zimg_filter_graph_process(m_graph.get(), &input, &output, m_scratch.data(), nullptr,
                                              nullptr, nullptr, nullptr);
  if (error == ZIMG_ERROR_SUCCESS) return kOk;
  return Refuse(source.format, "zimg error " + std::to_string(error));
}

Result PictureScaler::PrepareGraph(const Kind& from, const Kind& to) {
  if (m_graph && from == m_from && to == m_to) return kOk;
  const auto image = [](const Kind& kind) {
    return MakeImage(kind.width, kind.height, WithoutRange(static_cast<AVPixelFormat>(kind.format)),
                     kind.colour, kind.chroma);
  };
  const zimg_image_format input = image(from), output = image(to);
  zimg_graph_builder_params parameters;
  zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
  parameters.resample_filter = parameters.resample_filter_uv = ZIMG_RESIZE_LANCZOS;
  const bool isHalved = from.width >= 2 * to.width && from.height >= 2 * to.height;
  parameters.filter_param_a = isHalved ? kShortLobes : kLobes;
  parameters.filter_param_a_uv = kShortLobes;
  parameters.cpu_type = ZIMG_CPU_AUTO_64B;
  const bool losesDepth = input.depth > output.depth && output.pixel_type == ZIMG_PIXEL_BYTE;
  parameters.dither_type = losesDepth ? ZIMG_DITHER_ORDERED : ZIMG_DITHER_NONE;
  m_graph.reset(zimg_filter_graph_build(&input, &output, &parameters));
  std::size_t size = 0;
  if (!m_graph || zimg_filter_graph_get_tmp_size(m_graph.get(), &size) != ZIMG_ERROR_SUCCESS) {
    std::array<char, 256> cause{};
    const zimg_error_code_e error = zimg_get_last_error(cause.data(), cause.size());
    zimg_clear_last_error();
    m_graph.reset();
    if (error == ZIMG_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
    return Refuse(from.format, cause.data());
  }
  m_scratch.resize((size + sizeof(Block) - 1) / sizeof(Block));
  m_from = from;
  m_to = to;
  return kOk;
}

/// `planar` is `source` itself where zimg can read that, else a copy.
Result PictureScaler::MakePlanar(const AVFrame& source, const AVFrame*& planar) {
  AVPixelFormat format = FormatOf(source);
  const bool isReadable = IsReadable(format);
  if (isReadable && IsAligned(source) && IsWhole(source)) {
    planar = &source;
    return kOk;
  }
  if (!isReadable) {
    format = avcodec_find_best_pix_fmt_of_list(kPlanarFormats, format, 0, nullptr);
    if (format == AV_PIX_FMT_NONE) return Refuse(source.format, "no planar format is like it");
  }
  if (!m_planar || m_planar->format != format || m_planar->width != source.width ||
      m_planar->height != source.height) {
    m_planar.reset(av_frame_alloc());
    if (!m_planar) throw std::bad_alloc();
    m_planar->format = format;
    m_planar->width = source.width + kAlignment;  // swscale writes past the right edge
    m_planar->height = PaddedSize(source.height, kMaxSubsampling);
    if (av_frame_get_buffer(m_planar.get(), kAlignment) < 0) throw std::bad_alloc();
    m_planar->width = source.width;
    m_planar->height = source.height;
  }
  if (isReadable) {
    av_image_copy(m_planar->data, m_planar->linesize, const_cast<const std::uint8_t**>(source.data),
                  source.linesize, format, source.width, source.height);
  } else {
    VRX_TRY(Repack(source));
  }
  PadEdges(*m_planar, *av_pix_fmt_desc_get(format));
  planar = m_planar.get();
  return kOk;
}

/// Writes `source` to m_planar, with its size and the meaning of its samples.
Result PictureScaler::Repack(const AVFrame& source) {
  const Kind packed{source.width, source.height, source.format, {}, AVCHROMA_LOC_UNSPECIFIED};
  if (!m_repacker || packed != m_packed) {
    m_repacker.reset(sws_alloc_context());
    if (!m_repacker) throw std::bad_alloc();
    SwsContext* repacker = m_repacker.get();
    // Equal ranges mean no conversion. For grey pictures the library takes no other range than full.
    const int range = IsRgb(FormatOf(source)) ? 0 : 1;
    av_opt_set_int(repacker, "srcw", source.width, 0);
    av_opt_set_int(repacker, "srch", source.height, 0);
    av_opt_set_int(repacker, "src_format", FormatOf(source), 0);
    av_opt_set_int(repacker, "src_range", range, 0);
    av_opt_set_int(repacker, "dstw", source.width, 0);
    av_opt_set_int(repacker, "dsth", source.height, 0);
    av_opt_set_int(repacker, "dst_format", m_planar->format, 0);
    av_opt_set_int(repacker, "dst_range", range, 0);
    av_opt_set_int(repacker, "sws_flags", SWS_BICUBIC | SWS_ACCURATE_RND, 0);
    if (const int error = sws_init_context(repacker, nullptr, nullptr); error < 0) {
      m_repacker.reset();
      return Refuse(source.format, AvErrorText(error));
    }
    m_packed = packed;
  }
  const int rows = sws_scale(m_repacker.get(), source.data, source.linesize, 0, source.height, m_planar->data,
                             m_planar->linesize);
  return rows >= 0 ? kOk : Refuse(source.format, AvErrorText(rows));
}

}  // namespace vrx::engine
