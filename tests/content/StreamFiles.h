// Transport streams and AVI files, written packet by packet and chunk by chunk, whole or wrong on purpose.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/imaging/ImageFiles.h"

namespace streamfiles {

using imagefiles::Big;
using imagefiles::Bytes;
using imagefiles::Little;

inline constexpr std::size_t kPacketBytes = 188;

struct PacketForm {
  std::uint32_t pid = 0x100;
  bool startsUnit = true;
  std::uint32_t control = 1;  // 1: payload, 2: adaptation field, 3: both
  Bytes field = {};           // the adaptation field with its length
};
/// Cut or filled up with FF.
inline Bytes Packet(const Bytes& payload, const PacketForm& form = {}) {
  Bytes bytes = "\x47" + Big(form.pid | (form.startsUnit ? 0x4000u : 0u), 2) + Big(form.control << 4, 1) +
                form.field + payload;
  bytes.resize(kPacketBytes, '\xFF');
  return bytes;
}
inline Bytes OtherPacket() { return Packet({}, {.pid = 0x1FFF, .startsUnit = false}); }

inline Bytes Descriptor(int tag, const Bytes& data) {
  return Bytes(1, static_cast<char>(tag)) + static_cast<char>(data.size()) + data;
}
inline const Bytes kHdmv = Descriptor(5, "HDMV");
inline const Bytes kTshv = Descriptor(5, "TSHV" + Bytes(7, '\0'));

/// A section of table 2 up to its descriptors. `infoBytes` below 0 for the right length of them.
inline Bytes MapSection(const Bytes& descriptors, int infoBytes = -1, int table = 2) {
  const auto length =
      static_cast<std::uint32_t>(infoBytes < 0 ? static_cast<int>(descriptors.size()) : infoBytes);
  return Big(static_cast<std::uint32_t>(table), 1) + Big(0xB000u + 13 + length, 2) +
         Bytes("\0\1\xC1\0\0\xE1\0", 7) + Big(0xF000 | length, 2) + descriptors;
}
/// After a pointer field of 0.
inline Bytes Map(const Bytes& descriptors) { return Packet('\0' + MapSection(descriptors)); }

/// `lead` comes before the first packet, and `arrival` before each.
inline Bytes Transport(const std::vector<Bytes>& packets, const Bytes& arrival = {}, const Bytes& lead = {}) {
  Bytes bytes = lead;
  for (const Bytes& packet : packets) bytes += arrival + packet;
  while (bytes.size() < 960) bytes += arrival + OtherPacket();
  return bytes;
}

inline Bytes Head(const Bytes& id, std::size_t size) {
  return id + Little(static_cast<std::uint32_t>(size), 4);
}
inline Bytes Chunk(const Bytes& id, const Bytes& body) {
  return Head(id, body.size()) + body + Bytes(body.size() % 2, '\0');
}
inline Bytes List(const Bytes& form, const Bytes& body) { return Chunk("LIST", form + body); }
inline Bytes Avi(const Bytes& chunks) { return Chunk("RIFF", "AVI " + chunks); }

inline const Bytes kAvih = Chunk("avih", Bytes(56, '\0'));
inline Bytes Stream(const Bytes& type, const Bytes& handler) {
  return List("strl", Chunk("strh", type + handler + Bytes(48, '\0')) + Chunk("strf", Bytes(40, '\0')));
}
inline Bytes AviOf(const Bytes& streams) {
  return Avi(List("hdrl", kAvih + streams) + List("movi", Chunk("00dc", "frame")));
}

}  // namespace streamfiles
