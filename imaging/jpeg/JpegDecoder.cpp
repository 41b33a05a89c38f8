#include "imaging/jpeg/JpegDecoder.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "imaging/jpeg/JpegDecoderState.h"

#include <jerror.h>

namespace vrx::imaging {

namespace {

using State = JpegDecoder::State;

constexpr int kMaxScans = 200;  // real progressive pictures have about ten
constexpr std::int64_t kMostPixels = 200'000'000;
// Where missing rows are filled in, a picture of no more than this may come from a file of any length.
constexpr std::int64_t kSmallPixels = 24'000'000;
constexpr std::int64_t kPixelsPerByte = 512;  // a block of 64 pixels takes one bit at least
constexpr long kCoefficientBytes = 2 * 4;     // a pixel of a progressive picture, four channels
constexpr long kWorkspaceBytes = 64L << 20;   // the decoder's own tables and rows
constexpr unsigned kWholeSegment = 0xFFFF;
constexpr char kEndsEarly[] = "the file ends within the picture";

State& StateOf(j_common_ptr common) { return static_cast<State&>(GuardOf(common)); }
State& StateOf(j_decompress_ptr decoder) { return StateOf(reinterpret_cast<j_common_ptr>(decoder)); }

/// Whether at least one row of blocks was read.
bool HasRows(const jpeg_decompress_struct& decoder) {
  return decoder.input_scan_number > 1 || decoder.input_iMCU_row > 0;
}

bool LacksRows(const State& state) {
  return state.shortage == JpegShortage::NeedsRows && !HasRows(state.decoder);
}

void NoteDamage(State& state, const char* words) {
  if (state.isDamaged) return;
  state.isDamaged = true;
  std::snprintf(state.damage, sizeof state.damage, "%s", words);
}

/// Cameras leave stray bytes between segments, which harm nothing; a warning about the entropy-coded data
/// means that the decoder makes up pixels.
void OnMessage(j_common_ptr common, int level) {
  if (level >= 0) return;
  State& state = StateOf(common);
  switch (common->err->msg_code) {
    case JWRN_HIT_MARKER:
      if (LacksRows(state)) OnJpegError(common);
      [[fallthrough]];
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_MUST_RESYNC:
      char words[JMSG_LENGTH_MAX];
      common->err->format_message(common, words);
      NoteDamage(state, words);
      return;
    default:
      return;
  }
}

void InitSource(j_decompress_ptr) {}
void TermSource(j_decompress_ptr) {}

boolean FillInput(j_decompress_ptr decoder) {
  State& state = StateOf(decoder);
  std::size_t read = state.source.Read(state.bytes, kJpegBufferBytes);
  if (read == 0) {
    if (LacksRows(state)) state.GiveUp(XpErrInvalidFile, kEndsEarly);
    // An end marker lets the decoder fill in what is missing.
    NoteDamage(state, kEndsEarly);
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
  State& state = StateOf(decoder);
  jpeg_source_mgr& input = state.input;
  const auto wanted = static_cast<std::size_t>(count);
  if (wanted <= input.bytes_in_buffer) {
    input.next_input_byte += wanted;
    input.bytes_in_buffer -= wanted;
    return;
  }
  state.source.Seek(state.source.Position() + static_cast<std::int64_t>(wanted - input.bytes_in_buffer));
  input.bytes_in_buffer = 0;
}

void OnProgress(j_common_ptr common) {
  State& state = StateOf(common);
  if (state.decoder.input_scan_number > kMaxScans) {
    state.GiveUp(XpErrInvalidFile, "the picture has too many scans");
  }
}

void Create(State& state) {
  ConnectGuard(reinterpret_cast<j_common_ptr>(&state.decoder), state);
  state.errors.emit_message = OnMessage;
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

void KeepKind(State& state) {
  const int marker = state.number == kCommentSegment ? JPEG_COM : JPEG_APP0 + state.number;
  jpeg_save_markers(&state.decoder, marker, kWholeSegment);
}

void ReadToScan(State& state) { jpeg_read_header(&state.decoder, TRUE); }

/// The decoder's own scaling gives averages of blocks but for rounding.
void StartRows(State& state) {
  jpeg_decompress_struct& decoder = state.decoder;
  decoder.out_color_space = state.form.colours == JpegColours::Ink ? JCS_CMYK : JCS_EXT_BGR;
  decoder.dct_method = JDCT_ISLOW;
  decoder.scale_num = 1;
  decoder.scale_denom = state.form.scale;
  decoder.do_fancy_upsampling = state.form.isSmooth ? TRUE : FALSE;
  decoder.do_block_smoothing = state.form.isSmooth ? TRUE : FALSE;
  jpeg_start_decompress(&decoder);
}

void ReadOneRow(State& state) {
  JSAMPROW target = state.row;
  // The source never pauses, so there is a row unless the library failed.
  jpeg_read_scanlines(&state.decoder, &target, 1);
}

void FinishRows(State& state) { jpeg_finish_decompress(&state.decoder); }

}  // namespace

JpegDecoder::JpegDecoder(ImageSource& source, JpegShortage shortage) noexcept
    : m_state(new (std::nothrow) State(source, shortage)) {
  if (m_state != nullptr) RunGuarded(*m_state, *m_state, Create);
}

JpegDecoder::~JpegDecoder() = default;

bool JpegDecoder::KeepSegments(int number) noexcept {
  if (m_state == nullptr) return false;
  m_state->number = number;
  return RunGuarded(*m_state, *m_state, KeepKind);
}

bool JpegDecoder::ReadHead() noexcept {
  if (m_state == nullptr || !RunGuarded(*m_state, *m_state, ReadToScan)) return false;
  try {
    for (auto* marker = m_state->decoder.marker_list; marker != nullptr; marker = marker->next) {
      const int number = marker->marker == JPEG_COM ? kCommentSegment : marker->marker - JPEG_APP0;
      m_segments.push_back({number, {marker->data, marker->data_length}});
    }
  } catch (const std::bad_alloc&) {
    m_state->Note(XpErrOutOfMemory, "there is no memory for the picture's segments");
    return false;
  }
  return true;
}

std::int64_t JpegDecoder::Width() const noexcept { return m_state ? m_state->decoder.image_width : 0; }
std::int64_t JpegDecoder::Height() const noexcept { return m_state ? m_state->decoder.image_height : 0; }

bool JpegDecoder::IsInk() const noexcept {
  if (m_state == nullptr) return false;
  const J_COLOR_SPACE space = m_state->decoder.jpeg_color_space;
  return space == JCS_CMYK || space == JCS_YCCK;
}

bool JpegDecoder::HasAdobeMarker() const noexcept { return m_state && m_state->decoder.saw_Adobe_marker; }

bool JpegDecoder::CheckSize() noexcept {
  if (m_state == nullptr || m_state->result != XpOk) return false;
  const std::int64_t pixels = Width() * Height();
  if (pixels > kMostPixels) {
    m_state->Note(XpErrOutOfMemory, "the picture is too large");
    return false;
  }
  // Arithmetic coding has no least size.
  const std::int64_t free = m_state->shortage == JpegShortage::IsFilledIn ? kSmallPixels : 0;
  if (pixels > free && !m_state->decoder.arith_code && m_state->source.Size() < pixels / kPixelsPerByte) {
    m_state->Note(XpErrInvalidFile, "the file is too short for the picture's size");
    return false;
  }
  m_state->decoder.mem->max_memory_to_use = static_cast<long>(pixels) * kCoefficientBytes + kWorkspaceBytes;
  return true;
}

bool JpegDecoder::Start(const JpegForm& form) noexcept {
  if (!CheckSize()) return false;
  m_state->form = form;
  return RunGuarded(*m_state, *m_state, StartRows);
}

std::int32_t JpegDecoder::OutputWidth() const noexcept {
  return m_state ? static_cast<std::int32_t>(m_state->decoder.output_width) : 0;
}
std::int32_t JpegDecoder::OutputHeight() const noexcept {
  return m_state ? static_cast<std::int32_t>(m_state->decoder.output_height) : 0;
}

bool JpegDecoder::HasMoreRows() const noexcept {
  return m_state && m_state->decoder.output_scanline < m_state->decoder.output_height;
}

bool JpegDecoder::ReadRow(unsigned char* row) noexcept {
  if (m_state == nullptr) return false;
  m_state->row = row;
  return RunGuarded(*m_state, *m_state, ReadOneRow);
}

bool JpegDecoder::Finish() noexcept { return m_state && RunGuarded(*m_state, *m_state, FinishRows); }

XpResult JpegDecoder::Result() const noexcept { return m_state ? m_state->result : XpErrOutOfMemory; }

const char* JpegDecoder::Words() const noexcept {
  return m_state ? m_state->words : "there is no memory for the picture";
}

const char* JpegDecoder::Damage() const noexcept {
  return m_state && m_state->isDamaged ? m_state->damage : nullptr;
}

}  // namespace vrx::imaging
