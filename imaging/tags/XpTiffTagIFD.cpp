#include "imaging/tags/XpTiffTagIFD.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "imaging/tags/TagLayout.h"
#include "imaging/tags/TagNames.h"

using namespace vrx::imaging;

namespace {

const XpTiffTagDataIFD* AsIfds(const XpTiffTagDataBase& value) {
  return value.GetType() == XpTiffIfd ? static_cast<const XpTiffTagDataIFD*>(&value) : nullptr;
}

/// The value when it has this type and more than `index` elements.
template <class T>
const XpTiffTagData<T>* Holding(const XpTiffTagDataBase* value, std::uint32_t index) {
  if (value == nullptr || value->GetType() != T::kType || index >= value->count) return nullptr;
  return static_cast<const XpTiffTagData<T>*>(value);
}

template <class T>
std::int32_t AddOne(XpTiffTagIFD& ifd, std::uint16_t tag, typename T::Element element) {
  auto value = std::make_unique<XpTiffTagData<T>>(tag, 1u);
  value->elements[0] = element;
  return ifd.AddTag(std::move(value));
}

}  // namespace

XpTiffTagDataIFD::XpTiffTagDataIFD(std::uint16_t tagNumber, std::uint32_t elementCount)
    : XpTiffTagData(tagNumber, elementCount) {}
XpTiffTagDataIFD::~XpTiffTagDataIFD() = default;

XpTiffTagDataIFD::XpTiffTagDataIFD(const XpTiffTagDataIFD& other) : XpTiffTagData(other) {
  ifds.reserve(other.ifds.size());
  for (const auto& ifd : other.ifds) ifds.push_back(ifd->Clone());
}

std::unique_ptr<XpTiffTagDataBase> XpTiffTagDataIFD::Clone() const {
  return std::make_unique<XpTiffTagDataIFD>(*this);
}

void XpTiffTagDataIFD::FitCount() {
  const auto fitting = static_cast<std::uint32_t>(ifds.size());
  elements = std::make_unique<Element[]>(std::size_t{fitting} + 1);
  count = fitting;
}

XpTiffTagIFD::XpTiffTagIFD() = default;
XpTiffTagIFD::~XpTiffTagIFD() = default;

XpTiffTagDataBase* XpTiffTagIFD::GetTagAt(std::size_t index) const {
  return index < values.size() ? values[index].get() : nullptr;
}

XpTiffTagDataBase* XpTiffTagIFD::FindTag(std::uint16_t tag, bool recursive) const {
  for (const auto& value : values) {
    if (value->tag == tag) return value.get();
  }
  if (!recursive) return nullptr;
  for (const auto& value : values) {
    const XpTiffTagDataIFD* below = AsIfds(*value);
    if (below == nullptr || below->tag == kTagMakerNote || below->tag == kTagMakerSubIfd) continue;
    for (const auto& ifd : below->ifds) {
      if (XpTiffTagDataBase* found = ifd->FindTag(tag, true)) return found;
    }
  }
  return nullptr;
}

XpTiffTagIFD* XpTiffTagIFD::GetSubIfd(std::uint16_t tag) const {
  const XpTiffTagDataBase* value = FindTag(tag, false);
  const XpTiffTagDataIFD* below = value == nullptr ? nullptr : AsIfds(*value);
  return below == nullptr || below->ifds.empty() ? nullptr : below->ifds.front().get();
}

std::int32_t XpTiffTagIFD::AddTag(std::unique_ptr<XpTiffTagDataBase> value) {
  if (value == nullptr) return -1;
  const auto same =
      std::find_if(values.begin(), values.end(), [&](const auto& other) { return other->tag == value->tag; });
  if (same != values.end()) {
    *same = std::move(value);
  } else {
    values.push_back(std::move(value));
  }
  return static_cast<std::int32_t>(values.size()) - 1;
}

void XpTiffTagIFD::RemoveTagAt(std::size_t index) {
  if (index < values.size()) values.erase(values.begin() + static_cast<std::ptrdiff_t>(index));
}

void XpTiffTagIFD::Clear() { values.clear(); }

std::uint16_t XpTiffTagIFD::GetShort(std::uint16_t tag, bool recursive) const {
  const auto* value = Holding<XpTiffTagTypeShort>(FindTag(tag, recursive), 0);
  return value == nullptr ? std::uint16_t{0} : value->elements[0];
}

std::uint32_t XpTiffTagIFD::GetLong(std::uint16_t tag, std::uint32_t index, bool recursive) const {
  const auto* value = Holding<XpTiffTagTypeLong>(FindTag(tag, recursive), index);
  return value == nullptr ? 0 : value->elements[index];
}

std::uint8_t XpTiffTagIFD::GetUndefinedByte(std::uint16_t tag, std::uint32_t index, bool recursive) const {
  const auto* value = Holding<XpTiffTagTypeUndefined>(FindTag(tag, recursive), index);
  return value == nullptr ? std::uint8_t{0} : value->elements[index];
}

XpNarrowString XpTiffTagIFD::GetAscii(std::uint16_t tag) const {
  const auto* value = Holding<XpTiffTagTypeAscii>(FindTag(tag, false), 0);
  return value == nullptr ? XpNarrowString() : value->ToString(0);
}

std::int32_t XpTiffTagIFD::SetByte(std::uint16_t tag, std::uint8_t value) {
  return AddOne<XpTiffTagTypeByte>(*this, tag, value);
}

std::int32_t XpTiffTagIFD::SetShort(std::uint16_t tag, std::uint16_t value) {
  return AddOne<XpTiffTagTypeShort>(*this, tag, value);
}

std::int32_t XpTiffTagIFD::SetLong(std::uint16_t tag, std::uint32_t value) {
  return AddOne<XpTiffTagTypeLong>(*this, tag, value);
}

std::int32_t XpTiffTagIFD::SetRational(std::uint16_t tag, std::uint32_t numerator,
                                       std::uint32_t denominator) {
  return AddOne<XpTiffTagTypeRational>(*this, tag, {numerator, denominator});
}

std::int32_t XpTiffTagIFD::SetAscii(std::uint16_t tag, std::string_view text, std::int32_t count) {
  const auto size =
      count < 0 ? static_cast<std::uint32_t>(text.size()) + 1 : static_cast<std::uint32_t>(count);
  auto value = std::make_unique<XpTiffTagData<XpTiffTagTypeAscii>>(tag, size);
  std::copy_n(text.data(), std::min<std::size_t>(text.size(), size), value->elements.get());
  return AddTag(std::move(value));
}

std::int32_t XpTiffTagIFD::SetUndefined(std::uint16_t tag, const void* bytes, std::uint32_t count) {
  auto value = std::make_unique<XpTiffTagData<XpTiffTagTypeUndefined>>(tag, count);
  if (bytes != nullptr && count != 0) std::memcpy(value->elements.get(), bytes, count);
  return AddTag(std::move(value));
}

std::uint64_t XpTiffTagIFD::GetStoredSize(bool recursive) const {
  std::uint64_t size = IfdHeadSize(values.size()) + (isMakerNote ? kNoteSignatureSize : 0);
  for (const auto& value : values) {
    const XpTiffTagDataIFD* below = AsIfds(*value);
    size += OutOfLineSize(below == nullptr ? value->GetByteSize()
                                           : std::uint64_t{below->ifds.size()} * sizeof(std::uint32_t));
    if (below == nullptr || !recursive) continue;
    for (const auto& ifd : below->ifds) size += ifd->GetStoredSize(true);
  }
  return size;
}

void XpTiffTagIFD::Normalize() {
  std::stable_sort(values.begin(), values.end(),
                   [](const auto& a, const auto& b) { return a->tag < b->tag; });
  for (const auto& value : values) {
    if (value->GetType() == XpTiffIfd) static_cast<XpTiffTagDataIFD&>(*value).FitCount();
  }
}

std::unique_ptr<XpTiffTagIFD> XpTiffTagIFD::Clone() const {
  auto copy = std::make_unique<XpTiffTagIFD>();
  copy->values.reserve(values.size());
  for (const auto& value : values) copy->values.push_back(value->Clone());
  copy->isMakerNote = isMakerNote;
  copy->isCamSignature = isCamSignature;
  copy->headerVersion = headerVersion;
  return copy;
}
