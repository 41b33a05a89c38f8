// Whether a source's pictures are what the movie's would be after encoding, but for the loss. Used by the
// smart plan.
#pragma once

#include <string>

#include "engine/OutputPlan.h"
#include "engine/PacketIndex.h"
#include "engine/SourceFile.h"

namespace vrx::engine {

/// libav's name of the movie's codec.
AVCodecID CodecIdOf(VideoCodec codec);

/// Whether pictures can be copied into movies with these values of VRXVideoOutputSetting.
bool CanCopyInto(std::uint32_t codecType, std::uint32_t specificationType);

/// Why no picture of `source` can be copied into the movie, as the end of a sentence that begins with the
/// source; empty when some can.
std::string WhyNotCopied(const SourceFile& source, const VideoPlan& movie);

/// The same, by what its pictures take: who gives a bitrate wants no more.
std::string WhyTooLarge(const PacketIndex& index, AVRational timeBase, const VideoPlan& movie);

}  // namespace vrx::engine
