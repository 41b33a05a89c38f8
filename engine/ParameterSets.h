// The parameter sets of an H.264 or HEVC stream, without which its pictures cannot be decoded: those beside
// it in the file's header, and those inside. Used where pictures of several streams come into one.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/NalUnits.h"

namespace vrx::engine {

class ParameterSets {
 public:
  ParameterSets() = default;
  explicit ParameterSets(AVCodecID codec) : m_codec(codec) {}

  /// Reads those of a stream's header, which has start codes or is a configuration record of
  /// ISO/IEC 14496-15, and how its packets separate units. False for a header that makes no sense.
  bool ReadHeader(const AVCodecParameters& stream, NalLength& length);
  /// Takes over what of `units` is a parameter set. False when one contradicts a known one.
  bool Add(const std::vector<Bytes>& units);
  /// False, and nothing is taken over, when one of `other` contradicts a known one.
  bool Merge(const ParameterSets& other);

  bool IsEmpty() const { return m_sets.empty(); }
  /// The smallest number that no H.264 set of `all` has; -1 when all are used.
  static int FindFreeId(std::span<const ParameterSets> all);
  /// The largest level of the H.264 sequence sets as `level_idc`; 0 without one.
  int GetLevel() const;
  /// Larger for H.264 that needs a better decoder: by profile, then by level.
  int GetDemand() const;

  /// All sets, one after the other.
  std::vector<std::uint8_t> Join(NalLength length) const;
  /// The header of an MP4 file for them (AVCDecoderConfigurationRecord for H.264; for HEVC start codes, of
  /// which the muxer makes one). It names `level` where that is above those of the sets. Empty when a file
  /// cannot hold so many.
  std::vector<std::uint8_t> MakeHeader(int level) const;

 private:
  struct Set {
    int type;
    int id;
    std::vector<std::uint8_t> bytes;
    bool operator==(const Set&) const = default;
  };

  bool ReadAvcRecord(Bytes record, NalLength& length);
  bool ReadHevcRecord(Bytes record, NalLength& length);
  bool AddSet(Bytes unit);
  bool IsSequenceSet(const Set& set) const;
  std::vector<std::uint8_t> MakeAvcRecord(int level) const;
  const Set* Find(int type, int id) const;
  bool UsesId(int id) const;
  const Set* FindMain() const;

  AVCodecID m_codec = AV_CODEC_ID_H264;
  std::vector<Set> m_sets;  // video, sequence and picture sets in this order
};

}  // namespace vrx::engine
