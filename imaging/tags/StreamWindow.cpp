#include "imaging/tags/StreamWindow.h"

#include <algorithm>

namespace vrx::imaging {
namespace {

// Larger blocks would cost more than they save when offsets lead back and forth.
constexpr std::int64_t kBlockSize = 8192;

}  // namespace

StreamWindow::StreamWindow(XpAbstractFile& stream)
    : m_stream(stream), m_size(std::max<std::int64_t>(stream.GetSize(), 0)) {}

bool StreamWindow::Holds(std::int64_t position, std::uint64_t count) const {
  return position >= 0 && position <= m_size && count <= static_cast<std::uint64_t>(m_size - position);
}

bool StreamWindow::Read(std::int64_t position, std::span<std::uint8_t> bytes) {
  if (!Holds(position, bytes.size())) return false;
  if (bytes.empty()) return true;
  const auto size = static_cast<std::int64_t>(bytes.size());
  const auto end = m_start + static_cast<std::int64_t>(m_block.size());
  if (position < m_start || position + size > end) {
    if (size >= kBlockSize) return ReadStream(position, bytes);
    m_start = position;
    m_block.resize(static_cast<std::size_t>(std::min(kBlockSize, m_size - position)));
    if (!ReadStream(position, m_block)) {
      m_block.clear();
      return ReadStream(position, bytes);  // a damaged disk may still give the piece itself
    }
  }
  std::copy_n(m_block.begin() + (position - m_start), bytes.size(), bytes.begin());
  return true;
}

bool StreamWindow::ReadStream(std::int64_t position, std::span<std::uint8_t> bytes) {
  std::uint64_t read = 0;
  return m_stream.Seek(position, XpSeekStart) == XpOk &&
         m_stream.Read(bytes.data(), bytes.size(), &read) == XpOk && read == bytes.size();
}

}  // namespace vrx::imaging
