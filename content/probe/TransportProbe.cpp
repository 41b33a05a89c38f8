#include "content/probe/TransportProbe.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "imaging/tags/StreamWindow.h"

namespace vrx::formats {
namespace {

constexpr std::uint8_t kSyncByte = 0x47;
constexpr std::size_t kPacketBytes = 188;
constexpr std::size_t kArrivalBytes = 4;  // the time of arrival before a packet
constexpr std::size_t kTimedPacketBytes = kArrivalBytes + kPacketBytes;
constexpr std::size_t kSyncPlaces = 3 * kTimedPacketBytes;  // where a first sync byte may stand

constexpr std::int64_t kMostBytes = 0x64000;
constexpr int kMostProgramMaps = 5;

// Packets with the program maps of the known kinds of recordings have these numbers.
constexpr std::uint32_t kProgramMapPids[] = {0x81, 0x100};
constexpr std::uint8_t kProgramMapTable = 2;
constexpr std::size_t kProgramInfoLengthAt = 10;  // in the section
constexpr std::size_t kProgramInfoAt = 12;

constexpr std::uint8_t kRegistrationTag = 5;
constexpr std::size_t kDescriptorHead = 2;  // tag and length
constexpr std::size_t kTshvLength = 11;
constexpr std::size_t kHdmvLength = 4;
constexpr std::size_t kNameBytes = 4;

using Bytes = std::span<const std::uint8_t>;

Bytes Rest(Bytes bytes, std::size_t from) { return bytes.subspan(std::min(from, bytes.size())); }

bool IsProgramMapPacket(Bytes packet) {
  const bool startsUnit = (packet[1] & 0x40) != 0;
  const std::uint32_t pid = (packet[1] & 0x1Fu) << 8 | packet[2];
  return packet[0] == kSyncByte && startsUnit && std::ranges::count(kProgramMapPids, pid) != 0;
}

/// What the packet holds of the section that begins in it; empty when that is no program map.
Bytes ProgramMapIn(Bytes packet) {
  if (!IsProgramMapPacket(packet)) return {};
  const int control = packet[3] >> 4 & 3;  // 1: payload, 3: payload after an adaptation field
  if (control != 1 && control != 3) return {};
  Bytes payload = Rest(packet, 4);
  if (control == 3) payload = Rest(payload, std::size_t{payload[0]} + 1);
  if (payload.empty()) return {};
  const Bytes section = Rest(payload, std::size_t{payload[0]} + 1);  // after the pointer field
  return section.empty() || section[0] != kProgramMapTable ? Bytes() : section;
}

FormatCode CodeOfDescriptor(std::uint8_t tag, std::size_t length, Bytes data) {
  if (length < kNameBytes || data.size() < kNameBytes) return kUnknown;
  const std::string_view name(reinterpret_cast<const char*>(data.data()), kNameBytes);
  if (name == "HDPR") return kTransportHdmv;
  if (tag != kRegistrationTag) return kUnknown;
  if (length == kTshvLength && name == "TSHV") return kTransportTshv;
  return length == kHdmvLength && name == "HDMV" ? kTransportHdmv : kUnknown;
}

/// By the first descriptor of the whole program that says it.
FormatCode CodeOfProgramMap(Bytes section) {
  if (section.size() < kProgramInfoAt) return kUnknown;
  const std::size_t length = (section[kProgramInfoLengthAt] & 0x0Fu) << 8 | section[kProgramInfoLengthAt + 1];
  Bytes info = Rest(section, kProgramInfoAt);
  info = info.first(std::min(length, info.size()));
  while (info.size() >= kDescriptorHead) {
    const std::size_t dataBytes = info[1];
    const FormatCode code = CodeOfDescriptor(info[0], dataBytes, Rest(info, kDescriptorHead));
    if (code != kUnknown) return code;
    info = Rest(info, kDescriptorHead + dataBytes);
  }
  return kUnknown;
}

}  // namespace

std::optional<PacketSync> FindPacketSync(Bytes start) {
  if (start.size() < kSyncSearchBytes) return {};
  const auto repeats = [&](std::size_t at, std::size_t stride) {
    return start[at] == kSyncByte && start[at + stride] == kSyncByte && start[at + 2 * stride] == kSyncByte;
  };
  for (std::size_t at = 0; at < kSyncPlaces; ++at) {
    const auto position = static_cast<std::int64_t>(at);
    if (repeats(at, kPacketBytes)) return PacketSync{position, kPacketBytes};
    if (at >= kArrivalBytes && repeats(at, kTimedPacketBytes)) return PacketSync{position, kTimedPacketBytes};
  }
  return {};
}

FormatCode CheckTransport(XpAbstractFile& file) {
  imaging::StreamWindow window(file);
  std::array<std::uint8_t, kSyncSearchBytes> start{};
  if (!window.Read(0, start)) return kUnknown;
  const std::optional<PacketSync> sync = FindPacketSync(start);
  if (!sync) return kUnknown;
  std::array<std::uint8_t, kPacketBytes> packet{};
  int maps = 0;
  for (std::int64_t at = sync->position; at < kMostBytes && window.Read(at, packet); at += sync->stride) {
    const Bytes section = ProgramMapIn(packet);
    if (section.empty()) continue;
    const FormatCode code = CodeOfProgramMap(section);
    if (code != kUnknown || ++maps == kMostProgramMaps) return code;
  }
  return kUnknown;
}

}  // namespace vrx::formats
