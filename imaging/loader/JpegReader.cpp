// JPEG by libjpeg: grey, colour and print colours, baseline and progressive, scaled down by the decoder
// itself.
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>

// After cstdio, which it needs and does not include.
#include <jpeglib.h>

#include <jerror.h>

#include "imaging/loader/ImageFormats.h"

namespace vrx::imaging {

namespace {

constexpr std::size_t kInputBytes = 16 * 1024;
constexpr int kMaxScans = 200;       // real progressive pictures have about ten
constexpr unsigned kWholeScale = 8;  // the decoder scales by eighths
// Halvings only: at these the decoder gives averages of blocks but for rounding, and is vectorised. At other
// scales it cuts off frequencies, and fine detail differs by far more than rounding.
constexpr unsigned kScales[] = {1, 2, 4};
constexpr int kInkChannels = 4;
constexpr int kMaxSample = 255;
constexpr std::int64_t kPixelsPerByte = 512;  // a block of 64 pixels takes one bit at least
constexpr long kCoefficientBytes = 2 * 4;     // a pixel of a progressive picture, four channels
constexpr long kWorkspaceBytes = 64L << 20;   // the decoder's own tables and rows

/// What the library's callbacks use. It is made before any setjmp and outlives every longjmp; the functions
/// in between have no object with a destructor.
struct JpegState {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr errors{};
  jpeg_source_mgr input{};
  jpeg_progress_mgr progress{};
  std::jmp_buf jump;
  ImageReading* reading = nullptr;
  bool isCreated = false;
  std::unique_ptr<unsigned char[]> inkRow;
  unsigned char bytes[kInputBytes];

  ~JpegState() {
    if (isCreated) jpeg_destroy_decompress(&decoder);
  }
};

JpegState& StateOf(j_common_ptr common) { return *static_cast<JpegState*>(common->client_data); }
JpegState& StateOf(j_decompress_ptr decoder) { return *static_cast<JpegState*>(decoder->client_data); }

[[noreturn]] void GiveUp(JpegState& state, XpResult result, const char* words) {
  state.reading->Fail(result, words);
  std::longjmp(state.jump, 1);
}

[[noreturn]] void OnError(j_common_ptr common) {
  JpegState& state = StateOf(common);
  char words[JMSG_LENGTH_MAX];
  common->err->format_message(common, words);
  const int code = common->err->msg_code;
  const bool isMemory = code == JERR_OUT_OF_MEMORY || code == JERR_NO_BACKING_STORE;
  GiveUp(state, isMemory ? XpErrOutOfMemory : XpErrInvalidFile, words);
}

/// Whether at least one row of blocks was read.
bool HasRows(const jpeg_decompress_struct& decoder) {
  return decoder.input_scan_number > 1 || decoder.input_iMCU_row > 0;
}

/// Cameras leave stray bytes between segments, which harm nothing; a warning about the entropy-coded data
/// means that the decoder makes up pixels.
void OnMessage(j_common_ptr common, int level) {
  if (level >= 0) return;
  JpegState& state = StateOf(common);
  switch (common->err->msg_code) {
    case JWRN_HIT_MARKER:
      if (!HasRows(state.decoder)) OnError(common);
      [[fallthrough]];
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_MUST_RESYNC:
      char words[JMSG_LENGTH_MAX];
      common->err->format_message(common, words);
      state.reading->Damaged(words);
      return;
    default:
      return;
  }
}

void IgnoreText(j_common_ptr) {}

void InitSource(j_decompress_ptr) {}
void TermSource(j_decompress_ptr) {}

boolean FillInput(j_decompress_ptr decoder) {
  JpegState& state = StateOf(decoder);
  constexpr char kWords[] = "the file ends within the picture";
  std::size_t read = state.reading->Source().Read(state.bytes, kInputBytes);
  if (read == 0) {
    if (!HasRows(state.decoder)) GiveUp(state, XpErrInvalidFile, kWords);
    // An end marker lets the decoder fill in what is missing.
    state.reading->Damaged(kWords);
    state.bytes[0] = 0xFF;
    state.bytes[1] = JPEG_EOI;
    read = 2;
  }
  state.input.next_input_byte = state.bytes;
  state.input.bytes_in_buffer = read;
  return TRUE;
}

void SkipInput(j_decompress_ptr decoder, long count) {
  if (count <= 0) return;
  jpeg_source_mgr& input = StateOf(decoder).input;
  const auto wanted = static_cast<std::size_t>(count);
  if (wanted <= input.bytes_in_buffer) {
    input.next_input_byte += wanted;
    input.bytes_in_buffer -= wanted;
    return;
  }
  ImageSource& source = StateOf(decoder).reading->Source();
  source.Seek(source.Position() + static_cast<std::int64_t>(wanted - input.bytes_in_buffer));
  input.bytes_in_buffer = 0;
}

void OnProgress(j_common_ptr common) {
  JpegState& state = StateOf(common);
  if (state.decoder.input_scan_number > kMaxScans) {
    GiveUp(state, XpErrInvalidFile, "the picture has too many scans");
  }
}

void Create(JpegState& state) {
  state.decoder.err = jpeg_std_error(&state.errors);
  state.errors.error_exit = OnError;
  state.errors.emit_message = OnMessage;
  state.errors.output_message = IgnoreText;
  state.decoder.client_data = &state;
  jpeg_create_decompress(&state.decoder);
  state.isCreated = true;
  state.input.init_source = InitSource;
  state.input.fill_input_buffer = FillInput;
  state.input.skip_input_data = SkipInput;
  state.input.resync_to_restart = jpeg_resync_to_restart;
  state.input.term_source = TermSource;
  state.decoder.src = &state.input;
  state.progress.progress_monitor = OnProgress;
  state.decoder.progress = &state.progress;
}

/// The least scale, in eighths, at which the picture covers what is enough.
unsigned ChooseScale(const ImageReading& reading) {
  const StillImageRequest& request = reading.Request();
  if (request.enoughWidth <= 0 || request.enoughHeight <= 0) return kWholeScale;
  const auto covers = [](std::int64_t whole, unsigned eighths, std::int32_t enough) {
    return (whole * eighths + kWholeScale - 1) / kWholeScale >= enough;
  };
  for (const unsigned eighths : kScales) {
    if (covers(reading.Width(), eighths, request.enoughWidth) &&
        covers(reading.Height(), eighths, request.enoughHeight)) {
      return eighths;
    }
  }
  return kWholeScale;
}

bool ReadHead(JpegState& state) {
  jpeg_decompress_struct& decoder = state.decoder;
  ImageReading& reading = *state.reading;
  jpeg_read_header(&decoder, TRUE);
  if (!reading.Start(decoder.image_width, decoder.image_height)) return false;
  if (!reading.WantsPixels()) return true;
  const std::int64_t pixels = std::int64_t{reading.Width()} * reading.Height();
  if (!decoder.arith_code && !reading.NeedsBytes(pixels / kPixelsPerByte)) return false;
  decoder.mem->max_memory_to_use = static_cast<long>(pixels) * kCoefficientBytes + kWorkspaceBytes;
  const bool isInk = decoder.jpeg_color_space == JCS_CMYK || decoder.jpeg_color_space == JCS_YCCK;
  decoder.out_color_space = isInk ? JCS_CMYK : JCS_EXT_BGR;
  decoder.scale_num = ChooseScale(reading);
  decoder.scale_denom = kWholeScale;
  return true;
}

unsigned char Multiply(int a, int b) {
  return static_cast<unsigned char>((a * b + kMaxSample / 2) / kMaxSample);
}

/// Files with an Adobe marker store ink inverted: 255 is none.
void InkToBgr(const unsigned char* ink, bool isInverted, unsigned width, unsigned char* bgr) {
  const int flip = isInverted ? 0 : kMaxSample;
  for (unsigned x = 0; x < width; ++x, ink += kInkChannels, bgr += 3) {
    const int black = ink[3] ^ flip;
    bgr[0] = Multiply(ink[2] ^ flip, black);
    bgr[1] = Multiply(ink[1] ^ flip, black);
    bgr[2] = Multiply(ink[0] ^ flip, black);
  }
}

bool ReadRows(JpegState& state) {
  jpeg_decompress_struct& decoder = state.decoder;
  ImageReading& reading = *state.reading;
  const bool isInk = decoder.out_color_space == JCS_CMYK;
  jpeg_calc_output_dimensions(&decoder);
  if (isInk) {
    state.inkRow.reset(new (std::nothrow) unsigned char[std::size_t{decoder.output_width} * kInkChannels]);
    if (state.inkRow == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  }
  if (!reading.TakeMemory(static_cast<std::int32_t>(decoder.output_width),
                          static_cast<std::int32_t>(decoder.output_height))) {
    return false;
  }
  jpeg_start_decompress(&decoder);
  while (decoder.output_scanline < decoder.output_height) {
    unsigned char* row = reading.Row(static_cast<std::int32_t>(decoder.output_scanline));
    JSAMPROW target = isInk ? state.inkRow.get() : row;
    jpeg_read_scanlines(&decoder, &target, 1);
    if (isInk) InkToBgr(target, decoder.saw_Adobe_marker != 0, decoder.output_width, row);
    reading.NoteRow();
  }
  jpeg_finish_decompress(&decoder);
  return true;
}

/// Runs a step of the decoder; false when the decoder gave up in it.
bool Guarded(JpegState& state, bool (*step)(JpegState&)) {
  if (setjmp(state.jump) != 0) return false;
  return step(state);
}

}  // namespace

bool ReadJpeg(ImageReading& reading) {
  const std::unique_ptr<JpegState> state(new (std::nothrow) JpegState);
  if (state == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  state->reading = &reading;
  const auto create = [](JpegState& s) {
    Create(s);
    return true;
  };
  if (!Guarded(*state, create) || !Guarded(*state, ReadHead)) return false;
  return !reading.WantsPixels() || Guarded(*state, ReadRows);
}

}  // namespace vrx::imaging
