// Reads the RMC sentences of a log of NMEA 0183, as any receiver writes them.
#pragma once

#include <span>

#include "gps/receiver/ReceiverLog.h"
#include "vrx/XpResult.h"

namespace vrx::receiver {

/// Replaces `log` by what `bytes` hold. Any talker is read, with or without checksum, and fields beyond the
/// date are ignored; sentences end at CR, LF or the next "$", and bytes between them are skipped. Sentences
/// of other types are counted in `passedOver`. XpErrInvalidFile when there is no sentence at all.
XpResult ReadNmea(std::span<const char> bytes, const ReadOptions& options, ReceiverLog& log);

/// True when the bytes hold a sentence of a type that receivers of positions send.
bool HoldsNmea(std::span<const char> bytes);

}  // namespace vrx::receiver
