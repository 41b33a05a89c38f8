#include "engine/PictureTrack.h"

#include <algorithm>
#include <string>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

/// The most places by which a picture is encoded after its frame's place.
std::int64_t DelayOf(const AVCodecContext& encoder) {
  constexpr int kOfPyramid = 2;  // B-frames that refer to B-frames
  // libav does not say it of x265.
  return encoder.codec_id == AV_CODEC_ID_HEVC ? std::max(encoder.has_b_frames, kOfPyramid)
                                              : encoder.has_b_frames;
}

}  // namespace

/// Passes an encoder's packets on as they are.
class PictureTrack::PlainSink final : public PacketSink {
 public:
  explicit PlainSink(PictureTrack& track) : m_track(track) {}
  Result Write(AVPacket& packet, AVRational timeBase) override {
    return m_track.m_writer->Write(packet, m_track.m_stream, timeBase);
  }

 private:
  PictureTrack& m_track;
};

/// Brings them between copied spans.
class PictureTrack::SeamSink final : public PacketSink {
 public:
  explicit SeamSink(PictureTrack& track) : m_track(track) {}
  Result Write(AVPacket& packet, AVRational timeBase) override {
    return m_track.WriteEncoded(packet, timeBase);
  }

 private:
  PictureTrack& m_track;
};

Result PictureTrack::Open(const OutputPlan& output, const SmartPlan& plan, const StopSignal& stop) {
  m_plan = &plan;
  m_stop = &stop;
  m_video = output.video;
  m_wantsHeader = MovieWriter::WantsGlobalHeader(output.container);
  m_hasCopies = plan.CountCopied() > 0;
  const int level = JoinedStream::FitEncoder(plan, m_video);
  return m_hasCopies ? OpenForCopies(output, level) : OpenEncoder();
}

Result PictureTrack::OpenForCopies(const OutputPlan& output, int level) {
  m_wantsHeader = true;  // the joined stream puts headers where they belong
  m_delay = m_plan->GetDelay();
  m_joined.Prepare(output.container, *m_plan, m_video, level);
  const bool encodes = std::any_of(m_plan->spans.begin(), m_plan->spans.end(),
                                   [](const PictureSpan& span) { return !span.IsCopied(); });
  if (encodes) {
    VRX_TRY(OpenEncoder());
    m_delay = std::max(m_delay, DelayOf(m_encoder->GetContext()));
  }
  VRX_TRY(m_joined.Arrange(encodes ? &m_encoder->GetContext() : nullptr));
  m_reader = std::make_unique<CopyReader>(*m_stop);
  return kOk;
}

Result PictureTrack::OpenEncoder() {
  auto encoder = std::make_unique<VideoEncoder>();
  VRX_TRY(encoder->Open(m_video, m_wantsHeader));
  m_encoder = std::move(encoder);
  return kOk;
}

Result PictureTrack::AddTo(MovieWriter& writer) {
  m_writer = &writer;
  if (!m_hasCopies) return writer.AddStream(m_encoder->GetContext(), m_stream);
  const FrameDuration frame = m_video.frameDuration;
  return writer.AddStream(m_joined.GetParameters(),
                          {static_cast<int>(frame.value), static_cast<int>(frame.scale)},
                          {static_cast<int>(frame.scale), static_cast<int>(frame.value)}, m_stream);
}

Result PictureTrack::Encode(AVFrame& frame, std::int64_t number) {
  if (!m_encoder) VRX_TRY(OpenEncoder());
  if (m_hasCopies) {
    SeamSink sink(*this);
    return m_encoder->Encode(frame, number, sink);
  }
  PlainSink sink(*this);
  return m_encoder->Encode(frame, number, sink);
}

Result PictureTrack::Copy(const PictureSpan& span) {
  VRX_TRY(EndEncodedSpan());
  AVPacket* packet = nullptr;
  std::int64_t number = 0;
  const CopiedSource& source = m_plan->sources[span.source];
  VRX_TRY(m_reader->Next(span, source, packet, number));
  VRX_TRY(m_joined.Pack(*packet, source.nalLength, source.sets));
  return WriteInOrder(*packet, number);
}

Result PictureTrack::EndEncodedSpan() {
  // The first encoder is opened before its span comes.
  if (!m_encoder || !m_encoder->HasFrames()) return kOk;
  SeamSink sink(*this);
  VRX_TRY(m_encoder->Drain(sink, *m_stop));
  m_encoder.reset();
  return kOk;
}

Result PictureTrack::Drain() {
  if (m_hasCopies) return EndEncodedSpan();
  PlainSink sink(*this);
  return m_encoder->Drain(sink, *m_stop);
}

Result PictureTrack::WriteEncoded(AVPacket& packet, AVRational) {
  VRX_TRY(m_joined.Pack(packet, kStartCodes, m_joined.GetEncodedSets()));
  return WriteInOrder(packet, packet.pts);
}

Result PictureTrack::WriteInOrder(AVPacket& packet, std::int64_t number) {
  packet.pts = number;
  packet.dts = static_cast<std::int64_t>(GetPacketCount()) - m_delay;
  packet.duration = 1;
  if (packet.dts > packet.pts) {
    Log(VRXLogError, "the pictures of frame " + std::to_string(number) + " come too late in their stream");
    return kEncoderFailed;
  }
  const FrameDuration frame = m_video.frameDuration;
  return m_writer->Write(packet, m_stream, {static_cast<int>(frame.value), static_cast<int>(frame.scale)});
}

}  // namespace vrx::engine
