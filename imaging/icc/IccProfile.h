// Reads from an ICC profile (ICC.1:2010) what it calls itself. The codecs ask for it to know the colour space
// of a picture.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "imaging/icc/IccBasicTypes.h"
#include "imaging/icc/IccTypes.h"

namespace vrx::imaging {

class icc_profile_header final : public icc_tools {
 public:
  /// The first 128 bytes, from the stream's position; makes the stream big-endian. The values are not
  /// checked. XpErrEndOfFile, or the stream's result, when it ends earlier.
  XpResult Read(XpAbstractFile& stream);

  std::uint32_t size = 0;  // bytes of the profile
  std::uint32_t cmm = 0;
  std::uint32_t version = 0;
  std::uint32_t deviceClass = 0;
  std::uint32_t colorSpace = 0;
  std::uint32_t connectionSpace = 0;
  dateTimeNumber dateTime;
  std::uint32_t signature = IccSignature("acsp");
  std::uint32_t platform = 0;
  std::uint32_t flags = 0;
  std::uint32_t manufacturer = 0;
  std::uint32_t model = 0;
  std::uint32_t intent = 0;
  XYZNumber illuminant;
  std::uint32_t creator = 0;
  std::array<std::uint8_t, 16> id{};  // in file order
};

/// A tag with its content in the member of its type.
class icc_tag final : public icc_tools {
 public:
  const textDescriptionType& GetTextDescription() const { return textDescription; }

  std::uint32_t tagSignature = 0;
  std::uint32_t typeSignature = 0;
  curveType curve;
  multiLocalizedUnicodeType multiLocalizedUnicode;
  parametricCurveType parametricCurve;
  s15Fixed16ArrayType s15Fixed16Array;
  textType plainText;
  textDescriptionType textDescription;
  XYZType xyz;
};

class icc_profile final : public icc_tools {
 public:
  /// A whole profile, which begins at the start of the stream; the stream is there. Keeps the tags `desc`
  /// and reads no others. XpErrIccType when one has another type, as in profiles of version 4; the stream's
  /// result when it can't be read to the end of the tag table, or of such a tag. XpErrEndOfFile also for more
  /// text than the stream has bytes. After a failure the profile is not to be used.
  XpResult Read(XpAbstractFile& stream);

  /// The first kept tag with this signature of four characters; one without content when there is none.
  icc_tag FindTag(std::string_view signature) const;

  const icc_profile_header& GetHeader() const { return header; }

 private:
  XpResult ReadTag(XpAbstractFile& stream, std::int64_t& bytesLeft);

  icc_profile_header header;
  std::vector<icc_tag> tags;
};

}  // namespace vrx::imaging
