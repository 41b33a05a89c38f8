// The text side of XpAbstractFile: UTF-8 bytes in the file, UTF-16 units for the caller, one at a time.
#include <array>
#include <new>
#include <string>
#include <string_view>

#include "foundation/file/XpAbstractFile.h"
#include "vrx/XpTextCodec.h"

namespace textcodec = vrx::textcodec;

namespace {

constexpr std::size_t kLongestLine = std::size_t{16} << 20;
constexpr std::size_t kLongestSequence = 4;  // bytes of a character in UTF-8

/// Bytes of the sequence that `lead` announces; 1 when it announces none.
std::size_t SequenceLength(unsigned char lead) {
  if (lead >= 0xF0) return 4;
  if (lead >= 0xE0) return 3;
  return lead >= 0xC0 ? 2 : 1;
}

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

char16_t EscapeByte(unsigned char byte) { return static_cast<char16_t>(textcodec::kEscapedByte + byte); }

}  // namespace

/// As Read, but a short block at the end of the file is XpOk for every kind of file.
XpResult XpAbstractFile::ReadBytes(void* buffer, std::size_t count, std::size_t& read) {
  std::uint64_t got = 0;
  const XpResult result = Read(buffer, count, &got);
  read = static_cast<std::size_t>(got);
  return result == XpErrEndOfFile ? XpOk : result;
}

/// Reads the rest of the sequence that `lead` starts. For a character of two units the last byte is left
/// unread: the next call then finds the second unit by the position alone.
XpResult XpAbstractFile::ReadSequence(unsigned char lead, char16_t* c) {
  std::array<char, kLongestSequence> bytes{static_cast<char>(lead)};
  const std::size_t length = SequenceLength(lead);
  std::size_t read = 0;
  if (const XpResult result = ReadBytes(bytes.data() + 1, length - 1, read)) return result;
  char32_t scalar = 0;
  if (textcodec::DecodeOne({bytes.data(), read + 1}, scalar) == 0) {
    *c = EscapeByte(lead);
    return read == 0 ? XpOk : Seek(-static_cast<std::int64_t>(read), XpSeekCurrent);
  }
  std::array<char16_t, 2> units{};
  const std::u16string text = textcodec::ToUtf16({bytes.data(), read + 1});
  text.copy(units.data(), units.size());
  *c = units[0];
  return text.size() == 1 ? XpOk : Seek(-1, XpSeekCurrent);
}

/// True when the byte just read is the last one of a character of two units.
bool XpAbstractFile::ReadSecondUnit(char16_t* c) {
  constexpr auto kLength = static_cast<std::int64_t>(kLongestSequence);
  const std::int64_t position = Tell();
  if (position < kLength || Seek(-kLength, XpSeekCurrent) != XpOk) return false;
  std::array<char, kLongestSequence> bytes{};
  std::size_t read = 0;
  const XpResult result = ReadBytes(bytes.data(), bytes.size(), read);
  if (result != XpOk || read != bytes.size()) {
    Seek(position, XpSeekStart);
    return false;
  }
  char32_t scalar = 0;
  if (textcodec::DecodeOne({bytes.data(), read}, scalar) != kLongestSequence) return false;
  *c = textcodec::ToUtf16({bytes.data(), read})[1];
  return true;
}

XpResult XpAbstractFile::ReadRawChar(char16_t* c) {
  if (c == nullptr) return XpErrInvalidFileOperation;
  unsigned char byte = 0;
  if (const XpResult result = ReadUInt8(&byte)) return result;
  if (SequenceLength(byte) > 1) return ReadSequence(byte, c);
  if (!IsContinuation(byte)) {
    *c = byte;
  } else if (!ReadSecondUnit(c)) {
    *c = EscapeByte(byte);
  }
  return XpOk;
}

XpResult XpAbstractFile::ReadChar(char16_t* c) {
  if (const XpResult result = ReadRawChar(c)) return result;
  if (*c != u'\r' || (m_openFlags & XpOpenText) == 0) return XpOk;
  unsigned char next = 0;
  const XpResult result = ReadUInt8(&next);
  if (result == XpErrEndOfFile) return XpOk;
  if (result != XpOk) return result;
  if (next != '\n') return Seek(-1, XpSeekCurrent);
  *c = u'\n';
  return XpOk;
}

XpResult XpAbstractFile::ReadLine(XpString& line) try {
  const std::int64_t start = Tell();
  std::u16string text;
  char16_t c = 0;
  while (c != u'\n') {
    const XpResult result = ReadChar(&c);
    if (result == XpErrEndOfFile) break;
    if (result != XpOk) return result;
    if (text.size() == kLongestLine) {
      const XpResult back = Seek(start, XpSeekStart);
      return back == XpOk ? XpErrLineTooLong : back;
    }
    text.push_back(c);
  }
  line = XpString(text);
  return XpOk;
} catch (const std::bad_alloc&) {
  return XpErrOutOfMemory;
}

XpResult XpAbstractFile::ReadLineBuffer(char16_t* buffer, std::int32_t capacity) {
  constexpr std::int32_t kLeastCapacity = 2;
  if (buffer == nullptr || capacity < kLeastCapacity) return XpErrInvalidFileOperation;
  std::int32_t length = 0;
  XpResult result = XpOk;
  while (length == 0 || buffer[length - 1] != u'\n') {
    if (length == capacity - 1) {
      result = XpErrLineTooLong;
      break;
    }
    result = ReadChar(&buffer[length]);
    if (result != XpOk) break;
    ++length;
  }
  buffer[length] = 0;
  return result == XpErrEndOfFile ? XpOk : result;
}

XpResult XpAbstractFile::WriteChar(char16_t c) {
  if (c == u'\n' && (m_openFlags & XpOpenText) != 0) {
    if (const XpResult result = WriteRawChar(u'\r')) return result;
  }
  return WriteRawChar(c);
}

XpResult XpAbstractFile::WriteString(const char16_t* text) {
  if (text == nullptr) return XpErrInvalidFileOperation;
  for (; *text != 0; ++text) {
    if (const XpResult result = WriteChar(*text)) return result;
  }
  return XpOk;
}

XpResult XpAbstractFile::WriteRawChar(char16_t c) {
  std::array<char16_t, 2> units{};
  std::size_t count = 0;
  if (m_firstUnit != 0) units[count++] = m_firstUnit;
  if (textcodec::IsHighSurrogate(c)) {
    m_firstUnit = c;
    if (count == 0) return XpOk;
  } else {
    m_firstUnit = 0;
    units[count++] = c;
  }
  const std::string bytes = textcodec::ToUtf8({units.data(), count});
  return Write(bytes.data(), bytes.size(), nullptr);
}
