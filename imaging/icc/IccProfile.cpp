#include "imaging/icc/IccProfile.h"

#include <initializer_list>
#include <utility>

namespace vrx::imaging {

namespace {

XpResult ReadNumbers(XpAbstractFile& stream, std::initializer_list<std::uint32_t*> numbers) {
  for (std::uint32_t* number : numbers) {
    if (const XpResult result = stream.ReadUInt32(number, XpKeepByteOrder)) return result;
  }
  return XpOk;
}

template <std::size_t Count>
XpResult SkipBytes(XpAbstractFile& stream) {
  std::array<std::uint8_t, Count> dropped;
  return ReadIccBytes(stream, dropped.data(), Count);
}

}  // namespace

XpResult icc_profile_header::Read(XpAbstractFile& stream) {
  constexpr std::size_t kAttributeBytes = 8;
  constexpr std::size_t kReservedBytes = 28;
  if (const XpResult result = stream.SetByteOrder(XpBigEndian)) return result;
  if (const XpResult result =
          ReadNumbers(stream, {&size, &cmm, &version, &deviceClass, &colorSpace, &connectionSpace})) {
    return result;
  }
  if (const XpResult result = dateTime.Read(stream)) return result;
  if (const XpResult result = ReadNumbers(stream, {&signature, &platform, &flags, &manufacturer, &model})) {
    return result;
  }
  if (const XpResult result = SkipBytes<kAttributeBytes>(stream)) return result;
  if (const XpResult result = ReadNumbers(stream, {&intent})) return result;
  if (const XpResult result = illuminant.Read(stream)) return result;
  if (const XpResult result = ReadNumbers(stream, {&creator})) return result;
  if (const XpResult result = ReadIccBytes(stream, id.data(), static_cast<std::int64_t>(id.size()))) {
    return result;
  }
  return SkipBytes<kReservedBytes>(stream);
}

XpResult icc_profile::Read(XpAbstractFile& stream) {
  constexpr std::int64_t kTagBytes = 12;
  if (const XpResult result = header.Read(stream)) return result;
  std::uint32_t count = 0;
  if (const XpResult result = ReadNumbers(stream, {&count})) return result;
  if (count * kTagBytes > IccBytesLeft(stream)) return XpErrEndOfFile;
  tags.clear();
  // Many tags may name the same bytes, which would then be kept many times.
  std::int64_t bytesLeft = stream.GetSize();
  for (std::uint32_t i = 0; i < count; ++i) {
    if (const XpResult result = ReadTag(stream, bytesLeft)) return result;
  }
  return XpOk;
}

XpResult icc_profile::ReadTag(XpAbstractFile& stream, std::int64_t& bytesLeft) {
  constexpr std::uint32_t kDescription = IccSignature("desc");
  std::uint32_t signature = 0, offset = 0, size = 0;
  if (const XpResult result = ReadNumbers(stream, {&signature, &offset, &size})) return result;
  const std::int64_t next = stream.Tell();
  if (const XpResult result = stream.Seek(offset, XpSeekStart)) return result;
  if (signature == kDescription) {
    icc_tag tag;
    tag.tagSignature = tag.typeSignature = kDescription;
    if (const XpResult result = tag.textDescription.Read(stream, size)) return result;
    bytesLeft -= stream.Tell() - std::int64_t{offset};
    if (bytesLeft < 0) return XpErrEndOfFile;
    tags.push_back(std::move(tag));
  }
  return stream.Seek(next, XpSeekStart);
}

icc_tag icc_profile::FindTag(std::string_view signature) const {
  for (const icc_tag& tag : tags) {
    if (IccSignatureText(tag.tagSignature).AsView() == signature) return tag;
  }
  return {};
}

}  // namespace vrx::imaging
