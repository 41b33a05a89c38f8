// Reads any bytes as the header and as a packet of an H.264 or HEVC stream; what was read must be written as
// a header that reads back the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "engine/ParameterSets.h"

namespace {

using namespace vrx::engine;

bool Read(AVCodecID codec, std::vector<std::uint8_t>& header, ParameterSets& sets, NalLength& length) {
  AVCodecParameters stream{};
  stream.codec_id = codec;
  stream.extradata = header.data();
  stream.extradata_size = static_cast<int>(header.size());
  const bool fits = sets.ReadHeader(stream, length);
  if (length < kStartCodes || length > kLongLength) std::abort();
  return fits;
}

void Check(AVCodecID codec, const ParameterSets& sets) {
  std::vector<std::uint8_t> header = sets.MakeHeader(0);
  if (header.empty()) return;
  ParameterSets again;
  NalLength length = kStartCodes;
  if (!Read(codec, header, again, length) || again.Join(kLongLength) != sets.Join(kLongLength)) std::abort();
  ParameterSets merged = sets;
  if (!merged.Merge(again) || merged.Join(kLongLength) != sets.Join(kLongLength)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const AVCodecID codec = (data[0] & 1) != 0 ? AV_CODEC_ID_HEVC : AV_CODEC_ID_H264;
  const std::size_t split = data[0] >> 1 < size ? data[0] >> 1 : size;  // where the packet begins
  std::vector<std::uint8_t> header(data + (split == 0 ? 0 : 1), data + split);
  ParameterSets sets;
  NalLength length = kStartCodes;
  if (Read(codec, header, sets, length)) Check(codec, sets);
  std::vector<Bytes> units;
  const bool fits = SplitNalUnits({data + split, size - split}, length, units);
  for (const Bytes unit : units) {
    if (unit.empty() || unit.data() < data || unit.data() + unit.size() > data + size) std::abort();
  }
  if (fits && sets.Add(units)) Check(codec, sets);
  return 0;
}
