#include <algorithm>
#include <string>

#include "content/probe/KindEvidence.h"
#include "content/probe/ProgramProbe.h"
#include "content/probe/TransportProbe.h"

namespace vrx::formats {
namespace {

using namespace std::string_view_literals;

// The first box of files after ISO/IEC 14496-12: its size, its type, and of "ftyp" the brand.
constexpr std::size_t kBoxTypeAt = 4;
constexpr std::size_t kBrandAt = 8;
constexpr std::size_t kCodeBytes = 4;
/// With what movies begin that are older than brands.
constexpr std::string_view kOldMovieBoxes[] = {"moov", "mdat", "wide", "pnot"};

constexpr std::size_t kRiffFormAt = 8;
constexpr std::string_view kAsfHeader = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;

// EBML (RFC 8794): the header element, and in it one with the type of the document.
constexpr std::string_view kEbmlHeader = "\x1A\x45\xDF\xA3"sv;
constexpr std::string_view kDocumentTypeElement = "\x42\x82"sv;
constexpr std::size_t kEbmlHeaderBytes = 64;  // of real files, or less
constexpr std::uint8_t kOneByteSize = 0x80;   // marks a size that takes one byte

/// As it is stored: 0 and 1 stand for other ways to say it.
std::int64_t FirstBoxSize(const KindEvidence& evidence) {
  std::int64_t size = 0;
  for (std::size_t i = 0; i < kBoxTypeAt; ++i) size = size << 8 | evidence.Byte(i);
  return size;
}

/// Empty unless the header says it.
std::string_view DocumentTypeOf(const KindEvidence& evidence) {
  if (!evidence.Begins(kEbmlHeader)) return {};
  const std::string_view header = evidence.Start().substr(0, kEbmlHeaderBytes);
  const std::size_t at = header.find(kDocumentTypeElement, kEbmlHeader.size());
  if (at == std::string_view::npos || at + kDocumentTypeElement.size() >= header.size()) return {};
  const std::size_t sizeAt = at + kDocumentTypeElement.size();
  const std::uint8_t size = evidence.Byte(sizeAt);
  return (size & kOneByteSize) == 0 ? ""sv : header.substr(sizeAt + 1, size & ~kOneByteSize);
}

}  // namespace

std::string WhyBrand(const KindEvidence& evidence, std::initializer_list<std::string_view> brands) {
  if (!evidence.Has(kBoxTypeAt, "ftyp") || evidence.Start().size() < kBrandAt + kCodeBytes) return {};
  const std::string_view brand = evidence.Start().substr(kBrandAt, kCodeBytes);
  const bool isOne =
      std::ranges::any_of(brands, [=](std::string_view one) { return brand.starts_with(one); });
  return isOne ? "ftyp box with brand " + FourCharacters(brand) + " at byte 4" : "";
}

std::string WhyQuickTime(const KindEvidence& evidence) {
  for (const std::string_view box : kOldMovieBoxes) {
    // Some are also words that a text may hold there.
    if (evidence.Has(kBoxTypeAt, box) && FirstBoxSize(evidence) <= evidence.Size()) {
      return std::string(box) + " box at byte 4";
    }
  }
  return WhyBrand(evidence, {"qt  "});
}

std::string WhyRiff(const KindEvidence& evidence, std::string_view form) {
  const bool isForm = evidence.Begins("RIFF") && evidence.Has(kRiffFormAt, form);
  return isForm ? BeginsWithText("RIFF") + ", with \"" + std::string(form) + "\" at byte 8" : "";
}

std::string WhyAsf(const KindEvidence& evidence) {
  return evidence.Begins(kAsfHeader) ? BeginsWithBytes(evidence, kAsfHeader.size()) : "";
}

std::string WhyEbml(const KindEvidence& evidence, std::string_view documentType) {
  if (DocumentTypeOf(evidence) != documentType) return {};
  return BeginsWithBytes(evidence, kEbmlHeader.size()) + ", with document type " + std::string(documentType);
}

std::string WhyProgramStream(const KindEvidence& evidence, std::uint32_t format) {
  return ProgramOf(evidence.Start()) == format ? BeginsWithBytes(evidence, kPackStartBytes) : "";
}

std::string WhyTransportStream(const KindEvidence& evidence, std::int64_t stride) {
  const std::string_view start = evidence.Start();
  const auto sync = FindPacketSync({reinterpret_cast<const std::uint8_t*>(start.data()), start.size()});
  if (!sync || sync->stride != stride) return {};
  return "0x47 every " + std::to_string(stride) + " bytes from byte " + std::to_string(sync->position);
}

}  // namespace vrx::formats
