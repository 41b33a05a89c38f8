#include "content/mp4/MetadataItems.h"

#include <string_view>

namespace vrx::mp4 {
namespace {

constexpr std::uint64_t kLongestText = 64;  // bytes; no date is longer
constexpr FourCc kDay = MakeFourCc(
    "\xA9"
    "day");
constexpr FourCc kData = MakeFourCc("data");
constexpr std::uint32_t kUtf8 = 1;  // type of a value
constexpr std::string_view kTimeZoneKey = "com.vrx.time-zone";
constexpr std::string_view kCreationDateKey = "com.apple.quicktime.creationdate";

/// The numbers that the list of keys gives to those that are wanted; 0 for a key that it lacks.
struct KeyNumbers {
  FourCc timeZone = 0;
  FourCc creationDate = 0;
};

/// Keeps the text unless there is one already. A text that is too long to be a date is passed over.
void KeepText(BoxPayload& payload, std::uint64_t length, std::string& text) {
  if (!text.empty() || length > kLongestText) return;
  std::array<std::uint8_t, kLongestText> bytes{};
  if (!payload.ReadBytes(std::span(bytes).first(length))) return;
  text.assign(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
}

/// The value of an item in its "data" box.
void ReadValue(BoxFile& file, const Box& item, std::string& text) {
  Box data;
  if (!file.Children(item).Next(kData, data)) return;
  BoxPayload payload(file, data);
  const std::uint32_t type = payload.ReadUInt32();
  payload.Skip(4);  // country and language
  if (type == kUtf8) KeepText(payload, payload.GetLeft(), text);
}

KeyNumbers ReadKeys(BoxFile& file, const Box& keys) {
  KeyNumbers numbers;
  // The entries have the form of boxes whose type is the namespace of the key.
  BoxList entries = file.Children(keys, 8);
  FourCc number = 0;
  for (Box entry; entries.Next(entry);) {
    ++number;
    std::string name;
    BoxPayload payload(file, entry);
    if (entry.type == MakeFourCc("mdta")) KeepText(payload, payload.GetLeft(), name);
    if (name == kTimeZoneKey && numbers.timeZone == 0) numbers.timeZone = number;
    if (name == kCreationDateKey && numbers.creationDate == 0) numbers.creationDate = number;
  }
  return numbers;
}

void ReadItemList(BoxFile& file, const Box& list, const KeyNumbers& numbers, MetadataItems& items) {
  BoxList entries = file.Children(list);
  for (Box item; entries.Next(item);) {
    if (item.type == kDay) {
      ReadValue(file, item, items.day);
    } else if (item.type != 0 && item.type == numbers.timeZone) {
      ReadValue(file, item, items.timeZone);
    } else if (item.type != 0 && item.type == numbers.creationDate) {
      ReadValue(file, item, items.creationDate);
    }
  }
}

/// QuickTime's form begins with the handler box at once.
bool HasVersionAndFlags(BoxFile& file, const Box& metadata) {
  BoxPayload payload(file, metadata);
  if (payload.GetLeft() < 8) return true;
  payload.Skip(4);
  return payload.ReadUInt32() != MakeFourCc("hdlr");
}

}  // namespace

void ReadUserData(BoxFile& file, const Box& userData, MetadataItems& items) {
  BoxList entries = file.Children(userData);
  for (Box entry; entries.Next(entry);) {
    if (entry.type == MakeFourCc("meta")) {
      ReadMetadata(file, entry, items);
    } else if (entry.type == kDay) {
      // QuickTime's form of a text. A box may hold it in several languages, of which the first is enough.
      BoxPayload payload(file, entry);
      const std::uint16_t length = payload.ReadUInt16();
      payload.Skip(2);  // language
      KeepText(payload, length, items.day);
    }
  }
}

void ReadMetadata(BoxFile& file, const Box& metadata, MetadataItems& items) {
  KeyNumbers numbers;
  BoxList children = file.Children(metadata, HasVersionAndFlags(file, metadata) ? 4 : 0);
  for (Box child; children.Next(child);) {
    if (child.type == MakeFourCc("keys")) numbers = ReadKeys(file, child);
    if (child.type == MakeFourCc("ilst")) ReadItemList(file, child, numbers, items);
  }
}

}  // namespace vrx::mp4
