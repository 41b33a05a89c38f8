// The packets of a file's sound, for tests of what is copied.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "samples/clipmaker/AvHandles.h"

namespace vrx::engine {

struct SoundPacket {
  std::vector<std::uint8_t> bytes;  // without the header that AAC has in transport streams
  std::int64_t time = 0;            // from the file's start, in samples
  std::int64_t position = 0;        // of the first byte in the file
};

struct SoundPackets {
  std::vector<SoundPacket> packets;
  std::int64_t end = 0;  // of the sound, in samples; an MP4 file may end within a packet
};

/// Throws std::runtime_error as the clip maker does.
inline SoundPackets ReadSoundPackets(const std::string& path) {
  using namespace test_support;
  AVFormatContext* opened = nullptr;
  Check(avformat_open_input(&opened, ("file:" + path).c_str(), nullptr, nullptr), path);
  const DemuxerPtr demuxer(opened);
  Check(avformat_find_stream_info(opened, nullptr), path);
  const int index = Check(av_find_best_stream(opened, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0), path);
  const AVStream& stream = *opened->streams[index];
  const AVRational samples{1, stream.codecpar->sample_rate};
  const std::int64_t zero = av_rescale_q(opened->start_time, {1, AV_TIME_BASE}, samples);
  SoundPackets read;
  for (const PacketPtr packet = NewPacket(); av_read_frame(opened, packet.get()) >= 0;
       av_packet_unref(packet.get())) {
    if (packet->stream_index != index) continue;
    const bool hasHeader = stream.codecpar->codec_id == AV_CODEC_ID_AAC && packet->data[0] == 0xFF &&
                           stream.codecpar->extradata_size == 0;
    read.packets.push_back({{packet->data + (hasHeader ? 7 : 0), packet->data + packet->size},
                            av_rescale_q(packet->pts, stream.time_base, samples) - zero,
                            packet->pos});
  }
  read.end = av_rescale_q(stream.start_time + stream.duration, stream.time_base, samples) - zero;
  return read;
}

}  // namespace vrx::engine
