// Parameter sets as headers and packets hold them, and the units of H.264 and HEVC around them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>

#include "engine/JoinedStream.h"
#include "engine/ParameterSets.h"
#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

using testing::ElementsAre;
using Data = std::vector<std::uint8_t>;

// Sequence sets of H.264: type, profile, constraints, level, and the number as an Exp-Golomb code.
const Data kSps0{0x67, 77, 0, 30, 0x80};  // number 0, main profile, level 3
const Data kOtherSps0{0x67, 77, 0, 31, 0x80};
const Data kSps2{0x67, 100, 0, 31, 0x60};  // number 2, high profile, level 3.1
const Data kPps0{0x68, 0x80};
const Data kPps1{0x68, 0x40};  // number 1
// Of HEVC: a video set 0, a sequence set 1 with one sub-layer that names its profile and level, a picture set
// 0.
const Data kVps{0x40, 1, 0x0C};
Data HevcSps(std::uint8_t number) {
  Data set{0x42, 1, 0x02};                          // video set 0, two sub-layers, which the low bit counts
  set.insert(set.end(), 12, 0x55);                  // profile and level
  set.insert(set.end(), {0xC0, 0x00, 0x00, 0x03});  // one sub-layer with both; the 3 keeps a start code out
  set.insert(set.end(), 10, 0x55);
  set.push_back(0x55);
  set.push_back(number);
  return set;
}

Data AnnexB(std::initializer_list<Data> units) {
  Data joined;
  for (const Data& unit : units) AppendNalUnit(unit, kStartCodes, joined);
  return joined;
}

struct Stream {
  AVCodecParameters parameters{};
  Data header;
  Stream(AVCodecID codec, Data bytes) : header(std::move(bytes)) {
    parameters.codec_id = codec;
    parameters.extradata = header.data();
    parameters.extradata_size = static_cast<int>(header.size());
  }
};

ParameterSets H264(std::initializer_list<Data> units) {
  ParameterSets sets;
  NalLength length = kLongLength;
  EXPECT_TRUE(sets.ReadHeader(Stream(AV_CODEC_ID_H264, AnnexB(units)).parameters, length));
  EXPECT_EQ(length, kStartCodes);
  return sets;
}

TEST(NalUnitsTest, UnitsAreFoundInBothForms) {
  const auto split = [](const Data& data, NalLength length, bool fits = true) {
    std::vector<Bytes> units;
    EXPECT_EQ(SplitNalUnits(data, length, units), fits);
    std::vector<Data> found;
    for (const Bytes unit : units) found.emplace_back(unit.begin(), unit.end());
    return found;
  };
  EXPECT_THAT(split({0, 0, 1, 9, 0, 0, 0, 1, 5, 0, 0, 2, 0, 0, 0, 0, 0, 1, 6}, kStartCodes),
              ElementsAre(Data{9}, Data{5, 0, 0, 2}, Data{6}));
  EXPECT_THAT(split({7, 7, 0, 0, 1}, kStartCodes), ElementsAre());
  EXPECT_THAT(split({0, 2, 5, 6, 0, 0, 0, 1, 7}, 2), ElementsAre(Data{5, 6}, Data{7}));
  EXPECT_THAT(split({0, 2, 5, 6, 0, 3, 7, 8}, 2, false), ElementsAre(Data{5, 6}));
  EXPECT_THAT(split({0, 0, 0, 1, 7, 0}, kLongLength, false), ElementsAre(Data{7}));
  EXPECT_THAT(split({255, 255, 255, 255, 7}, kLongLength, false), ElementsAre());
  Data joined;
  AppendNalUnit(Data{7, 8}, kLongLength, joined);
  AppendNalUnit(Data{9}, 1, joined);
  AppendNalUnit(Data{6}, kStartCodes, joined);
  EXPECT_EQ(joined, (Data{0, 0, 0, 2, 7, 8, 1, 9, 0, 0, 0, 1, 6}));
}

TEST(ParameterSetsTest, SetsOfOneNumberMustBeTheSame) {
  ParameterSets sets = H264({kPps0, kSps0, kPps1});
  EXPECT_EQ(sets.Join(kStartCodes), AnnexB({kSps0, kPps0, kPps1})) << "sequence sets come first";
  EXPECT_TRUE(sets.Merge(H264({kSps2, kPps0})));
  EXPECT_EQ(ParameterSets::FindFreeId({&sets, 1}), 3)
      << "0 to 2 are numbers of sets of one kind or the other";
  EXPECT_FALSE(sets.Merge(H264({kPps1, kOtherSps0})));
  EXPECT_EQ(sets.Join(1),
            (Data{5, 0x67, 77, 0, 30, 0x80, 5, 0x67, 100, 0, 31, 0x60, 2, 0x68, 0x80, 2, 0x68, 0x40}));
  EXPECT_TRUE(sets.Add({Data{0x65, 1}, kSps0})) << "what is no set does not count";
  EXPECT_FALSE(sets.Add({kOtherSps0}));
  EXPECT_FALSE(sets.Add({Data{0x68, 0x20, 0}})) << "ends as none does";
  EXPECT_FALSE(sets.Add({Data{0x68, 0x20, 0, 0, 1, 7}})) << "a start code inside";
  EXPECT_FALSE(sets.Add({Data(0x10000, 0x68)})) << "its size has 16 bits in a header";
  ParameterSets all;
  for (unsigned id = 0; id < 32; ++id) {
    const int zeros = static_cast<int>(std::bit_width(id + 1)) - 1;  // before the code
    const unsigned bits = (id + 1) << (15 - 2 * zeros) | 1U;
    ASSERT_TRUE(all.Add(
        {Data{0x67, 77, 0, 30, static_cast<std::uint8_t>(bits >> 8), static_cast<std::uint8_t>(bits)}}));
    EXPECT_EQ(ParameterSets::FindFreeId({&all, 1}), id == 31 ? -1 : static_cast<int>(id) + 1);
    EXPECT_EQ(all.MakeHeader(0).empty(), id == 31) << "a header counts to 31";
  }
}

TEST(ParameterSetsTest, HeaderOfAnMp4FileIsWrittenAndReadBack) {
  const ParameterSets sets = H264({kSps0, kSps2, kPps0});
  const Data header = sets.MakeHeader(0);
  const Data expected{1,    100, 0, 31, 0xFF, 0xE2, 0, 5, 0x67, 77,   0,    30,   0x80, 0, 5,
                      0x67, 100, 0, 31, 0x60, 1,    0, 2, 0x68, 0x80, 0xFD, 0xF8, 0xF8, 0};
  EXPECT_EQ(header, expected);
  EXPECT_EQ(sets.MakeHeader(40)[3], 40);
  EXPECT_EQ(sets.GetLevel(), 31);
  EXPECT_GT(sets.GetDemand(), H264({kOtherSps0}).GetDemand());
  EXPECT_EQ(H264({kSps2, Data{0x67, 77, 0, 40, 0x80}}).MakeHeader(0)[3], 40) << "not the main set's";
  EXPECT_TRUE(H264({kPps0}).MakeHeader(0).empty()) << "no sequence set";
  EXPECT_TRUE(H264({Data{0x67, 77}}).MakeHeader(0).empty()) << "ends before its level";
  ParameterSets read;
  NalLength length = 0;
  ASSERT_TRUE(read.ReadHeader(Stream(AV_CODEC_ID_H264, header).parameters, length));
  EXPECT_EQ(length, 4);
  EXPECT_EQ(read.MakeHeader(0), header);
  // The four bytes after the sets are not read.
  for (std::size_t size = 1; size < header.size() - 4; ++size) {
    const Data part(header.begin(), header.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(ParameterSets().ReadHeader(Stream(AV_CODEC_ID_H264, part).parameters, length)) << size;
  }
}

TEST(ParameterSetsTest, HevcSetsAreToldApartByTheirNumbers) {
  Data record(21, 0);
  record[0] = 1;
  record.insert(record.end(), {0xFF, 2});
  for (const Data& set : {kVps, HevcSps(0x40)}) {
    record.insert(record.end(),
                  {static_cast<std::uint8_t>(set[0] >> 1), 0, 1, 0, static_cast<std::uint8_t>(set.size())});
    record.insert(record.end(), set.begin(), set.end());
  }
  ParameterSets sets;
  NalLength length = 0;
  ASSERT_TRUE(sets.ReadHeader(Stream(AV_CODEC_ID_HEVC, record).parameters, length));
  EXPECT_EQ(length, 4);
  EXPECT_EQ(sets.Join(kStartCodes), AnnexB({kVps, HevcSps(0x40)}));
  EXPECT_EQ(sets.MakeHeader(0), sets.Join(kStartCodes)) << "the muxer makes the record";
  EXPECT_TRUE(sets.Add({HevcSps(0x60)})) << "number 2";
  EXPECT_FALSE(sets.Add({HevcSps(0x48)})) << "number 1 again, and other bits after it";
  for (std::size_t size = 1; size < record.size(); ++size) {
    const Data part(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(ParameterSets().ReadHeader(Stream(AV_CODEC_ID_HEVC, part).parameters, length)) << size;
  }
}

TEST(JoinedStreamTest, EncodedSpansAndHeaderGoWithWhatIsCopied) {
  const auto source = [](const Data& set) {
    std::shared_ptr<AVCodecParameters> parameters = CopyParameters(Stream(AV_CODEC_ID_H264, {}).parameters);
    parameters->bit_rate = 7;
    return CopiedSource{"", {1, 25}, H264({set, kPps0}), kStartCodes, parameters};
  };
  SmartPlan plan;
  plan.sources = {source(kSps0), source(kSps2), source(kOtherSps0)};
  VideoPlan video{.codec = VideoCodec::H264, .width = 64, .height = 48};
  for (const std::int64_t bitrate : {0, 20'000'000}) {
    video.bitrate = bitrate;
    JoinedStream stream;
    const int level = JoinedStream::FitEncoder(plan, video);
    stream.Prepare(Container::Mp4, plan, video, level);
    // Of level 3.1, which two of them have.
    EXPECT_EQ(video.peakBitrate, std::max<std::int64_t>(bitrate, 14'000'000));
    EXPECT_EQ(video.bufferBits, 7'000'000);
    ASSERT_EQ(stream.Arrange(nullptr), kOk);
    const AVCodecParameters& made = stream.GetParameters();
    EXPECT_EQ(made.color_space, OutputColour(48).matrix) << "no source says it";
    EXPECT_EQ(made.bit_rate, 0) << "it is one source's";
    EXPECT_EQ(Data(made.extradata, made.extradata + made.extradata_size), plan.sources[1].sets.MakeHeader(0));
  }
}

}  // namespace
}  // namespace vrx::engine
