// BMP: plain rows of 1 to 32 bits and both run-length packings. An alpha channel is ignored, since most
// writers leave it at zero. Pixels that a packing leaves out stay black.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include "imaging/loader/BmpHead.h"
#include "imaging/loader/ImageFormats.h"

namespace vrx::imaging {

namespace {

constexpr int kBytesPerPixel = 3;
constexpr std::uint32_t kMaxSample = 255;
constexpr int kRowAlignment = 32;  // bits
// Of a picture that is cut off, at least this part must be there. Bounds the memory that a small file can ask
// for.
constexpr std::int64_t kLeastShownPart = 256;

// After a zero byte in packed data: what the second byte means. Higher ones count literal pixels.
constexpr int kEndOfRow = 0, kEndOfPicture = 1, kMove = 2;

void Put(unsigned char* bgr, const BmpColour& colour) {
  bgr[0] = colour.blue;
  bgr[1] = colour.green;
  bgr[2] = colour.red;
}

unsigned char Sample(std::uint32_t pixel, const BmpChannel& channel) {
  if (channel.max == 0) return 0;
  const std::uint64_t value = (pixel >> channel.shift) & channel.max;
  return static_cast<unsigned char>((value * kMaxSample + channel.max / 2) / channel.max);
}

void IndexedRow(const BmpHead& head, const unsigned char* in, unsigned char* bgr) {
  const int perByte = 8 / head.bits;
  const unsigned mask = (1u << head.bits) - 1;
  for (std::int64_t x = 0; x < head.width; ++x, bgr += kBytesPerPixel) {
    const auto shift = (perByte - 1 - x % perByte) * head.bits;
    Put(bgr, head.palette[(in[x / perByte] >> shift) & mask]);
  }
}

void MaskedRow(const BmpHead& head, const unsigned char* in, unsigned char* bgr) {
  const int bytes = head.bits / 8;
  for (std::int64_t x = 0; x < head.width; ++x, in += bytes, bgr += kBytesPerPixel) {
    std::uint32_t pixel = in[0] | std::uint32_t{in[1]} << 8;
    if (bytes == 4) pixel |= std::uint32_t{in[2]} << 16 | std::uint32_t{in[3]} << 24;
    bgr[0] = Sample(pixel, head.blue);
    bgr[1] = Sample(pixel, head.green);
    bgr[2] = Sample(pixel, head.red);
  }
}

bool ReadPlain(ImageReading& reading, const BmpHead& head) {
  ImageSource& source = reading.Source();
  const std::int64_t rowBytes = (head.width * head.bits + kRowAlignment - 1) / kRowAlignment * 4;
  if (!reading.NeedsBytes(head.pixelOffset + rowBytes) ||
      !reading.NeedsBytes(head.pixelOffset + rowBytes * head.height / kLeastShownPart)) {
    return false;
  }
  const auto count = static_cast<std::size_t>(rowBytes);
  const std::unique_ptr<unsigned char[]> row(new (std::nothrow) unsigned char[count]);
  if (row == nullptr) return reading.Fail(XpErrOutOfMemory, "there is no memory for the picture");
  if (!reading.TakeMemory(reading.Width(), reading.Height())) return false;
  for (std::int32_t y = 0; y < reading.Height(); ++y) {
    unsigned char* bgr = reading.Row(head.isTopDown ? y : reading.Height() - 1 - y);
    if (!source.ReadExactly(row.get(), count)) return reading.Damaged("the file ends within the picture");
    if (head.bits == 24) {
      std::copy_n(row.get(), static_cast<std::size_t>(head.width) * kBytesPerPixel, bgr);
    } else if (head.bits < 16) {
      IndexedRow(head, row.get(), bgr);
    } else {
      MaskedRow(head, row.get(), bgr);
    }
    reading.NoteRow();
  }
  return true;
}

/// Unpacks run-length data row by row from the bottom. Pixels beyond the right edge are dropped; rows above
/// the top are an error.
class RunLengthReader {
 public:
  RunLengthReader(ImageReading& reading, const BmpHead& head)
      : m_reading(reading), m_head(head), m_isNibbles(head.packing == BmpPacking::Rle4) {}

  bool Read() {
    while (m_row < m_reading.Height()) {
      unsigned char code[2];
      if (!m_reading.Source().ReadExactly(code, sizeof code)) return EndsEarly();
      if (code[0] > 0) {
        for (int i = 0; i < code[0]; ++i) PutPixel(Index(code[1], i));
      } else if (code[1] == kEndOfPicture) {
        return true;
      } else if (!Escape(code[1])) {
        return false;
      }
    }
    return true;
  }

 private:
  bool EndsEarly() { return m_reading.Damaged("the file ends within the picture"); }

  bool Escape(int code) {
    if (code == kEndOfRow || code == kMove) m_reading.NoteRow();
    if (code == kEndOfRow) {
      m_column = 0;
      ++m_row;
      return true;
    }
    if (code == kMove) {
      unsigned char step[2];
      if (!m_reading.Source().ReadExactly(step, sizeof step)) return EndsEarly();
      m_column += step[0];
      m_row += step[1];
      return m_row < m_reading.Height() || m_reading.Damaged("the picture has more rows than it says");
    }
    return Literals(code);
  }

  /// Padded to 16 bits.
  bool Literals(int count) {
    unsigned char bytes[256];
    const int used = m_isNibbles ? (count + 1) / 2 : count;
    const auto padded = static_cast<std::size_t>(used + used % 2);
    if (!m_reading.Source().ReadExactly(bytes, padded)) return EndsEarly();
    for (int i = 0; i < count; ++i) PutPixel(Index(bytes[m_isNibbles ? i / 2 : i], i));
    return true;
  }

  /// The colour of pixel `i` of a run or of literals that `byte` stands for.
  int Index(int byte, int i) const {
    if (!m_isNibbles) return byte;
    return i % 2 == 0 ? byte >> 4 : byte & 0xF;
  }

  void PutPixel(int index) {
    if (m_column >= m_head.width) return;
    unsigned char* row = m_reading.Row(m_reading.Height() - 1 - m_row);
    Put(row + m_column * kBytesPerPixel, m_head.palette[static_cast<std::size_t>(index)]);
    ++m_column;
  }

  ImageReading& m_reading;
  const BmpHead& m_head;
  bool m_isNibbles;
  std::int64_t m_column = 0;
  std::int32_t m_row = 0;  // from the bottom
};

}  // namespace

bool ReadBmp(ImageReading& reading) {
  BmpHead head;
  if (!ReadBmpHead(reading, head) || !reading.Start(head.width, head.height)) return false;
  if (!reading.WantsPixels()) return true;
  if (head.pixelOffset < reading.Source().Position() || !reading.Source().Seek(head.pixelOffset)) {
    return reading.Damaged("the picture's data lies within its head");
  }
  if (head.packing == BmpPacking::Plain) return ReadPlain(reading, head);
  return reading.NeedsBytes(head.pixelOffset + 1) && reading.TakeMemory(reading.Width(), reading.Height()) &&
         RunLengthReader(reading, head).Read();
}

}  // namespace vrx::imaging
