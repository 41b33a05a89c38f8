#include "imaging/jpeg/JpegCopy.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <vector>

#include "imaging/jpeg/JpegDecoderState.h"

namespace vrx::imaging {

namespace {

constexpr std::size_t kCopyBytes = 256 * 1024;

struct WriterState : JpegGuard {
  WriterState(JpegDecoder::State& from, std::span<const JpegSegment> wanted, XpAbstractFile& to)
      : reader(from), segments(wanted), target(to) {}
  WriterState(const WriterState&) = delete;
  WriterState& operator=(const WriterState&) = delete;
  ~WriterState() {
    if (isCreated) jpeg_destroy_compress(&encoder);
  }

  JpegDecoder::State& reader;
  std::span<const JpegSegment> segments;
  XpAbstractFile& target;
  jpeg_compress_struct encoder{};
  jpeg_destination_mgr output{};
  jvirt_barray_ptr* coefficients = nullptr;
  bool isCreated = false;
  unsigned char bytes[kJpegBufferBytes];
};

WriterState& StateOf(j_compress_ptr encoder) {
  return static_cast<WriterState&>(GuardOf(reinterpret_cast<j_common_ptr>(encoder)));
}

XpResult WriteBytes(WriterState& state, std::size_t count) noexcept {
  try {
    return count == 0 ? XpOk : state.target.Write(state.bytes, count, nullptr);
  } catch (const std::bad_alloc&) {
    return XpErrOutOfMemory;
  }
}

void Put(WriterState& state, std::size_t count) {
  if (const XpResult result = WriteBytes(state, count)) state.GiveUp(result, "the picture cannot be written");
  state.output.next_output_byte = state.bytes;
  state.output.free_in_buffer = kJpegBufferBytes;
}

void InitOutput(j_compress_ptr encoder) { Put(StateOf(encoder), 0); }
boolean EmptyOutput(j_compress_ptr encoder) {
  Put(StateOf(encoder), kJpegBufferBytes);
  return TRUE;
}
void TermOutput(j_compress_ptr encoder) {
  WriterState& state = StateOf(encoder);
  Put(state, kJpegBufferBytes - state.output.free_in_buffer);
}

void Create(WriterState& state) {
  ConnectGuard(reinterpret_cast<j_common_ptr>(&state.encoder), state);
  jpeg_create_compress(&state.encoder);
  state.isCreated = true;
  state.output.init_destination = InitOutput;
  state.output.empty_output_buffer = EmptyOutput;
  state.output.term_destination = TermOutput;
  state.encoder.dest = &state.output;
}

/// The library's own segments come before any other, so it writes none; those of the source are among
/// `segments`.
void WriteHead(WriterState& state) {
  jpeg_compress_struct& encoder = state.encoder;
  jpeg_copy_critical_parameters(&state.reader.decoder, &encoder);
  encoder.optimize_coding = TRUE;
  encoder.write_JFIF_header = FALSE;
  encoder.write_Adobe_marker = FALSE;
  jpeg_write_coefficients(&encoder, state.coefficients);
  for (const JpegSegment& segment : state.segments) {
    const int marker = segment.number == kCommentSegment ? JPEG_COM : JPEG_APP0 + segment.number;
    jpeg_write_marker(&encoder, marker, segment.body.data(), static_cast<unsigned>(segment.body.size()));
  }
}

void WritePicture(WriterState& state) { jpeg_finish_compress(&state.encoder); }

/// Reads with the decoder's own guard.
struct CoefficientReading {
  JpegDecoder::State& reader;
  jvirt_barray_ptr* coefficients = nullptr;
};
void ReadAll(CoefficientReading& reading) {
  reading.coefficients = jpeg_read_coefficients(&reading.reader.decoder);
}

XpResult WriteSegment(XpAbstractFile& target, const JpegSegment& segment) {
  if (segment.body.size() > kMostSegmentBytes) return XpErrImageUnusable;
  const auto length = segment.body.size() + 2;
  const int marker = segment.number == kCommentSegment ? JPEG_COM : JPEG_APP0 + segment.number;
  const std::array<std::uint8_t, 4> head{0xFF, static_cast<std::uint8_t>(marker),
                                         static_cast<std::uint8_t>(length >> 8),
                                         static_cast<std::uint8_t>(length)};
  if (const XpResult result = target.Write(head.data(), head.size(), nullptr)) return result;
  return segment.body.empty() ? XpOk : target.Write(segment.body.data(), segment.body.size(), nullptr);
}

}  // namespace

XpResult CopyBytes(XpAbstractFile& source, std::int64_t start, std::int64_t count, XpAbstractFile& target) {
  if (count <= 0) return XpOk;
  std::vector<std::uint8_t> block(static_cast<std::size_t>(std::min<std::int64_t>(count, kCopyBytes)));
  if (const XpResult result = source.Seek(start, XpSeekStart)) return result;
  while (count > 0) {
    const auto part = static_cast<std::uint64_t>(std::min<std::int64_t>(count, kCopyBytes));
    if (const XpResult result = ReadExactly(source, block.data(), part)) return result;
    if (const XpResult result = target.Write(block.data(), part, nullptr)) return result;
    count -= static_cast<std::int64_t>(part);
  }
  return XpOk;
}

XpResult CopyCodedPicture(XpAbstractFile& source, const CodedPicture& picture,
                          std::span<const JpegSegment> segments, XpAbstractFile& target) {
  constexpr std::array<std::uint8_t, 2> kStart{0xFF, 0xD8};
  if (const XpResult result = target.Write(kStart.data(), kStart.size(), nullptr)) return result;
  for (const JpegSegment& segment : segments) {
    if (const XpResult result = WriteSegment(target, segment)) return result;
  }
  return CopyBytes(source, picture.start, picture.end - picture.start, target);
}

XpResult CopyCoefficients(JpegDecoder& decoder, std::span<const JpegSegment> segments,
                          XpAbstractFile& target) {
  if (!decoder.CheckSize()) return decoder.Result();
  JpegDecoder::State& reader = decoder.Library();
  CoefficientReading reading{reader};
  if (!RunGuarded(reader, reading, ReadAll)) return reader.result;
  if (decoder.Damage() != nullptr) return XpErrImageInvalid;
  const std::unique_ptr<WriterState> writer(new (std::nothrow) WriterState(reader, segments, target));
  if (writer == nullptr) return XpErrOutOfMemory;
  writer->coefficients = reading.coefficients;
  for (const auto step : {Create, WriteHead, WritePicture}) {
    if (!RunGuarded(*writer, *writer, step)) return writer->result;
  }
  return decoder.Finish() ? XpOk : decoder.Result();
}

}  // namespace vrx::imaging
