// Finds the packets of an MPEG transport stream (ISO/IEC 13818-1), and what its program map calls the stream.
// The deep check uses it, and whoever asks what a file is.
#pragma once

#include <cstdint>
#include <optional>

#include "content/formats/FormatCodes.h"
#include "foundation/file/XpAbstractFile.h"
#include "imaging/tags/StreamWindow.h"

namespace vrx::formats {

/// The first sync byte that others follow at the distance of a packet.
struct PacketSync {
  std::int64_t position = 0;  // bytes from the start of the file
  std::int64_t stride = 0;    // 188, or 192 where four bytes with the time of arrival come before each packet
};

/// Nothing in a file of less than 960 bytes.
std::optional<PacketSync> FindPacketSync(imaging::StreamWindow& window);

/// kTransportTshv, kTransportHdmv, or kUnknown. Looks at no packet that begins past 400 KB, and at no more
/// than five program maps.
FormatCode CheckTransport(XpAbstractFile& file);

}  // namespace vrx::formats
