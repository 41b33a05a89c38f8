#include "samples/clipmaker/ClipMuxer.h"

namespace vrx::test_support {

void MuxerDelete::operator()(AVFormatContext* muxer) const {
  avio_closep(&muxer->pb);
  avformat_free_context(muxer);
}

ClipMuxer::ClipMuxer(const std::string& path) : m_packet(NewPacket()) {
  AVFormatContext* muxer = nullptr;
  Check(avformat_alloc_output_context2(&muxer, nullptr, nullptr, path.c_str()), "no container for " + path);
  m_muxer.reset(muxer);
  muxer->flags |= AVFMT_FLAG_BITEXACT;
  Check(avio_open(&muxer->pb, ("file:" + path).c_str(), AVIO_FLAG_WRITE), "cannot write " + path);
}

AVStream* ClipMuxer::AddStream(const AVCodecContext& encoder) {
  AVStream* stream = CheckPointer(avformat_new_stream(m_muxer.get(), nullptr), "stream");
  Check(avcodec_parameters_from_context(stream->codecpar, &encoder), "stream parameters");
  stream->time_base = encoder.time_base;
  return stream;
}

void ClipMuxer::SetDate(const std::string& date) {
  Check(av_dict_set(&m_muxer->metadata, "date", date.c_str(), 0), "date");
}

void ClipMuxer::Start() { Check(avformat_write_header(m_muxer.get(), nullptr), "container header"); }

void ClipMuxer::Encode(AVCodecContext& encoder, AVStream& stream, const AVFrame* frame,
                       std::int64_t duration) {
  Check(avcodec_send_frame(&encoder, frame), "encoder");
  for (;;) {
    const int code = avcodec_receive_packet(&encoder, m_packet.get());
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return;
    Check(code, "encoder");
    if (m_packet->duration == 0) m_packet->duration = duration;
    m_packet->stream_index = stream.index;
    av_packet_rescale_ts(m_packet.get(), encoder.time_base, stream.time_base);
    Check(av_interleaved_write_frame(m_muxer.get(), m_packet.get()), "container");
  }
}

void ClipMuxer::Finish() {
  Check(av_write_trailer(m_muxer.get()), "container trailer");
  Check(avio_closep(&m_muxer->pb), "closing the file");
}

}  // namespace vrx::test_support
