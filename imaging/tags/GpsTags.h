// The GPS fields of a picture, read from its tags and made into tags. Used where the position of a picture is
// replaced.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "imaging/tags/XpTiffTagIFD.h"
#include "vrx/XpResult.h"

/// A field that may be missing.
class XpGPSElement {
 public:
  virtual ~XpGPSElement() = default;
  bool present = false;
};
class XpGPSVer : public XpGPSElement {
 public:
  std::array<std::uint8_t, 4> version{};
};
class XpGPSByte : public XpGPSElement {
 public:
  std::uint8_t value = 0;
};
class XpGPSText : public XpGPSElement {
 public:
  std::string text;  // without its terminator; zeros that fill up a longer value are a part of it
};
class XpGPSRational : public XpGPSElement {
 public:
  XpTiffFraction value;
};
class XpGPSTriple : public XpGPSElement {
 public:
  std::array<XpTiffFraction, 3> values{};  // degrees, minutes, seconds, or a time of day in UTC
};
class XpGPSBytes : public XpGPSElement {
 public:
  std::vector<std::uint8_t> bytes;
};
class XpGPSShort : public XpGPSElement {
 public:
  std::uint16_t value = 0;
};

/// The GPS tags of Exif 2.32 under their public names, in the order of their numbers from 0 to 30.
struct XpGPSRecord {
  XpGPSVer versionId;
  XpGPSText latitudeRef;
  XpGPSTriple latitude;
  XpGPSText longitudeRef;
  XpGPSTriple longitude;
  XpGPSByte altitudeRef;
  XpGPSRational altitude;
  XpGPSTriple timeStamp;
  XpGPSText satellites;
  XpGPSText status;
  XpGPSText measureMode;
  XpGPSRational dop;
  XpGPSText speedRef;
  XpGPSRational speed;
  XpGPSText trackRef;
  XpGPSRational track;
  XpGPSText imgDirectionRef;
  XpGPSRational imgDirection;
  XpGPSText mapDatum;
  XpGPSText destLatitudeRef;
  XpGPSTriple destLatitude;
  XpGPSText destLongitudeRef;
  XpGPSTriple destLongitude;
  XpGPSText destBearingRef;
  XpGPSRational destBearing;
  XpGPSText destDistanceRef;
  XpGPSRational destDistance;
  XpGPSBytes processingMethod;
  XpGPSBytes areaInformation;
  XpGPSText dateStamp;
  XpGPSShort differential;
};

namespace vrx::imaging {

/// Adds a tag for each field that is present. XpErrOutOfMemory, with the tags before it added.
XpResult AddGpsTags(XpTiffTagIFD& ifd, const XpGPSRecord& record);

/// What AddGpsTags makes the same tags of again. A field stays missing where the tag has another type or
/// count, or a text has no terminator. Throws std::bad_alloc.
XpGPSRecord ReadGpsTags(const XpTiffTagIFD& ifd);

}  // namespace vrx::imaging
