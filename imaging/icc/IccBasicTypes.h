// The numbers that ICC profiles are made of (ICC.1:2010, section 4), and the base of all classes that read
// parts of a profile. The classes have the names of the format.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFile.h"
#include "vrx/XpString.h"

namespace vrx::imaging {

/// Four ASCII characters as the number that they are in a profile.
constexpr std::uint32_t IccSignature(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}
XpNarrowString IccSignatureText(std::uint32_t signature);

class icc_tools {
 public:
  virtual ~icc_tools() = default;
};

/// A number or a few of them. Read takes them from the stream's position, in the stream's byte order, and
/// gives the stream's result; XpErrEndOfFile when it ends too early. What was read in part is not to be used.
class icc_basic_type : public icc_tools {
 public:
  virtual XpResult Read(XpAbstractFile& stream) = 0;
};

class s15Fixed16Number final : public icc_basic_type {
 public:
  s15Fixed16Number() : s15Fixed16Number(2.2) {}
  /// The next number at or below `number`; numbers out of range become the first or last one.
  explicit s15Fixed16Number(double number);
  XpResult Read(XpAbstractFile& stream) override;

  static constexpr std::int64_t kBytes = 4;
  std::int32_t value;  // in 1/65536
};

class XYZNumber final : public icc_basic_type {
 public:
  XpResult Read(XpAbstractFile& stream) override;

  static constexpr std::int64_t kBytes = 12;
  s15Fixed16Number x, y, z;
};

/// UTC.
class dateTimeNumber final : public icc_basic_type {
 public:
  XpResult Read(XpAbstractFile& stream) override;

  std::uint16_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

/// The bytes from the stream's position to its end.
std::int64_t IccBytesLeft(const XpAbstractFile& stream);
/// XpErrEndOfFile, without a byte read, when fewer than `count` are left.
XpResult ReadIccBytes(XpAbstractFile& stream, void* bytes, std::int64_t count);

}  // namespace vrx::imaging
