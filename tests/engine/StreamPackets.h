// The packets of one of a file's streams, for tests of what is copied.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "samples/clipmaker/AvHandles.h"

namespace vrx::engine {

struct StreamPacket {
  std::vector<std::uint8_t> bytes;  // without the header that AAC has in transport streams
  std::int64_t time = 0;            // from the file's start
  std::int64_t position = 0;        // of the first byte in the file
};

struct StreamPackets {
  std::vector<StreamPacket> packets;
  std::uint32_t tag = 0;  // the codec's name in the file
  std::int64_t end = 0;   // of the stream; an MP4 file may end within a packet of sound
};

/// Calls `take(file, stream, packet)` for each packet of the best stream of this type, in the order of the
/// file. Throws std::runtime_error as the clip maker does.
template <class Take>
void ForEachPacket(const std::string& path, AVMediaType type, Take take) {
  using namespace test_support;
  AVFormatContext* opened = nullptr;
  Check(avformat_open_input(&opened, ("file:" + path).c_str(), nullptr, nullptr), path);
  const DemuxerPtr demuxer(opened);
  Check(avformat_find_stream_info(opened, nullptr), path);
  const int index = Check(av_find_best_stream(opened, type, -1, -1, nullptr, 0), path);
  for (const test_support::PacketPtr packet = NewPacket(); av_read_frame(opened, packet.get()) >= 0;
       av_packet_unref(packet.get())) {
    if (packet->stream_index == index) take(*opened, *opened->streams[index], *packet);
  }
}

/// Times are in `unit`, or in samples of a stream of sound.
inline StreamPackets ReadPackets(const std::string& path, AVMediaType type, AVRational unit = {0, 1}) {
  StreamPackets read;
  ForEachPacket(path, type, [&](const AVFormatContext& file, const AVStream& stream, const AVPacket& packet) {
    if (type == AVMEDIA_TYPE_AUDIO) unit = {1, stream.codecpar->sample_rate};
    const std::int64_t zero = av_rescale_q(file.start_time, {1, AV_TIME_BASE}, unit);
    const bool hasHeader = stream.codecpar->codec_id == AV_CODEC_ID_AAC && packet.data[0] == 0xFF &&
                           stream.codecpar->extradata_size == 0;
    read.packets.push_back({{packet.data + (hasHeader ? 7 : 0), packet.data + packet.size},
                            av_rescale_q(packet.pts, stream.time_base, unit) - zero,
                            packet.pos});
    read.tag = stream.codecpar->codec_tag;
    read.end = av_rescale_q(stream.start_time + stream.duration, stream.time_base, unit) - zero;
  });
  return read;
}

inline StreamPackets ReadSoundPackets(const std::string& path) {
  return ReadPackets(path, AVMEDIA_TYPE_AUDIO);
}

inline std::vector<std::vector<std::uint8_t>> BytesOf(const StreamPackets& stream, std::size_t first = 0,
                                                      std::size_t count = SIZE_MAX) {
  std::vector<std::vector<std::uint8_t>> bytes;
  for (std::size_t i = first; i < stream.packets.size() && bytes.size() < count; ++i)
    bytes.push_back(stream.packets[i].bytes);
  return bytes;
}

}  // namespace vrx::engine
