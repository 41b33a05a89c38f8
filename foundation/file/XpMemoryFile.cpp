#include "foundation/file/XpMemoryFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "foundation/text/XpFormat.h"

namespace {

constexpr std::int64_t kGranule = 65536;
constexpr std::int64_t kMostFileBytes = std::numeric_limits<std::int64_t>::max();

bool IsUsable(const void* buffer, std::uint64_t count) {
  return buffer != nullptr && count != 0 && count <= static_cast<std::uint64_t>(kMostFileBytes);
}

}  // namespace

XpMemoryFile::XpMemoryFile() = default;

XpMemoryFile::~XpMemoryFile() {
  if (m_storage == Storage::Owned) std::free(m_data);
}

XpResult XpMemoryFile::GetName(XpString& name) const {
  XpFormat(name, u"Memory File(%32p)", static_cast<const void*>(m_data));
  return XpOk;
}

XpResult XpMemoryFile::Stat(XpDateTime* creation, XpDateTime* write, XpDateTime* access,
                            std::int64_t* size) const {
  if (creation != nullptr) *creation = m_creation;
  if (write != nullptr) *write = m_modification;
  if (access != nullptr) *access = m_access;
  if (size != nullptr) *size = m_size;
  return XpOk;
}

XpResult XpMemoryFile::Open(std::uint32_t flags, std::uint32_t) {
  BeginAccess(flags);
  StampAll();
  if ((flags & XpOpenWrite) != 0) {
    m_size = 0;
    m_position = 0;
  }
  return XpOk;
}

XpResult XpMemoryFile::Close() {
  StampAccess();
  return XpOk;
}

XpResult XpMemoryFile::Read(void* buffer, std::uint64_t count, std::uint64_t* read) {
  if (read != nullptr) *read = 0;
  if (!IsUsable(buffer, count) || m_position < 0) return XpErrInvalidFileOperation;
  StampAccess();
  if (m_position >= m_size) return XpErrEndOfFile;
  const std::int64_t got = std::min(static_cast<std::int64_t>(count), m_size - m_position);
  std::memcpy(buffer, m_data + m_position, static_cast<std::size_t>(got));
  m_position += got;
  if (read != nullptr) *read = static_cast<std::uint64_t>(got);
  return XpOk;
}

XpResult XpMemoryFile::Write(const void* buffer, std::uint64_t count, std::uint64_t* written) {
  if (written != nullptr) *written = 0;
  if (!IsUsable(buffer, count) || m_position < 0) return XpErrInvalidFileOperation;
  const auto length = static_cast<std::int64_t>(count);
  if (length > kMostFileBytes - m_position) return XpErrDiskFull;
  const std::int64_t end = m_position + length;
  if (const XpResult result = Reserve(end)) return result;
  if (m_position > m_size) std::memset(m_data + m_size, 0, static_cast<std::size_t>(m_position - m_size));
  std::memcpy(m_data + m_position, buffer, static_cast<std::size_t>(length));
  m_position = end;
  m_size = std::max(m_size, end);
  StampModification();
  if (written != nullptr) *written = count;
  return XpOk;
}

XpResult XpMemoryFile::Seek(std::int64_t offset, std::int32_t origin) {
  const std::int64_t base = origin == XpSeekStart ? 0 : origin == XpSeekEnd ? m_size : m_position;
  std::int64_t position = 0;
  if (__builtin_add_overflow(base, offset, &position)) return XpErrInvalidFileOperation;
  m_position = position;
  StampAccess();
  return XpOk;
}

XpResult XpMemoryFile::SetSize(std::int64_t size) {
  if (m_data == nullptr) return XpErrNotAFile;
  if (size < 0) return XpErrInvalidFileOperation;
  const std::int64_t capacity = RoundCapacity(size);
  if (capacity < 0) return XpErrDiskFull;
  if (capacity != m_capacity) {
    if (const XpResult result = Reallocate(capacity)) return result;
  }
  if (size > m_size) std::memset(m_data + m_size, 0, static_cast<std::size_t>(size - m_size));
  m_size = size;
  m_position = std::min(m_position, size);
  return XpOk;
}

XpResult XpMemoryFile::Reserve(std::int64_t size) {
  if (m_data != nullptr && size <= m_capacity) return XpOk;
  const std::int64_t capacity = RoundCapacity(size);
  return capacity < 0 ? XpErrDiskFull : Reallocate(capacity);
}

/// A borrowed block belongs to somebody else and cannot be resized; its content moves into a block of our
/// own.
XpResult XpMemoryFile::Reallocate(std::int64_t capacity) {
  const auto bytes = static_cast<std::size_t>(capacity);
  const bool borrowed = m_storage == Storage::Borrowed;
  void* block = borrowed ? std::malloc(bytes) : std::realloc(m_data, bytes);
  if (block == nullptr) return XpErrDiskFull;
  const std::int64_t kept = std::min(m_size, capacity);
  if (borrowed && kept > 0) std::memcpy(block, m_data, static_cast<std::size_t>(kept));
  m_data = static_cast<std::uint8_t*>(block);
  m_capacity = capacity;
  m_size = kept;
  m_storage = Storage::Owned;
  return XpOk;
}

XpResult XpMemoryFile::Attach(void* data, std::int64_t size, bool own) {
  if (size < 0 || (data == nullptr && size > 0)) return XpErrInvalidFileOperation;
  if (m_storage == Storage::Owned && m_data != data) std::free(m_data);
  m_data = static_cast<std::uint8_t*>(data);
  m_size = size;
  m_capacity = size;
  m_storage = data == nullptr ? Storage::None : own ? Storage::Owned : Storage::Borrowed;
  return XpOk;
}

void XpMemoryFile::FreeData() {
  if (m_storage == Storage::Owned) std::free(m_data);
  Reset();
}

void XpMemoryFile::Reset() {
  m_data = nullptr;
  m_position = 0;
  m_size = 0;
  m_capacity = 0;
  m_storage = Storage::None;
  StampAll();
}

std::int64_t XpMemoryFile::RoundCapacity(std::int64_t size) const {
  if (size < 0 || size > kMostFileBytes - kGranule) return -1;
  return (size / kGranule + 1) * kGranule;
}
