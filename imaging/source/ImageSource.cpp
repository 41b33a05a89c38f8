#include "imaging/source/ImageSource.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vrx::imaging {

ImageSource::ImageSource(XpAbstractFile& file, const std::atomic<bool>* cancel) noexcept
    : m_file(file), m_cancel(cancel) {
  try {
    m_result = m_file.Stat(nullptr, nullptr, nullptr, &m_size);
  } catch (const std::bad_alloc&) {
    m_result = XpErrOutOfMemory;
  }
}

bool ImageSource::Seek(std::int64_t position) noexcept {
  if (position < 0) return false;
  m_position = position;
  return true;
}

std::size_t ImageSource::Read(void* buffer, std::size_t count) noexcept {
  auto* out = static_cast<unsigned char*>(buffer);
  std::size_t done = 0;
  while (done < count && m_position < m_size) {
    const std::int64_t offset = m_position - m_blockStart;
    if (offset >= 0 && offset < static_cast<std::int64_t>(m_blockLength)) {
      const std::size_t part = std::min(count - done, m_blockLength - static_cast<std::size_t>(offset));
      std::memcpy(out + done, m_block.data() + offset, part);
      done += part;
      m_position += static_cast<std::int64_t>(part);
      continue;
    }
    if (count - done >= kBlockBytes) {
      const std::size_t part = ReadFile(m_position, out + done, count - done);
      m_position += static_cast<std::int64_t>(part);
      return done + part;
    }
    m_blockStart = m_position;
    m_blockLength = ReadFile(m_position, m_block.data(), kBlockBytes);
    if (m_blockLength == 0) break;
  }
  return done;
}

std::size_t ImageSource::ReadFile(std::int64_t position, void* buffer, std::size_t count) noexcept {
  if (m_cancel != nullptr && m_cancel->load(std::memory_order_relaxed)) {
    if (m_result == XpOk) m_result = XpErrFailed;
    return 0;
  }
  std::uint64_t read = 0;
  XpResult result = XpErrOutOfMemory;
  try {
    result = m_file.Seek(position, XpSeekStart);
    if (result == XpOk) result = m_file.Read(buffer, count, &read);
  } catch (const std::bad_alloc&) {
    read = 0;
  }
  if (result != XpOk && result != XpErrEndOfFile && m_result == XpOk) m_result = result;
  return static_cast<std::size_t>(read);
}

}  // namespace vrx::imaging
