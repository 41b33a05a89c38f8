#include "imaging/tags/XpTiffTagData.h"

#include <algorithm>
#include <string_view>

#include "foundation/text/XpFormat.h"

namespace {

template <class Element>
XpNarrowString Print(Element value) {
  XpNarrowString text;
  XpFormat(text, "%d", static_cast<std::int32_t>(value));
  return text;
}
XpNarrowString Print(float value) {
  XpNarrowString text;
  XpFormat(text, "%lf", value);
  return text;
}
XpNarrowString Print(double value) {
  XpNarrowString text;
  XpFormat(text, "%lf", value);
  return text;
}
XpNarrowString Print(XpTiffFraction value) {
  XpNarrowString text;
  XpFormat(text, "%lu/%lu", value.numerator, value.denominator);
  return text;
}
XpNarrowString Print(XpTiffSignedFraction value) {
  XpNarrowString text;
  XpFormat(text, "%ld/%ld", value.numerator, value.denominator);
  return text;
}

XpNarrowString UpToZero(std::string_view bytes) { return XpNarrowString(bytes.substr(0, bytes.find('\0'))); }

}  // namespace

template <class T>
XpTiffTagData<T>::XpTiffTagData(const XpTiffTagData& other) : XpTiffTagData(other.tag, other.count) {
  std::copy_n(other.elements.get(), count, elements.get());
}

template <class T>
std::unique_ptr<XpTiffTagDataBase> XpTiffTagData<T>::Clone() const {
  return std::make_unique<XpTiffTagData>(*this);
}

template <class T>
XpNarrowString XpTiffTagData<T>::ToString(std::uint32_t index) const {
  if constexpr (T::kType == XpTiffAscii || T::kType == XpTiffUndefined) {
    const std::string_view bytes(reinterpret_cast<const char*>(elements.get()), count);
    const bool isText = T::kType == XpTiffUndefined || bytes.find('\0') != std::string_view::npos;
    return isText ? UpToZero(bytes) : XpNarrowString();
  } else {
    return index < count ? Print(elements[index]) : XpNarrowString();
  }
}

template class XpTiffTagData<XpTiffTagTypeByte>;
template class XpTiffTagData<XpTiffTagTypeAscii>;
template class XpTiffTagData<XpTiffTagTypeShort>;
template class XpTiffTagData<XpTiffTagTypeLong>;
template class XpTiffTagData<XpTiffTagTypeRational>;
template class XpTiffTagData<XpTiffTagTypeSByte>;
template class XpTiffTagData<XpTiffTagTypeUndefined>;
template class XpTiffTagData<XpTiffTagTypeSShort>;
template class XpTiffTagData<XpTiffTagTypeSLong>;
template class XpTiffTagData<XpTiffTagTypeSRational>;
template class XpTiffTagData<XpTiffTagTypeFloat>;
template class XpTiffTagData<XpTiffTagTypeDouble>;
