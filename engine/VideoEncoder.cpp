#include "engine/VideoEncoder.h"

#include <cerrno>
#include <string>
#include <utility>

#include "engine/EncoderTable.h"
#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

std::string SettingsOf(const VideoPlan& plan) {
  return std::to_string(plan.width) + "x" + std::to_string(plan.height) + " with frameDuration " +
         std::to_string(plan.frameDuration.value) + "/" + std::to_string(plan.frameDuration.scale) +
         " and averageBitrate " + std::to_string(plan.bitrate);
}

}  // namespace

VideoEncoder::~VideoEncoder() {
  if (m_codec && m_needsFrame) FeedBeforeClosing();
}

Result VideoEncoder::Open(const VideoPlan& plan, bool globalHeader) {
  m_interlaced = plan.interlaced;
  m_packet.reset(av_packet_alloc());
  if (!m_packet) return kOutOfMemory;
  if (!plan.hardware) return OpenSoftware(plan, globalHeader);
  HardwareEncoder hardware;
  std::string reasons;
  FindHardwareEncoder(FactsOf(plan.codec).hardware, plan, globalHeader, hardware, reasons);
  if (hardware.codec) {
    Log(VRXLogInfo, std::string("the pictures are encoded in hardware, by ") + hardware.name);
    m_codec = std::move(hardware.codec);
    m_deviceFrames = std::move(hardware.frames);
    return kOk;
  }
  VRX_TRY(OpenSoftware(plan, globalHeader));
  Log(VRXLogInfo, std::string("the pictures are encoded by ") + m_codec->codec->name +
                      ", since no encoder in hardware works (" + reasons + ")");
  return kOk;
}

Result VideoEncoder::OpenSoftware(const VideoPlan& plan, bool globalHeader) {
  const CodecFacts& facts = FactsOf(plan.codec);
  int error = AVERROR_ENCODER_NOT_FOUND;
  for (const SoftwareEncoder& software : facts.software) {
    if (software.name == nullptr) break;
    const AVCodec* encoder = avcodec_find_encoder_by_name(software.name);
    if (encoder == nullptr) continue;
    m_codec.reset(avcodec_alloc_context3(encoder));
    if (!m_codec) return kOutOfMemory;
    SetUpPicture(plan, globalHeader, *m_codec);
    software.setUp(plan, *m_codec);
    error = avcodec_open2(m_codec.get(), encoder, nullptr);
    if (error == AVERROR(ENOMEM)) return kOutOfMemory;
    m_needsFrame = error >= 0 && software.endsOnlyAfterAFrame;
    if (error >= 0) return kOk;
  }
  m_codec.reset();
  if (error == AVERROR_ENCODER_NOT_FOUND) {
    Log(VRXLogError, std::string("no encoder for ") + facts.name + " in the installed libavcodec");
    return kEncoderFailed;
  }
  Log(VRXLogError,
      std::string(facts.name) + " does not take " + SettingsOf(plan) + ": " + AvErrorText(error));
  return kUnusableSettings;
}

/// The threads of such an encoder wait for a frame for ever. Without memory for one, it is left as it is.
void VideoEncoder::FeedBeforeClosing() {
  const FramePtr frame(av_frame_alloc());
  if (frame) {
    frame->format = m_codec->pix_fmt;
    frame->width = m_codec->width;
    frame->height = m_codec->height;
    frame->pts = 0;
  }
  if (!frame || av_frame_get_buffer(frame.get(), 0) < 0 ||
      avcodec_send_frame(m_codec.get(), frame.get()) < 0 || avcodec_send_frame(m_codec.get(), nullptr) < 0) {
    static_cast<void>(m_codec.release());
    return;
  }
  while (avcodec_receive_packet(m_codec.get(), m_packet.get()) >= 0) continue;
}

Result VideoEncoder::Encode(AVFrame& frame, std::int64_t index, PacketSink& sink) {
  frame.pts = index;
  frame.pict_type = AV_PICTURE_TYPE_NONE;
  frame.key_frame = 0;
  frame.quality = m_codec->global_quality;
  frame.interlaced_frame = m_interlaced ? 1 : 0;
  frame.top_field_first = m_interlaced ? 1 : 0;
  FramePtr input;
  if (m_deviceFrames) {
    const int error = m_deviceFrames->Bring(frame, input);
    if (error < 0) return Fail(error);
  }
  VRX_TRY(Send(input ? input.get() : &frame));
  m_needsFrame = false;
  m_hasFrames = true;
  return WritePackets(sink, StopSignal());
}

Result VideoEncoder::Drain(PacketSink& sink, const StopSignal& stop) {
  VRX_TRY(Send(nullptr));
  return WritePackets(sink, stop);
}

Result VideoEncoder::Send(const AVFrame* frame) {
  const int error = avcodec_send_frame(m_codec.get(), frame);
  return error >= 0 ? kOk : Fail(error);
}

Result VideoEncoder::Fail(int error) const {
  Log(VRXLogError, "the video encoder failed: " + AvErrorText(error));
  return error == AVERROR(ENOMEM) ? kOutOfMemory : kEncoderFailed;
}

Result VideoEncoder::WritePackets(PacketSink& sink, const StopSignal& stop) {
  while (!stop.IsSet()) {
    const int error = avcodec_receive_packet(m_codec.get(), m_packet.get());
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return kOk;
    if (error < 0) return Fail(error);
    // Some packets come without a length, and the movie ends with that of the last one.
    if (m_packet->duration == 0) m_packet->duration = 1;
    VRX_TRY(sink.Write(*m_packet, m_codec->time_base));
  }
  return kOk;
}

}  // namespace vrx::engine
