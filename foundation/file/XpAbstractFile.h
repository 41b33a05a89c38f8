// What all files have in common, on disk or in memory: blocks, numbers in either byte order, and text.
// Codecs, containers and documents read and write through it.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFSObj.h"

enum : std::uint32_t {
  XpByteOrderUnset = 0,  // of a new file; numbers are swapped as for XpBigEndian
  XpBigEndian = 1,
  XpLittleEndian = 2,
  XpKeepByteOrder = 3,
};

/// Flags of Open. One of the first three is required.
enum : std::uint32_t {
  XpOpenRead = 0x1,
  XpOpenWrite = 0x2,
  XpOpenReadWrite = 0x3,
  XpOpenText = 0x10,  // line feeds are CR LF in the file
  XpOpenSequential = 0x10000,
  XpOpenRandom = 0x20000,
  XpOpenAccessMask = 0x3,
};

/// What other programs may do with the file. Only a wish: this system does not enforce it.
enum : std::uint32_t { XpShareNone = 0, XpShareRead = 1, XpShareWrite = 2, XpShareDelete = 4 };

enum : std::int32_t { XpSeekStart = 0, XpSeekCurrent = 1, XpSeekEnd = 2 };

/// Text in files is UTF-8; invalid bytes are mapped as XpTextCodec.h describes. Belongs to one
/// thread at a time. Counters may be null.
class XpAbstractFile : public XpAbstractFSObj {
 public:
  using XpAbstractFSObj::XpAbstractFSObj;

  bool IsFile() const override { return true; }
  bool IsDirectory() const override { return false; }

  virtual XpResult Open(std::uint32_t flags, std::uint32_t share) = 0;
  virtual XpResult Close() = 0;
  /// XpErrInvalidFileOperation for a null buffer or a count of 0.
  virtual XpResult Read(void* buffer, std::uint64_t count, std::uint64_t* read) = 0;
  virtual XpResult Write(const void* buffer, std::uint64_t count, std::uint64_t* written) = 0;
  virtual XpResult WriteAndFlush(const void* buffer, std::uint64_t count, std::uint64_t* written);
  /// Does nothing, since nothing is buffered.
  virtual XpResult Flush();
  virtual XpResult Seek(std::int64_t offset, std::int32_t origin) = 0;
  /// -1 when the file is not open.
  virtual std::int64_t Tell() const = 0;
  virtual XpResult SetSize(std::int64_t size) = 0;

  // Numbers. An order other than XpKeepByteOrder becomes the order of the file. XpErrEndOfFile, with the
  // value untouched, when the file ends within the number.
  virtual XpResult ReadInt64(std::int64_t* value, std::uint32_t order);
  virtual XpResult ReadUInt64(std::uint64_t* value, std::uint32_t order);
  virtual XpResult ReadInt32(std::int32_t* value, std::uint32_t order);
  virtual XpResult ReadUInt32(std::uint32_t* value, std::uint32_t order);
  virtual XpResult ReadInt16(std::int16_t* value, std::uint32_t order);
  virtual XpResult ReadUInt16(std::uint16_t* value, std::uint32_t order);
  virtual XpResult ReadInt8(std::int8_t* value);
  virtual XpResult ReadUInt8(std::uint8_t* value);
  virtual XpResult WriteInt64(std::int64_t value, std::uint32_t order);
  virtual XpResult WriteUInt64(std::uint64_t value, std::uint32_t order);
  virtual XpResult WriteInt32(std::int32_t value, std::uint32_t order);
  virtual XpResult WriteUInt32(std::uint32_t value, std::uint32_t order);
  virtual XpResult WriteInt16(std::int16_t value, std::uint32_t order);
  virtual XpResult WriteUInt16(std::uint16_t value, std::uint32_t order);
  virtual XpResult WriteInt8(std::int8_t value);
  virtual XpResult WriteUInt8(std::uint8_t value);
  /// XpErrFailed for an unknown order.
  virtual XpResult SetByteOrder(std::uint32_t order);

  /// One UTF-16 unit; in text mode CR LF is read as one line feed.
  virtual XpResult ReadChar(char16_t* c);
  /// A line with its line feed. At the end of the file XpOk and what there is: a text without a line feed is
  /// the last one, and may be empty. XpErrLineTooLong, back at the start of the line, beyond 16 Mi units.
  virtual XpResult ReadLine(XpString& line);
  /// As ReadLine into a buffer of `capacity` units, terminator included. XpErrLineTooLong when it is full;
  /// the rest of the line is then read by the next call.
  virtual XpResult ReadLineBuffer(char16_t* buffer, std::int32_t capacity);
  virtual XpResult WriteChar(char16_t c);
  virtual XpResult WriteString(const char16_t* text);
  /// One UTF-16 unit, whatever the text mode. A character of two units takes two calls.
  virtual XpResult ReadRawChar(char16_t* c);
  /// The first unit of two is kept until the second is written; without one it becomes U+FFFD.
  virtual XpResult WriteRawChar(char16_t c);

 protected:
  /// To be called by Open: remembers the flags and forgets half-written characters.
  void BeginAccess(std::uint32_t flags);

  std::uint32_t m_byteOrder = XpByteOrderUnset;
  std::uint32_t m_nativeOrder = XpLittleEndian;
  std::uint32_t m_openFlags = 0;

 private:
  template <class T>
  XpResult ReadNumber(T* value, std::uint32_t order);
  template <class T>
  XpResult WriteNumber(T value, std::uint32_t order);
  XpResult ReadBytes(void* buffer, std::size_t count, std::size_t& read);
  XpResult ReadSequence(unsigned char lead, char16_t* c);
  bool ReadSecondUnit(char16_t* c);

  char16_t m_firstUnit = 0;  // of a character whose second unit WriteRawChar expects
};
