// The search for an encoder in hardware, with encoders that need none, and what is sent to a device.
#include "engine/HardwareEncoder.h"

#include <gtest/gtest.h>

#include "engine/EncoderTable.h"

namespace vrx::engine {
namespace {

constexpr VideoPlan kPlan{.codec = VideoCodec::H264,
                          .width = 96,
                          .height = 64,
                          .frameDuration = {1, 25},
                          .bitrate = 300'000,
                          .quality = {},
                          .interlaced = false,
                          .preset = "veryfast",
                          .hardware = true};

TEST(HardwareEncoderTest, FirstThatGivesAPacketIsOpenForTheMovieAndTheOthersHaveTheirReasons) {
  av_log_set_level(AV_LOG_QUIET);
  HardwareEncoder found;
  std::string reasons;
  // The first is unknown, the second refuses the frames that it is given, the third keeps them back for long.
  const char* const names[] = {"none_nvenc", "gif", "libx264", "mpeg2video", nullptr};
  FindHardwareEncoder(names, kPlan, true, found, reasons);
  ASSERT_TRUE(found.codec);
  EXPECT_STREQ(found.name, "libx264");
  EXPECT_EQ(reasons, "none_nvenc: not in the installed libavcodec; gif: Invalid argument");
  EXPECT_GT(found.codec->extradata_size, 0);
  FramePool pool;
  for (int n = 0; n < 3; ++n) {
    FramePtr frame = pool.Get(96, 64), input;
    FillBlack(*frame);
    frame->pts = n;
    ASSERT_GE(found.frames->Bring(*frame, input), 0);
    EXPECT_GE(avcodec_send_frame(found.codec.get(), input.get()), 0) << "the trial has ended the encoder";
  }
}

TEST(HardwareEncoderTest, WhereNoneWorksThereIsAReasonForEach) {
  VideoPlan quality = kPlan, interlaced = kPlan;
  quality.bitrate = 0;
  interlaced.interlaced = true;
  const char* const bitrateOnly[] = {"h264_v4l2m2m", nullptr};
  const char* const none[] = {nullptr, nullptr};
  const char* const good[] = {"libx264", nullptr};
  for (const auto& [names, plan, expected] :
       {std::tuple{bitrateOnly, quality, "h264_v4l2m2m: needs a bitrate"},
        {none, kPlan, "none is known"},
        {good, interlaced, "none takes interlaced pictures"}}) {
    HardwareEncoder found;
    std::string reasons;
    FindHardwareEncoder(std::span(names, 2), plan, false, found, reasons);
    EXPECT_FALSE(found.codec);
    EXPECT_EQ(reasons, expected);
  }
}

TEST(HardwareEncoderTest, FramesWithMixedColoursKeepTheirSamplesAndTime) {
  FramePool pool;
  FramePtr frame = pool.Get(6, 4), input;
  for (int part = 0; part < 3; ++part) {
    for (int y = 0; y < (part == 0 ? 4 : 2); ++y) {
      for (int x = 0; x < (part == 0 ? 6 : 3); ++x)
        frame->data[part][y * frame->linesize[part] + x] = static_cast<std::uint8_t>(60 * part + 10 * y + x);
    }
  }
  frame->pts = 77;
  DeviceFrames frames(DeviceFrames::Form::Mixed);
  const CodecPtr codec(avcodec_alloc_context3(nullptr));
  ASSERT_EQ(frames.Open(*codec), 0);
  EXPECT_EQ(codec->pix_fmt, AV_PIX_FMT_NV12);
  ASSERT_EQ(frames.Bring(*frame, input), 0);
  EXPECT_EQ(input->format, AV_PIX_FMT_NV12);
  EXPECT_EQ(input->pts, 77);
  EXPECT_EQ(input->data[0][3 * input->linesize[0] + 5], 35);
  EXPECT_EQ(input->data[1][input->linesize[1] + 4], 72);
  EXPECT_EQ(input->data[1][input->linesize[1] + 5], 132);
}

}  // namespace
}  // namespace vrx::engine
