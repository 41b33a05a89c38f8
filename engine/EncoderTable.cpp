#include "engine/EncoderTable.h"

extern "C" {
#include <libavutil/cpu.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>

#include "engine/EngineLog.h"
#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

constexpr int kMpeg2Quality = 3;       // constant quantiser
constexpr int kMpeg2GroupLength = 15;  // frames
constexpr int kMpeg2BFrames = 2;
constexpr int kLeastAv1Quality = 1;  // SVT-AV1 takes 0 for "not set"

void SetUpX264(const VideoPlan& plan, AVCodecContext& codec) {
  av_opt_set(codec.priv_data, "preset", plan.preset, 0);
  // Frames that wait for the lookahead's thread. With one the encoder often waits for it, which costs a
  // twentieth of the speed; each takes 22 MiB in a 4K movie. Without that thread x264 takes a tenth longer;
  // with it x264 sometimes leaks one frame of a movie.
  std::string parameters = "sync-lookahead=4";
  if (plan.parameterSetId != 0) parameters += ":sps-id=" + std::to_string(plan.parameterSetId);
  av_opt_set(codec.priv_data, "x264-params", parameters.c_str(), 0);
  codec.rc_max_rate = plan.peakBitrate;
  codec.rc_buffer_size = static_cast<int>(std::min<std::int64_t>(plan.bufferBits, INT_MAX));
  if (plan.bitrate == 0) av_opt_set_double(codec.priv_data, "crf", QualityOf(plan), 0);
  if (plan.interlaced) codec.flags |= AV_CODEC_FLAG_INTERLACED_DCT;
}

void SetUpMpeg2(const VideoPlan& plan, AVCodecContext& codec) {
  codec.gop_size = kMpeg2GroupLength;
  codec.max_b_frames = kMpeg2BFrames;
  if (plan.bitrate == 0) {
    codec.flags |= AV_CODEC_FLAG_QSCALE;
    codec.global_quality = kMpeg2Quality * FF_QP2LAMBDA;
  }
  if (plan.interlaced) codec.flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
}

void SetUpX265(const VideoPlan& plan, AVCodecContext& codec) {
  av_opt_set(codec.priv_data, "preset", plan.preset, 0);
  // It would write to the terminal by itself. Players jump only to groups that need nothing before them.
  av_opt_set(codec.priv_data, "x265-params", "log-level=none:open-gop=0", 0);
  if (plan.bitrate == 0) av_opt_set_double(codec.priv_data, "crf", QualityOf(plan), 0);
  codec.thread_count = 0;  // these are frames at work at once, of which it takes few by itself
}

/// Steps of AV1 encoders by the names of x264, fastest first.
struct Step {
  std::string_view preset;
  int svt;
  int aom;
};
constexpr std::array<Step, 9> kSteps{{{"ultrafast", 12, 8},
                                      {"superfast", 11, 7},
                                      {"veryfast", 10, 6},
                                      {"faster", 9, 5},
                                      {"fast", 8, 4},
                                      {"medium", 7, 3},
                                      {"slow", 5, 2},
                                      {"slower", 4, 1},
                                      {"veryslow", 3, 0}}};

const Step& StepOf(const VideoPlan& plan) {
  const auto* found = std::find_if(kSteps.begin(), kSteps.end(),
                                   [&](const Step& step) { return step.preset == plan.preset; });
  return found == kSteps.end() ? kSteps[2] : *found;
}

int Av1Quality(const VideoPlan& plan) {
  return std::max(static_cast<int>(std::lround(QualityOf(plan))), kLeastAv1Quality);
}

void SetUpSvtAv1(const VideoPlan& plan, AVCodecContext& codec) {
  // It writes to the terminal by itself, and only its environment can tell it not to.
  static std::once_flag silenced;
  std::call_once(silenced, [] { setenv("SVT_LOG", "-1", 0); });
  av_opt_set_int(codec.priv_data, "preset", StepOf(plan).svt, 0);
  if (plan.bitrate == 0) av_opt_set_int(codec.priv_data, "crf", Av1Quality(plan), 0);
}

void SetUpAom(const VideoPlan& plan, AVCodecContext& codec) {
  av_opt_set_int(codec.priv_data, "cpu-used", StepOf(plan).aom, 0);
  av_opt_set_int(codec.priv_data, "row-mt", 1, 0);
  if (plan.bitrate == 0) av_opt_set_int(codec.priv_data, "crf", Av1Quality(plan), 0);
}

constexpr CodecFacts kH264{.name = "H.264",
                           .software = {{{"libx264", &SetUpX264}}},
                           .hardware = {"h264_nvenc", "h264_qsv", "h264_vaapi", "h264_v4l2m2m"},
                           .quality = 20.0,
                           .takesQuality = true,
                           .takesInterlaced = true,
                           .inQuickTime = true,
                           .inTransportStream = true};
constexpr CodecFacts kMpeg2{.name = "MPEG-2",
                            .software = {{{"mpeg2video", &SetUpMpeg2}}},
                            .hardware = {},
                            .quality = 0.0,
                            .takesQuality = false,
                            .takesInterlaced = true,
                            .inQuickTime = true,
                            .inTransportStream = true};
constexpr CodecFacts kHevc{.name = "HEVC",
                           .software = {{{"libx265", &SetUpX265}}},
                           .hardware = {"hevc_nvenc", "hevc_qsv", "hevc_vaapi", "hevc_v4l2m2m"},
                           .quality = 22.0,
                           .takesQuality = true,
                           .takesInterlaced = false,
                           .inQuickTime = true,
                           .inTransportStream = true};
constexpr CodecFacts kAv1{.name = "AV1",
                          .software = {{{"libsvtav1", &SetUpSvtAv1, true}, {"libaom-av1", &SetUpAom}}},
                          .hardware = {"av1_nvenc", "av1_qsv", "av1_vaapi"},
                          .quality = 30.0,
                          .takesQuality = true,
                          .takesInterlaced = false,
                          .inQuickTime = false,
                          .inTransportStream = false};

Result UnusableEncoder(const std::string& what) {
  Log(VRXLogError, "output setting not usable: " + what);
  return kUnusableSettings;
}

}  // namespace

const CodecFacts& FactsOf(VideoCodec codec) {
  switch (codec) {
    case VideoCodec::H264:
      return kH264;
    case VideoCodec::Mpeg2:
      return kMpeg2;
    case VideoCodec::Hevc:
      return kHevc;
    case VideoCodec::Av1:
      return kAv1;
  }
  return kH264;
}

void SetUpPicture(const VideoPlan& plan, bool globalHeader, AVCodecContext& codec) {
  codec.width = plan.width;
  codec.height = plan.height;
  codec.pix_fmt = AV_PIX_FMT_YUV420P;
  codec.sample_aspect_ratio = {1, 1};
  codec.time_base = {static_cast<int>(plan.frameDuration.value), static_cast<int>(plan.frameDuration.scale)};
  codec.framerate = {codec.time_base.den, codec.time_base.num};
  codec.field_order = plan.interlaced ? AV_FIELD_TT : AV_FIELD_PROGRESSIVE;
  const PictureColour colour = OutputColour(plan.height);
  codec.colorspace = colour.matrix;
  codec.color_primaries = colour.primaries;
  codec.color_trc = colour.transfer;
  codec.color_range = AVCOL_RANGE_MPEG;
  codec.chroma_sample_location = AVCHROMA_LOC_LEFT;
  // By itself x264 starts half as many threads again, each with frames of its own, but the decoder needs a
  // share too.
  codec.thread_count = av_cpu_count();
  if (plan.bitrate > 0) codec.bit_rate = plan.bitrate;
  if (globalHeader) codec.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
}

double QualityOf(const VideoPlan& plan) { return plan.quality.value_or(FactsOf(plan.codec).quality); }

Result CheckCodec(const OutputPlan& plan) {
  const VideoPlan& video = plan.video;
  const CodecFacts& facts = FactsOf(video.codec);
  const std::string name = facts.name;
  if (video.quality && !facts.takesQuality) {
    return UnusableEncoder(name + " has no constant rate factor; give a bitrate, or another codec");
  }
  if (video.interlaced && !facts.takesInterlaced) {
    return UnusableEncoder(name + " codes no interlaced pictures here; H.264 and MPEG-2 do");
  }
  const bool fits = plan.container == Container::Mp4 ||
                    (plan.container == Container::QuickTime ? facts.inQuickTime : facts.inTransportStream);
  if (fits) return kOk;
  if (plan.audio && IsPcm(plan.audio->codec))
    return UnusableEncoder("no file takes " + name +
                           " together with PCM; use AAC or AC-3 and a name that ends in .mp4");
  return UnusableEncoder(plan.path + " cannot hold " + name + ", which needs a name that ends in .mp4");
}

}  // namespace vrx::engine
