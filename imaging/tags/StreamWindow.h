// Reads small pieces of a stream through a block that is kept, so that the values of a tag tree, which lie
// close together, do not cost a call to the system each.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "foundation/file/XpAbstractFile.h"

namespace vrx::imaging {

/// The stream must not change meanwhile; its position is left anywhere.
class StreamWindow {
 public:
  explicit StreamWindow(XpAbstractFile& stream);

  /// Bytes of the whole stream; 0 when it cannot tell.
  std::int64_t GetSize() const { return m_size; }
  /// True when these bytes lie within the stream.
  bool Holds(std::int64_t position, std::uint64_t count) const;
  /// False unless all bytes could be read.
  bool Read(std::int64_t position, std::span<std::uint8_t> bytes);

 private:
  bool ReadStream(std::int64_t position, std::span<std::uint8_t> bytes);

  XpAbstractFile& m_stream;
  std::int64_t m_size;
  std::int64_t m_start = 0;  // of the block, in the stream
  std::vector<std::uint8_t> m_block;
};

}  // namespace vrx::imaging
