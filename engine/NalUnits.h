// The units of an H.264 or HEVC stream (ITU-T H.264 7.3.1, H.265 7.3.1), as they follow each other with start
// codes (Annex B) or with lengths before them (ISO/IEC 14496-15). Used where coded pictures are copied.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/AvPointers.h"

namespace vrx::engine {

using Bytes = std::span<const std::uint8_t>;

/// Bytes of the length before each unit, 1 to 4; 0 stands for start codes.
using NalLength = int;

/// Where units begin with a start code (Annex B).
inline constexpr NalLength kStartCodes = 0;
/// The length that the movie's files have.
inline constexpr NalLength kLongLength = 4;

/// Types of units that matter here.
namespace h264 {
inline constexpr int kIdrSlice = 5;
inline constexpr int kSequenceSet = 7;
inline constexpr int kPictureSet = 8;
}  // namespace h264
namespace hevc {
inline constexpr int kIdrWithLeading = 19;
inline constexpr int kIdr = 20;
inline constexpr int kVideoSet = 32;
inline constexpr int kSequenceSet = 33;
inline constexpr int kPictureSet = 34;
}  // namespace hevc

/// Type of a unit, which is not empty.
int TypeOfNal(Bytes unit, AVCodecID codec);

/// Whether units of this type say how pictures are coded.
bool IsParameterSet(int type, AVCodecID codec);

bool HasStartCode(Bytes data);

/// The units of `data`, without start codes or lengths, in place. False when the lengths do not fit; what
/// came before is in `units` then.
bool SplitNalUnits(Bytes data, NalLength length, std::vector<Bytes>& units);

/// Adds `unit` with its start code, or its length in `length` bytes. A unit fits into 32 bits.
void AppendNalUnit(Bytes unit, NalLength length, std::vector<std::uint8_t>& out);

}  // namespace vrx::engine
