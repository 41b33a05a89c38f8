#include "engine/ParameterSets.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace vrx::engine {
namespace {

constexpr int kSequenceIds = 32;             // of H.264
constexpr std::size_t kLargestSet = 0xFFFF;  // bytes, since the record has 16 bits for it

constexpr std::size_t kProfilePlace = 1;  // bytes of a sequence set of H.264
constexpr std::size_t kLevelPlace = 3;

int LevelOf(Bytes sequenceSet) { return sequenceSet[kLevelPlace]; }

int DemandOf(Bytes sequenceSet) { return sequenceSet[kProfilePlace] << 8 | sequenceSet[kLevelPlace]; }

/// Reads bits of a unit, most significant first, without the bytes 3 that keep start codes out. Past the end
/// there are ones, so that codes of variable length end.
class BitReader {
 public:
  explicit BitReader(Bytes unit) {
    int zeros = 0;
    for (const std::uint8_t byte : unit.first(std::min(unit.size(), kMostBytes))) {
      const bool isExtra = zeros >= 2 && byte == 3;
      zeros = byte == 0 ? zeros + 1 : 0;
      if (!isExtra) m_bytes.push_back(byte);
    }
  }

  unsigned Read(int bits) {
    unsigned value = 0;
    for (; bits > 0; --bits, ++m_place) {
      const std::size_t byte = m_place / 8;
      value = value << 1 | (byte < m_bytes.size() ? m_bytes[byte] >> (7 - m_place % 8) & 1U : 1U);
    }
    return value;
  }
  void Skip(std::size_t bits) { m_place += bits; }
  /// An Exp-Golomb code; those of more than 16 zeros count as 16.
  unsigned ReadGolomb() {
    int zeros = 0;
    while (zeros < 16 && Read(1) == 0) ++zeros;
    return (1U << zeros) - 1 + Read(zeros);
  }

 private:
  static constexpr std::size_t kMostBytes = 256;  // numbers of sets lie far before
  std::vector<std::uint8_t> m_bytes;
  std::size_t m_place = 0;
};

/// Whether the end of a unit can be found where start codes separate units: none has a start code inside or a
/// zero byte at its end.
bool IsSound(Bytes unit) { return !unit.empty() && unit.back() != 0 && !HasStartCode(unit); }

int IdOfAvcSet(int type, Bytes unit) {
  constexpr std::size_t kProfileAndLevel = 24;  // bits
  BitReader bits(unit);
  bits.Skip(8);
  if (type == h264::kSequenceSet) bits.Skip(kProfileAndLevel);
  return static_cast<int>(bits.ReadGolomb());
}

/// profile_tier_level of H.265 7.3.3.
void SkipProfiles(unsigned subLayers, BitReader& bits) {
  constexpr std::size_t kProfile = 88;  // bits
  constexpr std::size_t kLevel = 8;
  constexpr unsigned kMostSubLayers = 8;
  bits.Skip(kProfile + kLevel);
  std::size_t parts = 0;
  for (unsigned i = 0; subLayers > 0 && i < kMostSubLayers; ++i) {
    const bool hasProfile = bits.Read(1) == 1 && i < subLayers;
    const bool hasLevel = bits.Read(1) == 1 && i < subLayers;
    parts += (hasProfile ? kProfile : 0) + (hasLevel ? kLevel : 0);
  }
  bits.Skip(parts);
}

int IdOfHevcSet(int type, Bytes unit) {
  BitReader bits(unit);
  bits.Skip(16);
  if (type == hevc::kVideoSet) return static_cast<int>(bits.Read(4));
  if (type == hevc::kSequenceSet) {
    bits.Skip(4);
    const unsigned subLayers = bits.Read(3);
    bits.Skip(1);
    SkipProfiles(subLayers, bits);
  }
  return static_cast<int>(bits.ReadGolomb());
}

/// A number of `size` bytes at the front of `record`, which it takes off; none when it is shorter.
std::optional<std::size_t> Take(Bytes& record, std::size_t size) {
  if (record.size() < size) return std::nullopt;
  std::size_t value = 0;
  for (const std::uint8_t byte : record.first(size)) value = value << 8 | byte;
  record = record.subspan(size);
  return value;
}

/// A unit with a length of 16 bits before it; empty at the end of `record`.
Bytes TakeUnit(Bytes& record) {
  const std::size_t size = Take(record, 2).value_or(0);
  const Bytes unit = record.first(std::min(size, record.size()));
  record = record.subspan(unit.size());
  return unit.size() == size ? unit : Bytes{};
}

}  // namespace

bool ParameterSets::ReadHeader(const AVCodecParameters& stream, NalLength& length) {
  m_codec = stream.codec_id;
  length = kStartCodes;
  const Bytes header(stream.extradata, static_cast<std::size_t>(std::max(stream.extradata_size, 0)));
  if (header.empty()) return true;
  constexpr std::uint8_t kRecordVersion = 1;
  if (header[0] == kRecordVersion)
    return m_codec == AV_CODEC_ID_HEVC ? ReadHevcRecord(header, length) : ReadAvcRecord(header, length);
  std::vector<Bytes> units;
  return SplitNalUnits(header, kStartCodes, units) && Add(units);
}

/// AVCDecoderConfigurationRecord, ISO/IEC 14496-15 5.3.3.1.
bool ParameterSets::ReadAvcRecord(Bytes record, NalLength& length) {
  if (!Take(record, 4)) return false;
  const auto lengths = Take(record, 1);
  if (!lengths) return false;
  length = static_cast<NalLength>((*lengths & 3U) + 1);
  for (const std::size_t mask : {std::size_t{0x1F}, std::size_t{0xFF}}) {
    const auto count = Take(record, 1);
    if (!count) return false;
    for (std::size_t i = 0; i < (*count & mask); ++i) {
      if (!AddSet(TakeUnit(record))) return false;
    }
  }
  return true;
}

/// HEVCDecoderConfigurationRecord, ISO/IEC 14496-15 8.3.3.1.
bool ParameterSets::ReadHevcRecord(Bytes record, NalLength& length) {
  constexpr std::size_t kBeforeLengths = 21;  // bytes
  if (record.size() < kBeforeLengths) return false;
  record = record.subspan(kBeforeLengths);
  const auto lengths = Take(record, 1);
  const auto arrays = Take(record, 1);
  if (!arrays) return false;
  length = static_cast<NalLength>((*lengths & 3U) + 1);
  for (std::size_t array = 0; array < *arrays; ++array) {
    const auto type = Take(record, 1);
    const auto count = Take(record, 2);
    if (!type || !count) return false;
    for (std::size_t i = 0; i < *count; ++i) {
      const Bytes unit = TakeUnit(record);
      if (unit.empty()) return false;
      if (IsParameterSet(TypeOfNal(unit, m_codec), m_codec) && !AddSet(unit)) return false;
    }
  }
  return true;
}

bool ParameterSets::Add(const std::vector<Bytes>& units) {
  return std::all_of(units.begin(), units.end(), [this](Bytes unit) {
    return !IsParameterSet(TypeOfNal(unit, m_codec), m_codec) || AddSet(unit);
  });
}

bool ParameterSets::AddSet(Bytes unit) {
  if (!IsSound(unit) || unit.size() > kLargestSet) return false;
  const int type = TypeOfNal(unit, m_codec);
  if (!IsParameterSet(type, m_codec)) return false;
  const int id = m_codec == AV_CODEC_ID_HEVC ? IdOfHevcSet(type, unit) : IdOfAvcSet(type, unit);
  if (const Set* known = Find(type, id)) return std::ranges::equal(known->bytes, unit);
  const auto place =
      std::find_if(m_sets.begin(), m_sets.end(), [&](const Set& set) { return set.type > type; });
  m_sets.insert(place, {type, id, {unit.begin(), unit.end()}});
  return true;
}

const ParameterSets::Set* ParameterSets::Find(int type, int id) const {
  const auto found = std::find_if(m_sets.begin(), m_sets.end(),
                                  [&](const Set& set) { return set.type == type && set.id == id; });
  return found == m_sets.end() ? nullptr : &*found;
}

bool ParameterSets::Merge(const ParameterSets& other) {
  ParameterSets merged = *this;
  if (IsEmpty()) merged.m_codec = other.m_codec;
  for (const Set& set : other.m_sets) {
    if (!merged.AddSet(set.bytes)) return false;
  }
  *this = std::move(merged);
  return true;
}

int ParameterSets::FindFreeId(std::span<const ParameterSets> all) {
  for (int id = 0; id < kSequenceIds; ++id) {
    if (std::ranges::none_of(all, [id](const ParameterSets& sets) { return sets.UsesId(id); })) return id;
  }
  return -1;
}

/// As a sequence or picture set of H.264.
bool ParameterSets::UsesId(int id) const {
  return Find(h264::kSequenceSet, id) != nullptr || Find(h264::kPictureSet, id) != nullptr;
}

/// Of H.264, and long enough to say its profile and level.
bool ParameterSets::IsSequenceSet(const Set& set) const {
  return m_codec == AV_CODEC_ID_H264 && set.type == h264::kSequenceSet && set.bytes.size() > kLevelPlace;
}

int ParameterSets::GetLevel() const {
  int level = 0;
  for (const Set& set : m_sets) {
    if (IsSequenceSet(set)) level = std::max(level, LevelOf(set.bytes));
  }
  return level;
}

/// The most demanding sequence set of H.264; null without one.
const ParameterSets::Set* ParameterSets::FindMain() const {
  const Set* main = nullptr;
  for (const Set& set : m_sets) {
    if (IsSequenceSet(set) && (main == nullptr || DemandOf(set.bytes) > DemandOf(main->bytes))) main = &set;
  }
  return main;
}

int ParameterSets::GetDemand() const {
  const Set* main = FindMain();
  return main == nullptr ? 0 : DemandOf(main->bytes);
}

std::vector<std::uint8_t> ParameterSets::Join(NalLength length) const {
  std::vector<std::uint8_t> joined;
  for (const Set& set : m_sets) AppendNalUnit(set.bytes, length, joined);
  return joined;
}

std::vector<std::uint8_t> ParameterSets::MakeHeader(int level) const {
  return m_codec == AV_CODEC_ID_HEVC ? Join(kStartCodes) : MakeAvcRecord(level);
}

/// AVCDecoderConfigurationRecord, ISO/IEC 14496-15 5.3.3.1.
std::vector<std::uint8_t> ParameterSets::MakeAvcRecord(int level) const {
  const Set* main = FindMain();
  if (main == nullptr) return {};
  const auto profile = main->bytes[kProfilePlace];
  std::vector<std::uint8_t> record{1, profile, main->bytes[kProfilePlace + 1],
                                   static_cast<std::uint8_t>(std::max(GetLevel(), level)),
                                   0xFC | (kLongLength - 1)};
  struct Part {
    int type;
    std::ptrdiff_t most;
    int mark;  // bits before the count
  };
  for (const Part& part : {Part{h264::kSequenceSet, 31, 0xE0}, Part{h264::kPictureSet, 255, 0}}) {
    const auto count = std::ranges::count(m_sets, part.type, &Set::type);
    if (count > part.most) return {};
    record.push_back(static_cast<std::uint8_t>(part.mark | count));
    for (const Set& set : m_sets) {
      if (set.type != part.type) continue;
      record.push_back(static_cast<std::uint8_t>(set.bytes.size() >> 8));
      record.push_back(static_cast<std::uint8_t>(set.bytes.size()));
      record.insert(record.end(), set.bytes.begin(), set.bytes.end());
    }
  }
  constexpr std::uint8_t kHighProfile = 100;
  // Pictures that are copied have eight bits and 4:2:0.
  if (profile >= kHighProfile) record.insert(record.end(), {0xFC | 1, 0xF8, 0xF8, 0});
  return record;
}

}  // namespace vrx::engine
