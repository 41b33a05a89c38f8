#include "foundation/file/XpCachedFile.h"

#include <cstring>
#include <new>

namespace {

constexpr std::int64_t kCacheCapacity = 0x18000;
constexpr std::int64_t kCacheAlignment = 0x8000;
constexpr std::uint64_t kLargeRead = 0x4000;

}  // namespace

XpCachedFile::XpCachedFile(const XpString& path) : XpFile(path), m_cacheCapacity(kCacheCapacity) {}

XpCachedFile::~XpCachedFile() = default;

void XpCachedFile::SetBypass(bool bypass) { m_bypass = bypass; }

void XpCachedFile::ResetCache() {
  m_cacheLength = 0;
  m_cacheStart = 0;
  m_fileSize = -1;
  m_sizeKnown = false;
  m_bypass = false;
  m_buffer.resize(static_cast<std::size_t>(m_cacheCapacity));
}

XpResult XpCachedFile::Close() try {
  ResetCache();
  return XpFile::Close();
} catch (const std::bad_alloc&) {
  return XpFile::Close();
}

XpResult XpCachedFile::Read(void* buffer, std::uint64_t count, std::uint64_t* read) try {
  if (!IsOpen() || buffer == nullptr || count == 0) return XpFile::Read(buffer, count, read);
  const std::int64_t position = Tell();
  if (position < 0) return XpFile::Read(buffer, count, read);
  if (!m_sizeKnown) {
    ResetCache();
    m_fileSize = GetSize();
    m_sizeKnown = true;
  }
  const bool small = count < kLargeRead;
  const auto wanted = static_cast<std::int64_t>(small ? count : kLargeRead);
  const auto answer = [&] {
    if (read != nullptr) *read = count;
    return XpOk;
  };
  if (count <= static_cast<std::uint64_t>(m_cacheLength) &&
      ReadFromCache(buffer, position, static_cast<std::int64_t>(count))) {
    return answer();
  }
  const bool insideFile = position < m_fileSize && wanted < m_fileSize - position;
  if (m_bypass || !small || !insideFile) return XpFile::Read(buffer, count, read);
  if (const XpResult result = FillCache(position)) {
    if (read != nullptr) *read = 0;
    return result;
  }
  // The file may have become shorter than it was.
  return ReadFromCache(buffer, position, wanted) ? answer() : XpFile::Read(buffer, count, read);
} catch (const std::bad_alloc&) {
  return XpErrOutOfMemory;
}

bool XpCachedFile::ReadFromCache(void* buffer, std::int64_t position, std::int64_t count) {
  const std::int64_t from = position - m_cacheStart;
  if (m_cacheLength == 0 || from < 0 || from > m_cacheLength - count) return false;
  std::memcpy(buffer, m_buffer.data() + from, static_cast<std::size_t>(count));
  Seek(count, XpSeekCurrent);
  return true;
}

XpResult XpCachedFile::FillCache(std::int64_t position) {
  const std::int64_t start = position / kCacheAlignment * kCacheAlignment;
  std::uint64_t filled = 0;
  Seek(start, XpSeekStart);
  const XpResult result = XpFile::Read(m_buffer.data(), m_buffer.size(), &filled);
  Seek(position, XpSeekStart);
  const bool usable = result == XpOk || result == XpErrEndOfFile;
  m_cacheLength = usable ? static_cast<std::int64_t>(filled) : 0;
  m_cacheStart = start;
  return usable ? XpOk : result;
}
