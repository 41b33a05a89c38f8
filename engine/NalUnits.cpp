#include "engine/NalUnits.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vrx::engine {
namespace {

constexpr std::size_t kStartCodeBytes = 3;

/// The next three bytes 0, 0, 1 in `data` from `at` on; its size when there are none.
std::size_t FindStartCode(Bytes data, std::size_t at) {
  constexpr std::array<std::uint8_t, kStartCodeBytes> kCode{0, 0, 1};
  const auto from = data.begin() + static_cast<std::ptrdiff_t>(at);
  return static_cast<std::size_t>(std::search(from, data.end(), kCode.begin(), kCode.end()) - data.begin());
}

void SplitAtStartCodes(Bytes data, std::vector<Bytes>& units) {
  std::size_t code = FindStartCode(data, 0);
  while (code < data.size()) {
    const std::size_t begin = code + kStartCodeBytes;
    code = FindStartCode(data, begin);
    std::size_t end = code;
    // A unit does not end with a zero byte, so these belong to the next start code or are padding.
    while (end > begin && data[end - 1] == 0) --end;
    if (end > begin) units.push_back(data.subspan(begin, end - begin));
  }
}

}  // namespace

int TypeOfNal(Bytes unit, AVCodecID codec) {
  return codec == AV_CODEC_ID_HEVC ? (unit[0] >> 1) & 0x3F : unit[0] & 0x1F;
}

bool IsParameterSet(int type, AVCodecID codec) {
  return codec == AV_CODEC_ID_HEVC ? type >= hevc::kVideoSet && type <= hevc::kPictureSet
                                   : type == h264::kSequenceSet || type == h264::kPictureSet;
}

bool HasStartCode(Bytes data) { return FindStartCode(data, 0) < data.size(); }

bool SplitNalUnits(Bytes data, NalLength length, std::vector<Bytes>& units) {
  if (length == kStartCodes) {
    SplitAtStartCodes(data, units);
    return true;
  }
  const auto header = static_cast<std::size_t>(length);
  while (data.size() >= header) {
    std::size_t size = 0;
    for (const std::uint8_t byte : data.first(header)) size = size << 8 | byte;
    data = data.subspan(header);
    if (size > data.size()) return false;
    if (size > 0) units.push_back(data.first(size));
    data = data.subspan(size);
  }
  return data.empty();
}

void AppendNalUnit(Bytes unit, NalLength length, std::vector<std::uint8_t>& out) {
  if (length == kStartCodes) {
    constexpr std::array<std::uint8_t, 4> kCode{0, 0, 0, 1};
    out.insert(out.end(), kCode.begin(), kCode.end());
  }
  for (int shift = (length - 1) * 8; shift >= 0; shift -= 8)
    out.push_back(static_cast<std::uint8_t>(unit.size() >> shift));
  out.insert(out.end(), unit.begin(), unit.end());
}

}  // namespace vrx::engine
