#include "imaging/tags/GpsTags.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vrx::imaging {
namespace {

/// Makes the tags in the order of their numbers, one for each call.
class GpsTagAdder {
 public:
  explicit GpsTagAdder(XpTiffTagIFD& ifd) : m_ifd(ifd) {}

  void operator()(const XpGPSVer& field) { AddArray<XpTiffTagTypeByte>(field, field.version); }
  void operator()(const XpGPSByte& field) { AddArray<XpTiffTagTypeByte>(field, std::array{field.value}); }
  void operator()(const XpGPSShort& field) { AddArray<XpTiffTagTypeShort>(field, std::array{field.value}); }
  void operator()(const XpGPSRational& field) {
    AddArray<XpTiffTagTypeRational>(field, std::array{field.value});
  }
  void operator()(const XpGPSTriple& field) { AddArray<XpTiffTagTypeRational>(field, field.values); }
  void operator()(const XpGPSBytes& field) { AddArray<XpTiffTagTypeUndefined>(field, field.bytes); }
  void operator()(const XpGPSText& field) {
    if (field.present) m_ifd.SetAscii(m_number, field.text);
    ++m_number;
  }

 private:
  template <class T, class Array>
  void AddArray(const XpGPSElement& field, const Array& array) {
    if (field.present) {
      auto value = std::make_unique<XpTiffTagData<T>>(m_number, static_cast<std::uint32_t>(array.size()));
      std::copy(array.begin(), array.end(), value->elements.get());
      m_ifd.AddTag(std::move(value));
    }
    ++m_number;
  }

  XpTiffTagIFD& m_ifd;
  std::uint16_t m_number = 0;
};

template <class... Fields>
void AddEach(XpTiffTagIFD& ifd, const Fields&... fields) {
  static_assert(sizeof...(fields) == 31);
  GpsTagAdder add(ifd);
  (add(fields), ...);
}

}  // namespace

XpResult AddGpsTags(XpTiffTagIFD& ifd, const XpGPSRecord& record) {
  const XpGPSRecord& r = record;
  try {
    AddEach(ifd, r.versionId, r.latitudeRef, r.latitude, r.longitudeRef, r.longitude, r.altitudeRef,
            r.altitude, r.timeStamp, r.satellites, r.status, r.measureMode, r.dop, r.speedRef, r.speed,
            r.trackRef, r.track, r.imgDirectionRef, r.imgDirection, r.mapDatum, r.destLatitudeRef,
            r.destLatitude, r.destLongitudeRef, r.destLongitude, r.destBearingRef, r.destBearing,
            r.destDistanceRef, r.destDistance, r.processingMethod, r.areaInformation, r.dateStamp,
            r.differential);
  } catch (const std::bad_alloc&) {
    return XpErrOutOfMemory;
  }
  return XpOk;
}

}  // namespace vrx::imaging
