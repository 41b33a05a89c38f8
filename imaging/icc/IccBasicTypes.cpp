#include "imaging/icc/IccBasicTypes.h"

#include <cmath>

#include "foundation/number/Saturate.h"

namespace vrx::imaging {

XpNarrowString IccSignatureText(std::uint32_t signature) {
  char text[4];
  for (int i = 0; i < 4; ++i) text[i] = static_cast<char>(signature >> (24 - 8 * i) & 0xFF);
  return XpNarrowString(std::string_view(text, sizeof text));
}

s15Fixed16Number::s15Fixed16Number(double number)
    : value(Saturate<std::int32_t>(std::floor(number * 65536))) {}

XpResult s15Fixed16Number::Read(XpAbstractFile& stream) { return stream.ReadInt32(&value, XpKeepByteOrder); }

XpResult XYZNumber::Read(XpAbstractFile& stream) {
  for (s15Fixed16Number* number : {&x, &y, &z}) {
    if (const XpResult result = number->Read(stream)) return result;
  }
  return XpOk;
}

XpResult dateTimeNumber::Read(XpAbstractFile& stream) {
  for (std::uint16_t* number : {&year, &month, &day, &hour, &minute, &second}) {
    if (const XpResult result = stream.ReadUInt16(number, XpKeepByteOrder)) return result;
  }
  return XpOk;
}

std::int64_t IccBytesLeft(const XpAbstractFile& stream) { return stream.GetSize() - stream.Tell(); }

XpResult ReadIccBytes(XpAbstractFile& stream, void* bytes, std::int64_t count) {
  if (count > IccBytesLeft(stream)) return XpErrEndOfFile;
  if (count == 0) return XpOk;
  std::uint64_t read = 0;
  const auto wanted = static_cast<std::uint64_t>(count);
  if (const XpResult result = stream.Read(bytes, wanted, &read)) return result;
  return read < wanted ? XpErrEndOfFile : XpOk;
}

}  // namespace vrx::imaging
