// Which coded pictures a stretch of a source holds, in the order in which a decoder takes them: when each is
// shown, and where decoding can begin. The plan of what is copied is made of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/ParameterSets.h"
#include "engine/SourcePackets.h"

namespace vrx::engine {

struct CodedPicture {
  std::int64_t ticks;  // of display, on the source's clock
  bool isStart;        // decoding can begin here, but for pictures that are shown before it
  bool isWhole;        // not damaged, and shown as the container says
};

struct PacketIndex {
  std::vector<CodedPicture> pictures;
  bool isFromBeginning = false;  // the source has none before the first
  std::int64_t bytes = 0;        // of the pictures, together
  ParameterSets sets;            // of H.264 and HEVC
  NalLength nalLength = kStartCodes;
};

/// Reads the pictures that are shown from `first` to `last`, in ticks of the source, and some around them.
/// Says, as the end of a sentence that begins with the source, why nothing of it can be copied; empty when
/// something can.
std::string ReadPacketIndex(SourcePackets& source, std::int64_t first, std::int64_t last, PacketIndex& index);

}  // namespace vrx::engine
