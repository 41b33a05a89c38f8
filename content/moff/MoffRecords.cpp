#include "content/moff/MoffRecords.h"

#include <algorithm>
#include <concepts>
#include <type_traits>

#include "vrx/XpResult.h"

namespace vrx::moff {
namespace {

/// Takes one field after the other.
class FieldReader {
 public:
  explicit FieldReader(std::span<const std::byte> bytes) : m_bytes(bytes) {}

  template <std::integral Number>
  void Field(Number& number) {
    std::make_unsigned_t<Number> value = 0;
    unsigned shift = 0;
    for (const std::byte byte : Take(sizeof(Number))) {
      value = static_cast<decltype(value)>(value | std::to_integer<std::uint64_t>(byte) << shift);
      shift += 8;
    }
    number = static_cast<Number>(value);
  }
  template <class Element, std::size_t Count>
  void Field(std::array<Element, Count>& array) {
    if constexpr (std::is_same_v<Element, std::byte>) {
      std::ranges::copy(Take(Count), array.begin());
    } else {
      for (Element& element : array) Field(element);
    }
  }
  void Skip(std::size_t count) { Take(count); }

 private:
  std::span<const std::byte> Take(std::size_t count) {
    if (count > m_bytes.size()) throw XpResult{XpErrMalformedRecord};
    const auto taken = m_bytes.first(count);
    m_bytes = m_bytes.subspan(count);
    return taken;
  }

  std::span<const std::byte> m_bytes;
};

class FieldWriter {
 public:
  explicit FieldWriter(std::span<std::byte> bytes) : m_bytes(bytes) {}

  template <std::integral Number>
  void Field(Number number) {
    auto value = static_cast<std::uint64_t>(number);
    for (std::byte& byte : Take(sizeof(Number))) {
      byte = static_cast<std::byte>(value & 0xFF);
      value >>= 8;
    }
  }
  template <class Element, std::size_t Count>
  void Field(const std::array<Element, Count>& array) {
    if constexpr (std::is_same_v<Element, std::byte>) {
      std::ranges::copy(array, Take(Count).begin());
    } else {
      for (const Element& element : array) Field(element);
    }
  }

 private:
  std::span<std::byte> Take(std::size_t count) {
    if (count > m_bytes.size()) throw XpResult{XpErrMalformedRecord};
    const auto taken = m_bytes.first(count);
    m_bytes = m_bytes.subspan(count);
    return taken;
  }

  std::span<std::byte> m_bytes;
};

// The layouts: the fields of each record in the order of the file, for both directions.

template <class Record, class As>
concept Is = std::same_as<std::remove_const_t<Record>, As>;

void Layout(auto& io, Is<FileHeader> auto& header) {
  io.Field(header.version);     // at 8
  io.Field(header.reserved1);   // 12
  io.Field(header.sourceName);  // 20
  io.Field(header.reserved2);   // 540
  io.Field(header.created);     // 544
  io.Field(header.written);     // 552
  io.Field(header.sourceSize);  // 560
  io.Field(header.reserved3);   // 568
}

template <class Record>
requires std::derived_from<Record, TableHeader>
void Layout(auto& io, Record& header) {
  io.Field(header.count);     // at 8
  io.Field(header.reserved);  // 12
}

void Layout(auto& io, Is<GroupData> auto& group) {
  io.Field(group.id);            // at 0
  io.Field(group.reserved);      // 4
  io.Field(group.bodiesOffset);  // 8
  io.Field(group.values);        // 12
}

void Layout(auto& io, Is<IndexData> auto& entry) {
  io.Field(entry.position);  // at 0
  io.Field(entry.reserved);  // 4
}

void Layout(auto& io, Is<BodyHead> auto& head) {
  io.Field(head.kind);  // at 0
  io.Field(head.size);  // 4
}

template <class Record>
constexpr bool kHasSignature = std::is_same_v<Record, FileHeader> || std::is_base_of_v<TableHeader, Record>;

}  // namespace

template <class Record>
Record Decode(std::span<const std::byte, Record::kSize> bytes) {
  FieldReader reader(bytes);
  if constexpr (kHasSignature<Record>) reader.Skip(kRecordStart);
  Record record;
  Layout(reader, record);
  return record;
}

template <class Record>
Bytes<Record::kSize> Encode(const Record& record) {
  Bytes<Record::kSize> bytes{};
  FieldWriter writer(bytes);
  Layout(writer, record);
  return bytes;
}

template <class Record>
Bytes<Record::kSize> Encode(const Record& record, std::uint32_t signature) {
  Bytes<Record::kSize> bytes{};
  FieldWriter writer(bytes);
  writer.Field(signature);
  writer.Field(Record::kSize);
  Layout(writer, record);
  return bytes;
}

template FileHeader Decode<FileHeader>(std::span<const std::byte, FileHeader::kSize>);
template GroupDataHeader Decode<GroupDataHeader>(std::span<const std::byte, GroupDataHeader::kSize>);
template IndexDataHeader Decode<IndexDataHeader>(std::span<const std::byte, IndexDataHeader::kSize>);
template GroupData Decode<GroupData>(std::span<const std::byte, GroupData::kSize>);
template IndexData Decode<IndexData>(std::span<const std::byte, IndexData::kSize>);
template BodyHead Decode<BodyHead>(std::span<const std::byte, BodyHead::kSize>);
template Bytes<FileHeader::kSize> Encode(const FileHeader&, std::uint32_t);
template Bytes<GroupDataHeader::kSize> Encode(const GroupDataHeader&, std::uint32_t);
template Bytes<IndexDataHeader::kSize> Encode(const IndexDataHeader&, std::uint32_t);
template Bytes<GroupData::kSize> Encode(const GroupData&);
template Bytes<IndexData::kSize> Encode(const IndexData&);
template Bytes<BodyHead::kSize> Encode(const BodyHead&);

}  // namespace vrx::moff
