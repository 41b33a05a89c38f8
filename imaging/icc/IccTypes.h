// The types of tags of an ICC profile that are known here (ICC.1:2010, section 10, and for
// textDescriptionType ICC.1:2001-04, section 6.5.17). icc_tag has one of each.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/icc/IccBasicTypes.h"

namespace vrx::imaging {

/// The content of a tag.
class icc_type : public icc_tools {
 public:
  /// More text than this is refused as XpErrEndOfFile.
  static constexpr std::int64_t kMostTextBytes = std::int64_t{1} << 20;

  /// Reads a tag of `size` bytes at the stream's position and makes the stream big-endian. XpErrIccType when
  /// the tag is of another type; the stream's result, or XpErrEndOfFile, when it ends before the tag does.
  /// After a failure the object is not to be used. A size too small for any value gives none.
  virtual XpResult Read(XpAbstractFile& stream, std::uint32_t size) = 0;

 protected:
  /// The type's signature and the reserved word after it.
  static XpResult ReadHead(XpAbstractFile& stream, std::uint32_t signature);
  /// `bytes` bytes up to the first zero.
  static XpResult ReadText(XpAbstractFile& stream, std::int64_t bytes, XpNarrowString& text);
};

class curveType final : public icc_type {
 public:
  XpResult Read(XpAbstractFile& stream, std::uint32_t size) override;

  std::vector<std::uint16_t> values;
};

/// The texts themselves are not read.
class multiLocalizedUnicodeType final : public icc_type {
 public:
  XpResult Read(XpAbstractFile& stream, std::uint32_t size) override;

  std::uint32_t languageCode = IccSignature("usen");
  std::uint32_t recordCount = 0;
};

class parametricCurveType final : public icc_type {
 public:
  XpResult Read(XpAbstractFile& stream, std::uint32_t size) override;

  std::vector<s15Fixed16Number> parameters{s15Fixed16Number(2.2)};  // g, a, b, c, d, e, f
};

class s15Fixed16ArrayType final : public icc_type {
 public:
  XpResult Read(XpAbstractFile& stream, std::uint32_t size) override;

  std::vector<s15Fixed16Number> values;
};

class textType final : public icc_type {
 public:
  XpResult Read(XpAbstractFile& stream, std::uint32_t size) override;

  XpNarrowString text;
};

/// Only the ASCII text, which is what a profile calls itself.
class textDescriptionType final : public icc_type {
 public:
  XpResult Read(XpAbstractFile& stream, std::uint32_t size) override;

  XpNarrowString text;
};

class XYZType final : public icc_type {
 public:
  XpResult Read(XpAbstractFile& stream, std::uint32_t size) override;

  std::vector<XYZNumber> values;
};

}  // namespace vrx::imaging
