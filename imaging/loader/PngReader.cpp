// PNG by libpng: every colour type and depth, interlaced too, transparency composed on black.
#include <png.h>

#include <csetjmp>
#include <cstdint>
#include <memory>
#include <new>

#include "imaging/loader/ImageFormats.h"

namespace vrx::imaging {

namespace {

constexpr png_alloc_size_t kMaxChunkBytes = 1 << 20;  // of the chunks that are kept at all
constexpr png_uint_32 kMaxCachedChunks = 64;
constexpr std::int64_t kMaxDeflateRatio = 1032;
constexpr int kOpaqueDepth = 8;
constexpr int kBitsPerByte = 8;

/// Made before any setjmp; the functions below keep no object with a destructor while libpng may jump.
struct PngState {
  png_structp png = nullptr;
  png_infop info = nullptr;
  ImageReading* reading = nullptr;

  ~PngState() { png_destroy_read_struct(&png, &info, nullptr); }
};

[[noreturn]] void OnError(png_structp png, png_const_charp words) {
  PngState& state = *static_cast<PngState*>(png_get_error_ptr(png));
  state.reading->Damaged(words);
  png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

void ReadBytes(png_structp png, png_bytep buffer, png_size_t count) {
  PngState& state = *static_cast<PngState*>(png_get_io_ptr(png));
  if (!state.reading->Source().ReadExactly(buffer, count)) {
    png_error(png, "the file ends within the picture");
  }
}

bool ReadHead(PngState& state) {
  ImageReading& reading = *state.reading;
  const auto side = static_cast<png_uint_32>(PNG_UINT_31_MAX);
  // The limits of the request are checked instead: the library's own message would only be "invalid".
  png_set_user_limits(state.png, side, side);
  png_set_chunk_malloc_max(state.png, kMaxChunkBytes);
  png_set_chunk_cache_max(state.png, kMaxCachedChunks);
  // Text, profiles and the like are skipped without being unpacked.
  png_set_keep_unknown_chunks(state.png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  png_set_read_fn(state.png, &state, ReadBytes);
  png_read_info(state.png, state.info);
  return reading.Start(png_get_image_width(state.png, state.info),
                       png_get_image_height(state.png, state.info));
}

/// The library converts every form to rows of BGR, a byte a channel.
void SetTransforms(png_structp png, png_infop info) {
  const int colour = png_get_color_type(png, info);
  const bool hasKey = png_get_valid(png, info, PNG_INFO_tRNS) != 0;
  if (colour == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
  if (png_get_bit_depth(png, info) < kOpaqueDepth) png_set_expand_gray_1_2_4_to_8(png);
  if (hasKey) png_set_tRNS_to_alpha(png);
  if ((colour & PNG_COLOR_MASK_ALPHA) != 0 || hasKey) {
    const png_color_16 black{};
    png_set_background(png, &black, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
  }
  png_set_scale_16(png);
  if ((colour & PNG_COLOR_MASK_COLOR) == 0) png_set_gray_to_rgb(png);
  png_set_bgr(png);
}

bool ReadRows(PngState& state) {
  ImageReading& reading = *state.reading;
  png_structp png = state.png;
  const std::int64_t rowBits =
      std::int64_t{reading.Width()} * png_get_channels(png, state.info) * png_get_bit_depth(png, state.info);
  if (!reading.NeedsBytes(rowBits / kBitsPerByte * reading.Height() / kMaxDeflateRatio)) return false;
  SetTransforms(png, state.info);
  const int passes = png_set_interlace_handling(png);
  png_read_update_info(png, state.info);
  if (png_get_rowbytes(png, state.info) != static_cast<std::size_t>(reading.Width()) * 3) {
    return reading.Damaged("the picture's pixels have an unknown form");
  }
  if (!reading.TakeMemory(reading.Width(), reading.Height())) return false;
  for (int pass = 0; pass < passes; ++pass) {
    for (std::int32_t y = 0; y < reading.Height(); ++y) {
      // Given as the row for display, the pixels of an early pass also fill the places of later passes, which
      // a file that ends early lacks.
      png_read_row(png, nullptr, reading.Row(y));
      reading.NoteRow();
    }
  }
  png_read_end(png, nullptr);
  return true;
}

bool Guarded(PngState& state, bool (*step)(PngState&)) {
  if (setjmp(png_jmpbuf(state.png)) != 0) return false;
  return step(state);
}

}  // namespace

bool ReadPng(ImageReading& reading) {
  PngState state;
  state.reading = &reading;
  state.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state, OnError, IgnoreWarning);
  if (state.png != nullptr) state.info = png_create_info_struct(state.png);
  if (state.info == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  if (!Guarded(state, ReadHead)) return false;
  return !reading.WantsPixels() || Guarded(state, ReadRows);
}

}  // namespace vrx::imaging
