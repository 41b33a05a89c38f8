#include "foundation/file/XpAbstractFile.h"

#include <algorithm>
#include <array>
#include <bit>

// m_nativeOrder says little-endian; a machine of the other kind needs the other value.
static_assert(std::endian::native == std::endian::little);

void XpAbstractFile::BeginAccess(std::uint32_t flags) {
  m_openFlags = flags;
  m_firstUnit = 0;
}

XpResult XpAbstractFile::WriteAndFlush(const void* buffer, std::uint64_t count, std::uint64_t* written) {
  const XpResult result = Write(buffer, count, written);
  return result == XpOk ? Flush() : result;
}

XpResult XpAbstractFile::Flush() { return XpOk; }

XpResult XpAbstractFile::SetByteOrder(std::uint32_t order) {
  if (order == XpKeepByteOrder) return XpOk;
  if (order != XpBigEndian && order != XpLittleEndian) return XpErrFailed;
  m_byteOrder = order;
  return XpOk;
}

template <class T>
XpResult XpAbstractFile::ReadNumber(T* value, std::uint32_t order) {
  if (value == nullptr) return XpErrInvalidFileOperation;
  if (const XpResult result = SetByteOrder(order)) return result;
  std::array<std::byte, sizeof(T)> bytes;
  std::uint64_t read = 0;
  if (const XpResult result = Read(bytes.data(), bytes.size(), &read)) return result;
  if (read < bytes.size()) return XpErrEndOfFile;  // a file in memory reports a short block as success
  if (m_byteOrder != m_nativeOrder) std::reverse(bytes.begin(), bytes.end());
  *value = std::bit_cast<T>(bytes);
  return XpOk;
}

template <class T>
XpResult XpAbstractFile::WriteNumber(T value, std::uint32_t order) {
  if (const XpResult result = SetByteOrder(order)) return result;
  auto bytes = std::bit_cast<std::array<std::byte, sizeof(T)>>(value);
  if (m_byteOrder != m_nativeOrder) std::reverse(bytes.begin(), bytes.end());
  return Write(bytes.data(), bytes.size(), nullptr);
}

XpResult XpAbstractFile::ReadInt64(std::int64_t* value, std::uint32_t order) {
  return ReadNumber(value, order);
}
XpResult XpAbstractFile::ReadUInt64(std::uint64_t* value, std::uint32_t order) {
  return ReadNumber(value, order);
}
XpResult XpAbstractFile::ReadInt32(std::int32_t* value, std::uint32_t order) {
  return ReadNumber(value, order);
}
XpResult XpAbstractFile::ReadUInt32(std::uint32_t* value, std::uint32_t order) {
  return ReadNumber(value, order);
}
XpResult XpAbstractFile::ReadInt16(std::int16_t* value, std::uint32_t order) {
  return ReadNumber(value, order);
}
XpResult XpAbstractFile::ReadUInt16(std::uint16_t* value, std::uint32_t order) {
  return ReadNumber(value, order);
}
XpResult XpAbstractFile::ReadInt8(std::int8_t* value) { return ReadNumber(value, XpKeepByteOrder); }
XpResult XpAbstractFile::ReadUInt8(std::uint8_t* value) { return ReadNumber(value, XpKeepByteOrder); }

XpResult XpAbstractFile::WriteInt64(std::int64_t value, std::uint32_t order) {
  return WriteNumber(value, order);
}
XpResult XpAbstractFile::WriteUInt64(std::uint64_t value, std::uint32_t order) {
  return WriteNumber(value, order);
}
XpResult XpAbstractFile::WriteInt32(std::int32_t value, std::uint32_t order) {
  return WriteNumber(value, order);
}
XpResult XpAbstractFile::WriteUInt32(std::uint32_t value, std::uint32_t order) {
  return WriteNumber(value, order);
}
XpResult XpAbstractFile::WriteInt16(std::int16_t value, std::uint32_t order) {
  return WriteNumber(value, order);
}
XpResult XpAbstractFile::WriteUInt16(std::uint16_t value, std::uint32_t order) {
  return WriteNumber(value, order);
}
XpResult XpAbstractFile::WriteInt8(std::int8_t value) { return WriteNumber(value, XpKeepByteOrder); }
XpResult XpAbstractFile::WriteUInt8(std::uint8_t value) { return WriteNumber(value, XpKeepByteOrder); }
