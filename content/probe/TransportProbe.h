// Finds the packets of an MPEG transport stream (ISO/IEC 13818-1), and what its program map calls the stream.
// The deep check and the kinds by content use it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "content/formats/FormatCodes.h"
#include "foundation/file/XpAbstractFile.h"

namespace vrx::formats {

/// The first sync byte that others follow at the distance of a packet.
struct PacketSync {
  std::int64_t position = 0;  // bytes from the start of the file
  std::int64_t stride = 0;    // 188, or 192 where four bytes with the time of arrival come before each packet
};

/// What is looked at for the first packets.
inline constexpr std::size_t kSyncSearchBytes = 960;
/// In the first bytes of a file. Nothing when they are fewer.
std::optional<PacketSync> FindPacketSync(std::span<const std::uint8_t> start);

/// kTransportTshv, kTransportHdmv, or kUnknown. Looks at no packet that begins past 400 KB, and at no more
/// than five program maps.
FormatCode CheckTransport(XpAbstractFile& file);

}  // namespace vrx::formats
