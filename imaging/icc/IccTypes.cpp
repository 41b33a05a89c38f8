#include "imaging/icc/IccTypes.h"

#include <algorithm>
#include <array>
#include <string>

namespace vrx::imaging {

namespace {

constexpr std::int64_t kHeadBytes = 8;

/// The bytes of a tag after its head.
std::int64_t BodyBytes(std::uint32_t size) { return std::max<std::int64_t>(size - kHeadBytes, 0); }

/// As many numbers as fill the body. They are counted against the stream before they take memory.
template <class Number>
XpResult ReadBody(XpAbstractFile& stream, std::uint32_t size, std::vector<Number>& numbers) {
  const std::int64_t count = BodyBytes(size) / Number::kBytes;
  if (count * Number::kBytes > IccBytesLeft(stream)) return XpErrEndOfFile;
  numbers.assign(static_cast<std::size_t>(count), Number());
  for (Number& number : numbers) {
    if (const XpResult result = number.Read(stream)) return result;
  }
  return XpOk;
}

}  // namespace

XpResult icc_type::ReadHead(XpAbstractFile& stream, std::uint32_t signature) {
  std::uint32_t found = 0;
  std::uint32_t reserved = 0;
  if (const XpResult result = stream.SetByteOrder(XpBigEndian)) return result;
  if (const XpResult result = stream.ReadUInt32(&found, XpKeepByteOrder)) return result;
  if (found != signature) return XpErrIccType;
  return stream.ReadUInt32(&reserved, XpKeepByteOrder);
}

XpResult icc_type::ReadText(XpAbstractFile& stream, std::int64_t bytes, XpNarrowString& text) {
  if (bytes > kMostTextBytes || bytes > IccBytesLeft(stream)) return XpErrEndOfFile;
  std::string read(static_cast<std::size_t>(bytes), '\0');
  if (const XpResult result = ReadIccBytes(stream, read.data(), bytes)) return result;
  text = read.c_str();
  return XpOk;
}

XpResult curveType::Read(XpAbstractFile& stream, std::uint32_t) {
  constexpr std::int64_t kValueBytes = 2;
  std::uint32_t count = 0;
  if (const XpResult result = ReadHead(stream, IccSignature("curv"))) return result;
  if (const XpResult result = stream.ReadUInt32(&count, XpKeepByteOrder)) return result;
  if (count * kValueBytes > IccBytesLeft(stream)) return XpErrEndOfFile;
  values.assign(count, 0);
  for (std::uint16_t& value : values) {
    if (const XpResult result = stream.ReadUInt16(&value, XpKeepByteOrder)) return result;
  }
  return XpOk;
}

XpResult multiLocalizedUnicodeType::Read(XpAbstractFile& stream, std::uint32_t) {
  if (const XpResult result = ReadHead(stream, IccSignature("mluc"))) return result;
  return stream.ReadUInt32(&recordCount, XpKeepByteOrder);
}

XpResult parametricCurveType::Read(XpAbstractFile& stream, std::uint32_t) {
  // By function type. A type that the format does not know yet is read as the last one.
  constexpr std::array<std::size_t, 5> kParameters = {1, 3, 4, 5, 7};
  std::uint16_t function = 0;
  std::uint16_t reserved = 0;
  if (const XpResult result = ReadHead(stream, IccSignature("para"))) return result;
  if (const XpResult result = stream.ReadUInt16(&function, XpKeepByteOrder)) return result;
  if (const XpResult result = stream.ReadUInt16(&reserved, XpKeepByteOrder)) return result;
  parameters.resize(kParameters[std::min<std::size_t>(function, kParameters.size() - 1)]);
  for (s15Fixed16Number& parameter : parameters) {
    if (const XpResult result = parameter.Read(stream)) return result;
  }
  return XpOk;
}

XpResult s15Fixed16ArrayType::Read(XpAbstractFile& stream, std::uint32_t size) {
  if (const XpResult result = ReadHead(stream, IccSignature("sf32"))) return result;
  return ReadBody(stream, size, values);
}

XpResult textType::Read(XpAbstractFile& stream, std::uint32_t size) {
  if (const XpResult result = ReadHead(stream, IccSignature("text"))) return result;
  return ReadText(stream, BodyBytes(size), text);
}

/// The count decides, not the size that the tag table states.
XpResult textDescriptionType::Read(XpAbstractFile& stream, std::uint32_t) {
  std::uint32_t count = 0;
  if (const XpResult result = ReadHead(stream, IccSignature("desc"))) return result;
  if (const XpResult result = stream.ReadUInt32(&count, XpKeepByteOrder)) return result;
  return ReadText(stream, count, text);
}

XpResult XYZType::Read(XpAbstractFile& stream, std::uint32_t size) {
  if (const XpResult result = ReadHead(stream, IccSignature("XYZ "))) return result;
  return ReadBody(stream, size, values);
}

}  // namespace vrx::imaging
