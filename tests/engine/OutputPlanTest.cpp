// Output settings that no movie can have are refused before anything is opened, with a line that names them.
#include "engine/OutputPlan.h"

#include <gtest/gtest.h>

#include <functional>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

class OutputPlanTest : public testing::Test {
 protected:
  OutputPlanTest() {
    SetLogCallback([](void* log, const VRXLogEntry& entry) { *static_cast<std::string*>(log) += entry.text; },
                   &m_log);
  }
  ~OutputPlanTest() override { SetLogCallback(nullptr, nullptr); }

  using Change = std::function<void(VRXSystemOutputSetting&)>;

  /// The answer to a full HD movie with stereo sound and a time zone after `change`.
  Result PlanAfter(const Change& change, const RenderOverrides& overrides = {}) {
    VRXSystemOutputSetting setting;
    setting.systemType = VRXSystemByExtension;
    setting.outputFilePath = new VRXPathHolder(u"/movie.mp4");
    setting.video = new VRXVideoOutputSetting;
    setting.video->width = 1920;
    setting.video->height = 1080;
    setting.video->frameDuration = VRXTimeInfo(1, 25);
    setting.audio = new VRXAudioOutputSetting;
    setting.audio->channels = 2;
    setting.audio->samplingRate = 48000;
    setting.metaData = new VRXMetaDataSetting;
    VRXMetaData zone;
    zone.kind = VRXMetaData::kTimeZone;
    zone.SetData(reinterpret_cast<const std::uint8_t*>("\x02"), 1);
    setting.metaData->Add(zone);
    change(setting);
    m_log.clear();
    const Result result = MakeOutputPlan(setting, overrides, m_plan);
    if (setting.metaData->items == nullptr) setting.metaData->count = 0;  // a record that can be destroyed
    return result;
  }

  OutputPlan m_plan;
  std::string m_log;
};

using Setting = VRXSystemOutputSetting;

TEST_F(OutputPlanTest, EveryUnusableSettingIsRefusedByItsName) {
  struct Case {
    const char* logged;
    Change change;
    Result expected = kUnusableSettings;
  };
  const auto side = [](std::int32_t VRXVideoOutputSetting::*which, std::int32_t pixels) {
    return [=](Setting& s) { s.video->*which = pixels; };
  };
  const auto frame = [](std::uint64_t value, std::uint64_t scale) {
    return [=](Setting& s) { s.video->frameDuration = VRXTimeInfo(value, scale); };
  };
  const auto pcm = [](std::uint16_t bits, std::u16string_view path) {
    return [=](Setting& s) {
      s.audio->codecType = 3;
      s.audio->bitsPerSample = bits;
      s.outputFilePath->Set(path);
    };
  };
  const auto zoneOf = [](Setting& s) -> VRXMetaData& { return *s.metaData->items[0]; };
  const auto removeVideo = [](Setting& s) {
    delete s.video;
    s.video = nullptr;
  };
  const auto removePath = [](Setting& s) {
    delete s.outputFilePath;
    s.outputFilePath = nullptr;
  };
  const auto removeZone = [](Setting& s) {
    delete s.metaData->items[0];
    s.metaData->items[0] = nullptr;
  };
  const auto removeZoneData = [&](Setting& s) {
    delete[] zoneOf(s).data;
    zoneOf(s).data = nullptr;
  };
  const auto removeItems = [](Setting& s) {
    delete s.metaData->items[0];
    delete[] s.metaData->items;
    s.metaData->items = nullptr;
  };
  const std::vector<std::uint8_t> manyBytes(4097);
  const Case cases[] = {
      {"", removeVideo, kInvalidArgument},
      {"", removePath, kInvalidArgument},
      {"output path", [](Setting& s) { s.outputFilePath->Set(u""); }, kOutputFailed},
      {"output path", [](Setting& s) { s.outputFilePath->Set(u"C:\\a.mp4"); }, kOutputFailed},
      {"video codecType is -1", [](Setting& s) { s.video->codecType = -1; }},
      {"video codecType is 2", [](Setting& s) { s.video->codecType = 2; }},
      {"avcEncoderMode is -1", [](Setting& s) { s.video->avcEncoderMode = -1; }},
      {"avcEncoderMode is 3", [](Setting& s) { s.video->avcEncoderMode = 3; }},
      {"width is 14", side(&VRXVideoOutputSetting::width, 14)},
      {"width is 8194", side(&VRXVideoOutputSetting::width, 8194)},
      {"height is 63", side(&VRXVideoOutputSetting::height, 63)},
      {"height is -1080", side(&VRXVideoOutputSetting::height, -1080)},
      {"frameDuration is 0/25", frame(0, 25)},
      {"frameDuration is 1/0", frame(1, 0)},
      {"frameDuration is 1/1001 seconds, outside", frame(1, 1001)},
      {"frameDuration is 1001/100 seconds, outside", frame(1001, 100)},
      {"which no movie file can hold", frame(3'000'000'001, 3'000'000'000)},
      {"which no movie file can hold", frame(UINT64_MAX, UINT64_MAX - 1)},
      {"systemType is 0", [](Setting& s) { s.systemType = 0; }},
      {"systemType is 4", [](Setting& s) { s.systemType = 4; }},
      {"audio codecType is 4", [](Setting& s) { s.audio->codecType = 4; }},
      {"channels is 3", [](Setting& s) { s.audio->channels = 3; }},
      {"samplingRate is 7999", [](Setting& s) { s.audio->samplingRate = 7999; }},
      {"samplingRate is 192001", [](Setting& s) { s.audio->samplingRate = 192001; }},
      {"bitsPerSample is 8", pcm(8, u"/movie.mov")},
      {"transport stream holds no PCM", pcm(16, u"/movie.m2ts")},
      {"time-zone item", [&](Setting& s) { zoneOf(s).SetData(manyBytes.data(), 4097); }},
      {"", removeZone, kInvalidArgument},
      {"", removeZoneData, kInvalidArgument},
      {"", removeItems, kInvalidArgument},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(PlanAfter(c.change), c.expected) << c.logged;
    EXPECT_NE(m_log.find(c.logged), std::string::npos) << c.logged << " is not in: " << m_log;
  }
}

TEST_F(OutputPlanTest, CodecThatDoesNotFitTheFileOrTheSettingsIsRefused) {
  const auto file = [](std::u16string_view path) { return [=](Setting& s) { s.outputFilePath->Set(path); }; };
  const auto pcm = [](Setting& s) { s.audio->codecType = 3, s.audio->bitsPerSample = 16; };
  const auto interlaced = [](Setting& s) { s.video->interlace = true; };
  const auto mpeg2 = [](Setting& s) { s.video->codecType = 1; };
  struct Case {
    std::optional<VideoCodec> codec;
    std::optional<double> quality;
    Change change;
    const char* logged;  // empty where it fits
  };
  for (const Case& c : {
           Case{VideoCodec::Av1,
                {},
                file(u"/a.mov"),
                "/a.mov cannot hold AV1, which needs a name that ends in .mp4"},
           {VideoCodec::Av1,
            {},
            file(u"/a.m2ts"),
            "/a.m2ts cannot hold AV1, which needs a name that ends in .mp4"},
           {VideoCodec::Av1, {}, pcm, "no file takes AV1 together with PCM"},
           {VideoCodec::Av1, {}, interlaced, "AV1 codes no interlaced"},
           {VideoCodec::Hevc, {}, interlaced, "HEVC codes no interlaced"},
           {{}, 20.0, mpeg2, "MPEG-2 has no constant rate factor"},
           {VideoCodec::Av1, 63.0, [](Setting&) {}, ""},
           {VideoCodec::Hevc, 20.0, pcm, ""},
           {VideoCodec::Hevc, {}, file(u"/a.mov"), ""},
           {VideoCodec::Hevc, {}, file(u"/a.mts"), ""},
           {VideoCodec::H264, 20.0, mpeg2, ""},
           {{}, {}, mpeg2, ""},
       }) {
    RenderOverrides overrides;
    overrides.codec = c.codec;
    overrides.quality = c.quality;
    EXPECT_EQ(PlanAfter(c.change, overrides), *c.logged == 0 ? kOk : kUnusableSettings) << c.logged << m_log;
    EXPECT_NE(m_log.find(c.logged), std::string::npos) << c.logged << " is not in: " << m_log;
    EXPECT_EQ(m_log.empty(), *c.logged == 0);
    // Overlays alone have a codec of their own.
    overrides.overlaysAlone = true;
    EXPECT_EQ(PlanAfter(c.change, overrides), kOk);
  }
  RenderOverrides piece;
  piece.piece = PieceLabel{.movie = "a", .number = 1, .count = 2};
  EXPECT_EQ(PlanAfter(file(u"/a.ts"), piece), kUnusableSettings);
}

TEST_F(OutputPlanTest, LimitsThemselvesAreUsable) {
  const Change changes[] = {
      [](Setting&) {},
      [](Setting& s) { s.video->width = 16, s.video->height = 8192; },
      [](Setting& s) { s.video->frameDuration = VRXTimeInfo(1, 1000); },
      [](Setting& s) { s.video->frameDuration = VRXTimeInfo(1000, 100); },
      [](Setting& s) { s.audio->samplingRate = 8000, s.audio->channels = 1; },
      [](Setting& s) { s.audio->samplingRate = 192000, s.audio->channels = 6; },
  };
  for (const Change& change : changes) EXPECT_EQ(PlanAfter(change), kOk) << m_log;
}

TEST_F(OutputPlanTest, PcmWithoutABitDepthHasSixteenBits) {
  for (const auto& [bits, codec] : {std::pair<std::uint16_t, AudioCodec>{0, AudioCodec::Pcm16},
                                    {0xFFFF, AudioCodec::Pcm16},
                                    {16, AudioCodec::Pcm16},
                                    {24, AudioCodec::Pcm24}}) {
    const auto change = [depth = bits](Setting& s) {
      s.audio->codecType = 3, s.audio->bitsPerSample = depth;
    };
    ASSERT_EQ(PlanAfter(change), kOk) << m_log;
    EXPECT_EQ(m_plan.audio->codec, codec) << bits;
    EXPECT_EQ(m_plan.container, Container::QuickTime) << "MP4 has no box for PCM";
  }
}

}  // namespace
}  // namespace vrx::engine
