#include "engine/HardwareEncoder.h"

extern "C" {
#include <libavutil/hwcontext.h>
#include <libavutil/opt.h>
}

#include <libyuv.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string_view>

#include "engine/EncoderTable.h"
#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

using Form = DeviceFrames::Form;

constexpr int kPoolFrames = 20;  // that a device keeps for the encoder: more than it holds back at once
constexpr int kGrey = 128;
constexpr int kLeastQuality = 1;  // 0 means "by itself" to these encoders

int WholeQuality(const VideoPlan& plan) {
  return std::max(static_cast<int>(std::lround(QualityOf(plan))), kLeastQuality);
}

void SetUpNvenc(const VideoPlan& plan, AVCodecContext& codec) {
  // Seven steps, for the names of x264 from the fastest on.
  const std::string_view preset = plan.preset;
  const char* step = preset == "ultrafast" || preset == "superfast" ? "p1"
                     : preset == "veryfast"                         ? "p2"
                     : preset == "faster" || preset == "fast"       ? "p3"
                     : preset == "medium"                           ? "p4"
                     : preset == "slow"                             ? "p5"
                     : preset == "slower"                           ? "p6"
                                                                    : "p7";
  av_opt_set(codec.priv_data, "preset", step, 0);
  if (plan.bitrate != 0) return;
  av_opt_set(codec.priv_data, "rc", "vbr", 0);
  av_opt_set_double(codec.priv_data, "cq", std::max<double>(QualityOf(plan), kLeastQuality), 0);
}

void SetUpQuickSync(const VideoPlan& plan, AVCodecContext& codec) {
  const std::string_view preset = plan.preset;
  const bool fastest = preset == "ultrafast" || preset == "superfast";
  av_opt_set(codec.priv_data, "preset", fastest ? "veryfast" : plan.preset, 0);
  if (plan.bitrate == 0) codec.global_quality = WholeQuality(plan);
}

void SetUpVaapi(const VideoPlan& plan, AVCodecContext& codec) {
  if (plan.bitrate != 0) return;
  av_opt_set(codec.priv_data, "rc_mode", "CQP", 0);
  codec.global_quality = WholeQuality(plan);
}

/// How an encoder is fed and told, by the end of its name.
struct Family {
  std::string_view ending;
  Form form;
  void (*setUp)(const VideoPlan& plan, AVCodecContext& codec);
  bool takesQuality;
};
constexpr Family kFamilies[] = {
    {"_nvenc", Form::Planar, &SetUpNvenc, true},
    {"_qsv", Form::Mixed, &SetUpQuickSync, true},
    {"_vaapi", Form::InDevice, &SetUpVaapi, true},
    {"_v4l2m2m", Form::Planar, [](const VideoPlan&, AVCodecContext&) {}, false},
};

const Family& FamilyOf(std::string_view encoder) {
  return *std::find_if(std::begin(kFamilies), std::end(kFamilies) - 1,
                       [&](const Family& family) { return encoder.ends_with(family.ending); });
}

int OpenEncoder(const AVCodec& encoder, const VideoPlan& plan, bool globalHeader, HardwareEncoder& opened) {
  const Family& family = FamilyOf(encoder.name);
  opened.name = encoder.name;
  opened.frames = std::make_unique<DeviceFrames>(family.form);
  opened.codec.reset(avcodec_alloc_context3(&encoder));
  if (!opened.codec) return AVERROR(ENOMEM);
  SetUpPicture(plan, globalHeader, *opened.codec);
  family.setUp(plan, *opened.codec);
  const int error = opened.frames->Open(*opened.codec);
  return error < 0 ? error : avcodec_open2(opened.codec.get(), &encoder, nullptr);
}

/// Sends a grey frame and the end, and waits for the packet.
int Try(HardwareEncoder& encoder, const VideoPlan& plan) {
  FramePool pool;
  FramePtr grey = pool.Get(plan.width, plan.height);
  for (int part = 0; part < 3; ++part) {
    const int rows = part == 0 ? plan.height : plan.height / 2;
    std::memset(grey->data[part], kGrey,
                static_cast<std::size_t>(grey->linesize[part]) * static_cast<std::size_t>(rows));
  }
  grey->pts = 0;
  FramePtr input;
  const PacketPtr packet(av_packet_alloc());
  if (!packet) return AVERROR(ENOMEM);
  int error = encoder.frames->Bring(*grey, input);
  if (error >= 0) error = avcodec_send_frame(encoder.codec.get(), input.get());
  if (error >= 0) error = avcodec_receive_packet(encoder.codec.get(), packet.get());
  if (error != AVERROR(EAGAIN)) return error;
  error = avcodec_send_frame(encoder.codec.get(), nullptr);
  return error < 0 ? error : avcodec_receive_packet(encoder.codec.get(), packet.get());
}

/// Empty when `encoder` works and is open in `found`.
std::string ReasonAgainst(const char* name, const VideoPlan& plan, bool globalHeader,
                          HardwareEncoder& found) {
  const AVCodec* encoder = avcodec_find_encoder_by_name(name);
  if (encoder == nullptr) return "not in the installed libavcodec";
  if (plan.bitrate == 0 && !FamilyOf(name).takesQuality) return "needs a bitrate";
  HardwareEncoder tried;
  int error = OpenEncoder(*encoder, plan, globalHeader, tried);
  if (error >= 0) error = Try(tried, plan);
  // An encoder that has had its end takes no more frames.
  if (error >= 0) error = OpenEncoder(*encoder, plan, globalHeader, found);
  if (error >= 0) return "";
  found = {};
  return AvErrorText(error);
}

}  // namespace

DeviceFrames::~DeviceFrames() {
  av_buffer_unref(&m_pool);
  av_buffer_unref(&m_device);
}

int DeviceFrames::Open(AVCodecContext& codec) {
  if (m_form == Form::Mixed) codec.pix_fmt = AV_PIX_FMT_NV12;
  if (m_form != Form::InDevice) return 0;
  const int error = av_hwdevice_ctx_create(&m_device, AV_HWDEVICE_TYPE_VAAPI, nullptr, nullptr, 0);
  return error < 0 ? error : OpenPool(codec);
}

int DeviceFrames::OpenPool(AVCodecContext& codec) {
  m_pool = av_hwframe_ctx_alloc(m_device);
  if (m_pool == nullptr) return AVERROR(ENOMEM);
  auto& pool = *reinterpret_cast<AVHWFramesContext*>(m_pool->data);
  pool.format = AV_PIX_FMT_VAAPI;
  pool.sw_format = AV_PIX_FMT_NV12;
  pool.width = codec.width;
  pool.height = codec.height;
  pool.initial_pool_size = kPoolFrames;
  if (const int error = av_hwframe_ctx_init(m_pool); error < 0) return error;
  codec.pix_fmt = AV_PIX_FMT_VAAPI;
  codec.hw_frames_ctx = av_buffer_ref(m_pool);
  return codec.hw_frames_ctx == nullptr ? AVERROR(ENOMEM) : 0;
}

int DeviceFrames::Bring(const AVFrame& frame, FramePtr& input) {
  if (m_form == Form::Planar) {
    input.reset(av_frame_clone(&frame));
    return input ? 0 : AVERROR(ENOMEM);
  }
  input = m_mixed.Get(frame.width, frame.height);
  libyuv::I420ToNV12(frame.data[0], frame.linesize[0], frame.data[1], frame.linesize[1], frame.data[2],
                     frame.linesize[2], input->data[0], input->linesize[0], input->data[1],
                     input->linesize[1], frame.width, frame.height);
  if (m_form == Form::InDevice) {
    FramePtr inDevice(av_frame_alloc());
    if (!inDevice) return AVERROR(ENOMEM);
    int error = av_hwframe_get_buffer(m_pool, inDevice.get(), 0);
    if (error >= 0) error = av_hwframe_transfer_data(inDevice.get(), input.get(), 0);
    if (error < 0) return error;
    input = std::move(inDevice);
  }
  return av_frame_copy_props(input.get(), &frame);
}

void FindHardwareEncoder(std::span<const char* const> names, const VideoPlan& plan, bool globalHeader,
                         HardwareEncoder& found, std::string& reasons) {
  if (plan.interlaced) {
    reasons = "none takes interlaced pictures";
    return;
  }
  for (const char* name : names) {
    if (name == nullptr) break;
    const std::string reason = ReasonAgainst(name, plan, globalHeader, found);
    if (reason.empty()) return;
    reasons += (reasons.empty() ? "" : "; ") + std::string(name) + ": " + reason;
  }
  if (reasons.empty()) reasons = "none is known";
}

}  // namespace vrx::engine
