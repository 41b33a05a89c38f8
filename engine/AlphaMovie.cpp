#include "engine/AlphaMovie.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <new>

namespace vrx::engine {
namespace {

constexpr AVPixelFormat kFormat = AV_PIX_FMT_YUVA444P10;
// The finest: what it loses is less than the rounding to eight bits.
constexpr int kQuantiser = 1;
constexpr int kAlphaBits = 8;  // as many as the overlays have

}  // namespace

AlphaMovie::AlphaMovie(const VideoPlan& plan)
    : m_conversion(plan.width, plan.height),
      m_frame(FramePool(kFormat).Get(plan.width, plan.height)),
      m_packet(av_packet_alloc()) {
  if (!m_packet) throw std::bad_alloc();
}

Result AlphaMovie::Create(const OutputPlan& plan, std::int64_t frames,
                          std::unique_ptr<OverlayOutput>& output) {
  std::unique_ptr<AlphaMovie> made(new AlphaMovie(plan.video));
  VRX_TRY(made->OpenEncoder(plan.video));
  OutputPlan quickTime = plan;
  quickTime.container = Container::QuickTime;
  VRX_TRY(made->m_writer.Create(quickTime));
  VRX_TRY(made->m_writer.AddStream(made->m_encoder.GetContext(), made->m_stream));
  VRX_TRY(made->m_writer.Begin(static_cast<std::uint64_t>(frames)));
  output = std::move(made);
  return kOk;
}

Result AlphaMovie::OpenEncoder(const VideoPlan& plan) {
  VRX_TRY(m_encoder.Create("prores_ks", kFormat, plan));
  AVCodecContext& codec = m_encoder.GetContext();
  const PictureColour colour = OutputColour(plan.height);
  codec.colorspace = m_frame->colorspace = colour.matrix;
  codec.color_primaries = m_frame->color_primaries = colour.primaries;
  codec.color_trc = m_frame->color_trc = colour.transfer;
  codec.color_range = m_frame->color_range = AVCOL_RANGE_MPEG;
  codec.global_quality = kQuantiser * FF_QP2LAMBDA;
  av_opt_set(codec.priv_data, "profile", "4444", 0);
  av_opt_set_int(codec.priv_data, "alpha_bits", kAlphaBits, 0);
  return m_encoder.Open();
}

Result AlphaMovie::SetPicture(const std::uint32_t* drawing) {
  m_conversion.Convert(drawing, *m_frame);
  return m_encoder.Encode(*m_frame);
}

/// Every picture is a key frame, so one that stays is the same packet again.
Result AlphaMovie::Write(std::int64_t) {
  av_packet_unref(m_packet.get());
  if (av_packet_ref(m_packet.get(), &m_encoder.GetPacket()) < 0) return kOutOfMemory;
  m_packet->pts = m_packet->dts = m_frames++;
  m_packet->duration = 1;
  return m_writer.Write(*m_packet, m_stream, m_encoder.GetContext().time_base);
}

}  // namespace vrx::engine
