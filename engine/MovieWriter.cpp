#include "engine/MovieWriter.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr int kIoBufferSize = 1 << 20;  // bytes
// What the index of an MP4 file (ISO/IEC 14496-12) needs at most for a packet: its size (4), its time of
// display (8), its offset (8), a run of chunks (12), its mark as a key frame (4), and a run of durations (8).
// And for the rest: headers of the movie and its streams.
constexpr std::uint64_t kIndexBytesPerPacket = 44;
constexpr std::uint64_t kIndexBytes = 16 << 10;
constexpr std::uint64_t kLargestIndex = std::uint64_t{1} << 30;  // the muxer counts in 32 bits
constexpr const char* kTimeZoneKey = "com.vrx.time-zone";

int WritePacket(void* file, std::uint8_t* data, int size) {
  auto& output = *static_cast<OutputFile*>(file);
  return output.Write(data, static_cast<std::size_t>(size)) ? size : AVERROR(EIO);
}

std::int64_t SeekFile(void* file, std::int64_t offset, int whence) {
  auto& output = *static_cast<OutputFile*>(file);
  if ((whence & AVSEEK_SIZE) != 0) return output.GetSize();
  return output.Seek(offset, whence & ~AVSEEK_FORCE);
}

const char* MuxerName(Container container) {
  switch (container) {
    case Container::Mp4:
      return "mp4";
    case Container::QuickTime:
      return "mov";
    case Container::MpegTs:
      return "mpegts";
  }
  return "mp4";
}

}  // namespace

MovieWriter::~MovieWriter() { Abandon(); }

Result MovieWriter::Create(const OutputPlan& plan) {
  m_path = plan.path;
  m_container = plan.container;
  VRX_TRY(m_file.Create(plan.path));
  const int error = avformat_alloc_output_context2(&m_muxer, nullptr, MuxerName(plan.container), nullptr);
  if (error < 0) return Fail("the muxer cannot start", error);
  auto* buffer = static_cast<unsigned char*>(av_malloc(kIoBufferSize));
  if (buffer == nullptr) return kOutOfMemory;
  m_io = avio_alloc_context(buffer, kIoBufferSize, 1, &m_file, nullptr, &WritePacket, &SeekFile);
  if (m_io == nullptr) {
    av_free(buffer);
    return kOutOfMemory;
  }
  m_muxer->pb = m_io;
  m_muxer->flags |= AVFMT_FLAG_CUSTOM_IO;
  m_timeZoneBytes = plan.timeZone.size();
  if (!plan.timeZone.empty()) av_dict_set(&m_muxer->metadata, kTimeZoneKey, plan.timeZone.c_str(), 0);
  return kOk;
}

bool MovieWriter::WantsGlobalHeader(Container container) {
  const AVOutputFormat* format = av_guess_format(MuxerName(container), nullptr, nullptr);
  return format != nullptr && (format->flags & AVFMT_GLOBALHEADER) != 0;
}

Result MovieWriter::AddStream(const AVCodecContext& encoder, int& index) {
  AVStream* stream = avformat_new_stream(m_muxer, nullptr);
  if (stream == nullptr) return kOutOfMemory;
  stream->time_base = encoder.time_base;
  if (encoder.codec_type == AVMEDIA_TYPE_VIDEO) {
    stream->avg_frame_rate = encoder.framerate;
    stream->sample_aspect_ratio = encoder.sample_aspect_ratio;
  }
  const int error = avcodec_parameters_from_context(stream->codecpar, &encoder);
  if (error < 0) return Fail("a stream cannot be added", error);
  // Some players take no other name of HEVC in these files; its headers are beside the stream, as that says.
  const bool hevc = encoder.codec_id == AV_CODEC_ID_HEVC && m_container != Container::MpegTs;
  if (hevc) stream->codecpar->codec_tag = MKTAG('h', 'v', 'c', '1');
  index = stream->index;
  m_packets.push_back(0);
  return kOk;
}

Result MovieWriter::AddStream(const AVCodecParameters& parameters, AVRational timeBase, AVRational frameRate,
                              int& index) {
  AVStream* stream = avformat_new_stream(m_muxer, nullptr);
  if (stream == nullptr) return kOutOfMemory;
  stream->time_base = timeBase;
  stream->avg_frame_rate = frameRate;
  stream->sample_aspect_ratio = parameters.sample_aspect_ratio;
  const int error = avcodec_parameters_copy(stream->codecpar, &parameters);
  if (error < 0) return Fail("a stream cannot be added", error);
  index = stream->index;
  m_packets.push_back(0);
  return kOk;
}

/// 0 where the index has to follow the pictures.
std::int64_t MovieWriter::ReservedIndexBytes(std::uint64_t packets) const {
  std::uint64_t bytes = kIndexBytes + m_timeZoneBytes;
  for (unsigned i = 0; i < m_muxer->nb_streams; ++i) {
    bytes += static_cast<std::uint64_t>(std::max(m_muxer->streams[i]->codecpar->extradata_size, 0));
  }
  if (packets >= kLargestIndex / kIndexBytesPerPacket) return 0;
  bytes += packets * kIndexBytesPerPacket;
  return bytes < kLargestIndex ? static_cast<std::int64_t>(bytes) : 0;
}

Result MovieWriter::Begin(std::uint64_t packets) {
  AVDictionary* options = nullptr;
  av_dict_set(&options, "movflags", "use_metadata_tags", 0);
  av_dict_set_int(&options, "moov_size", ReservedIndexBytes(packets), 0);
  const int error = avformat_write_header(m_muxer, &options);
  av_dict_free(&options);
  return error < 0 ? Fail("the header cannot be written", error) : kOk;
}

Result MovieWriter::Write(AVPacket& packet, int stream, AVRational timeBase) {
  av_packet_rescale_ts(&packet, timeBase, m_muxer->streams[stream]->time_base);
  packet.stream_index = stream;
  const int error = av_interleaved_write_frame(m_muxer, &packet);
  if (error < 0 || m_file.GetError() != kOk) return Fail("a packet cannot be written", error);
  ++m_packets[static_cast<std::size_t>(stream)];
  return kOk;
}

Result MovieWriter::Finish() {
  const int error = av_write_trailer(m_muxer);
  avio_flush(m_io);
  if (error < 0 || m_io->error < 0 || m_file.GetError() != kOk) {
    const Result result = Fail("the movie cannot be completed", error < 0 ? error : m_io->error);
    Abandon();
    return result;
  }
  FreeMuxer();
  m_bytes = static_cast<std::uint64_t>(std::max<std::int64_t>(m_file.GetSize(), 0));
  return m_file.Commit();
}

void MovieWriter::Abandon() {
  FreeMuxer();
  m_file.Discard();
}

Result MovieWriter::Fail(const char* action, int error) {
  // The muxer gives one general error for every failed write; the file keeps the cause.
  if (m_file.GetError() != kOk) return m_file.ReportError();
  Log(VRXLogError, "output failed: " + m_path + ": " + action + ": " + AvErrorText(error));
  return error == AVERROR(ENOMEM) ? kOutOfMemory : kOutputFailed;
}

void MovieWriter::FreeMuxer() {
  avformat_free_context(m_muxer);
  m_muxer = nullptr;
  if (m_io != nullptr) av_freep(&m_io->buffer);
  avio_context_free(&m_io);
}

}  // namespace vrx::engine
