#include "imaging/tags/GpsTags.h"

#include <algorithm>
#include <new>
#include <span>
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

/// Takes the values of the tags in the order of their numbers, one for each call.
class GpsTagReader {
 public:
  explicit GpsTagReader(const XpTiffTagIFD& ifd) : m_ifd(ifd) {}

  void operator()(XpGPSVer& field) { TakeArray<XpTiffTagTypeByte>(field, field.version); }
  void operator()(XpGPSByte& field) { TakeArray<XpTiffTagTypeByte>(field, std::span(&field.value, 1)); }
  void operator()(XpGPSShort& field) { TakeArray<XpTiffTagTypeShort>(field, std::span(&field.value, 1)); }
  void operator()(XpGPSRational& field) {
    TakeArray<XpTiffTagTypeRational>(field, std::span(&field.value, 1));
  }
  void operator()(XpGPSTriple& field) { TakeArray<XpTiffTagTypeRational>(field, field.values); }
  void operator()(XpGPSBytes& field) {
    const auto elements = Next<XpTiffTagTypeUndefined>(field);
    field.bytes.assign(elements.begin(), elements.end());
  }
  void operator()(XpGPSText& field) {
    const auto elements = Next<XpTiffTagTypeAscii>(field);
    field.present = !elements.empty() && elements.back() == '\0';
    if (field.present) field.text.assign(elements.begin(), elements.end() - 1);
  }

 private:
  /// The elements of the next tag, and whether there is one of this type.
  template <class T>
  std::span<const typename T::Element> Next(XpGPSElement& field) {
    const XpTiffTagDataBase* value = m_ifd.FindTag(m_number++, false);
    field.present = value != nullptr && value->GetType() == T::kType;
    if (!field.present) return {};
    return {static_cast<const typename T::Element*>(value->GetData()), value->count};
  }

  template <class T, class Array>
  void TakeArray(XpGPSElement& field, Array&& array) {
    const auto elements = Next<T>(field);
    field.present = field.present && elements.size() == array.size();
    if (field.present) std::copy(elements.begin(), elements.end(), array.begin());
  }

  const XpTiffTagIFD& m_ifd;
  std::uint16_t m_number = 0;
};

/// Shows all fields to the visitor, in the order of their numbers. `Record` may be const.
template <class Record, class Visitor>
void VisitFields(Record& r, Visitor visit) {
  const auto each = [&](auto&... fields) {
    static_assert(sizeof...(fields) == 31);
    (visit(fields), ...);
  };
  each(r.versionId, r.latitudeRef, r.latitude, r.longitudeRef, r.longitude, r.altitudeRef, r.altitude,
       r.timeStamp, r.satellites, r.status, r.measureMode, r.dop, r.speedRef, r.speed, r.trackRef, r.track,
       r.imgDirectionRef, r.imgDirection, r.mapDatum, r.destLatitudeRef, r.destLatitude, r.destLongitudeRef,
       r.destLongitude, r.destBearingRef, r.destBearing, r.destDistanceRef, r.destDistance,
       r.processingMethod, r.areaInformation, r.dateStamp, r.differential);
}

}  // namespace

XpResult AddGpsTags(XpTiffTagIFD& ifd, const XpGPSRecord& record) {
  try {
    VisitFields(record, GpsTagAdder(ifd));
  } catch (const std::bad_alloc&) {
    return XpErrOutOfMemory;
  }
  return XpOk;
}

XpGPSRecord ReadGpsTags(const XpTiffTagIFD& ifd) {
  XpGPSRecord record;
  VisitFields(record, GpsTagReader(ifd));
  return record;
}

}  // namespace vrx::imaging
