// The boxes of ISO/IEC 14496-12 files (MP4, 3GP, QuickTime): lists those of a file or of another box, and
// reads what they hold. Movies of any size are walked by seeking. Probes and format checks read such files
// through it.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "foundation/file/XpAbstractFile.h"

namespace vrx::mp4 {

/// Four characters, the first in the highest byte, as box types and brands are written.
using FourCc = std::uint32_t;

constexpr FourCc MakeFourCc(const char (&text)[5]) {
  FourCc code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<std::uint8_t>(text[i]);
  return code;
}

/// Far beyond what real movies need; of one BoxFile.
struct BoxLimits {
  std::int32_t depth = 32;            // boxes inside each other
  std::uint32_t boxes = 200'000;      // boxes listed in all
  std::uint64_t bytes = 64ull << 20;  // bytes read in all, headers included
};

/// Where a box lies. Positions count bytes from the start of the file.
struct Box {
  FourCc type = 0;
  std::array<std::uint8_t, 16> userType{};  // of a "uuid" box
  std::uint64_t start = 0;                  // of its header
  std::uint64_t payload = 0;                // after its header
  std::uint64_t end = 0;                    // never past the end of the parent
  std::int32_t depth = 0;                   // 1 for the boxes of the file itself

  std::uint64_t PayloadSize() const { return end - payload; }
};

class BoxFile;

/// The boxes of a stretch of the file, one after the other. Must not outlive its BoxFile.
class BoxList {
 public:
  /// False at the end, and at a header that cannot be one; the latter is noted in the BoxFile.
  bool Next(Box& box);
  /// The next box of this type.
  bool Next(FourCc type, Box& box);

 private:
  friend class BoxFile;
  BoxList(BoxFile& file, std::uint64_t position, std::uint64_t end, std::int32_t depth)
      : m_file(&file), m_position(position), m_end(end), m_depth(depth) {}

  BoxFile* m_file;
  std::uint64_t m_position;
  std::uint64_t m_end;
  std::int32_t m_depth;  // of the boxes in the list
};

/// Walks one file, which must be open for reading and stay so. Belongs to one thread.
class BoxFile {
 public:
  explicit BoxFile(XpAbstractFile& file, const BoxLimits& limits = {});
  BoxFile(const BoxFile&) = delete;
  BoxFile& operator=(const BoxFile&) = delete;

  BoxList Boxes() { return BoxList(*this, 0, m_size, 1); }
  /// `skipped` bytes of the payload come before the first child: 4 in a full box without fields of its own.
  /// Empty when the box is not that long, or nested too deeply.
  BoxList Children(const Box& parent, std::uint64_t skipped = 0);

  /// False when the file does not hold all the bytes, cannot be read, or more than the limit has been read.
  bool Read(std::uint64_t position, std::span<std::uint8_t> bytes);

  /// The first thing that was wrong: XpErrMalformedRecord for what contradicts its parent's or the file's
  /// size and for a limit that was reached, or the result of the read that failed. Reading may go on
  /// elsewhere.
  XpResult GetResult() const { return m_result; }
  void NoteProblem(XpResult problem);

 private:
  friend class BoxList;
  bool ReadHeader(std::uint64_t position, std::uint64_t end, Box& box);

  XpAbstractFile& m_file;
  const BoxLimits m_limits;
  std::uint64_t m_size = 0;
  std::uint32_t m_boxes = 0;
  std::uint64_t m_bytes = 0;
  XpResult m_result = XpOk;
};

struct FullBoxHead {
  std::uint8_t version = 0;
  std::uint32_t flags = 0;  // 24 bits
};

/// Reads the fields of a box in their order. A field past the end of the box gives 0, and so do all after it.
class BoxPayload {
 public:
  BoxPayload(BoxFile& file, const Box& box) : m_file(file), m_position(box.payload), m_end(box.end) {}

  std::uint8_t ReadUInt8() { return static_cast<std::uint8_t>(ReadNumber(1)); }
  std::uint16_t ReadUInt16() { return static_cast<std::uint16_t>(ReadNumber(2)); }
  std::uint32_t ReadUInt32() { return static_cast<std::uint32_t>(ReadNumber(4)); }
  std::uint64_t ReadUInt64() { return ReadNumber(8); }
  /// Version and flags, with which a full box begins.
  FullBoxHead ReadFullBoxHead();
  /// False, with zeros in `bytes`, when the box does not hold them all.
  bool ReadBytes(std::span<std::uint8_t> bytes);
  void Skip(std::uint64_t count);

  std::uint64_t GetLeft() const { return m_end - m_position; }
  bool HasFailed() const { return m_failed; }

 private:
  std::uint64_t ReadNumber(std::size_t bytes);

  BoxFile& m_file;
  std::uint64_t m_position;
  std::uint64_t m_end;
  bool m_failed = false;
};

}  // namespace vrx::mp4
