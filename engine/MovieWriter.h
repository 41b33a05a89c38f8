// The movie file with its streams: takes encoded packets, interleaves them and brings them to the output
// file. Used by the sequence and the encoders.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/OutputFile.h"
#include "engine/OutputPlan.h"

namespace vrx::engine {

/// Belongs to one thread. Destruction without Finish leaves no file.
class MovieWriter {
 public:
  MovieWriter() = default;
  MovieWriter(const MovieWriter&) = delete;
  MovieWriter& operator=(const MovieWriter&) = delete;
  ~MovieWriter();

  /// Makes the temporary file and the muxer.
  Result Create(const OutputPlan& plan);
  /// Whether encoders must put their headers beside the stream rather than into it.
  static bool WantsGlobalHeader(Container container);
  /// Adds the stream of an opened encoder and gives its index.
  Result AddStream(const AVCodecContext& encoder, int& stream);
  /// The same for packets that are copied, which have times in `timeBase`. `frameRate` is 0/1 for sound. A
  /// codec tag of the container's own is kept, so it must be 0 or one that the container knows.
  Result AddStream(const AVCodecParameters& parameters, AVRational timeBase, AVRational frameRate,
                   int& stream);
  /// Writes the file's header; all streams must be there. An MP4 or QuickTime file keeps a place for its
  /// index before the pictures, so that it plays while it loads. `packets` are no fewer than those that
  /// follow.
  Result Begin(std::uint64_t packets);
  /// Takes the packet's content. Its times are in `timeBase`.
  Result Write(AVPacket& packet, int stream, AVRational timeBase);
  /// Writes the trailer and puts the movie in its place.
  Result Finish();
  /// Packets written to a stream so far; for a picture stream its frames.
  std::uint64_t GetPacketCount(int stream) const { return m_packets[static_cast<std::size_t>(stream)]; }
  /// Length of the finished movie.
  std::uint64_t GetBytes() const { return m_bytes; }
  /// Gives up and removes the temporary file.
  void Abandon();

 private:
  std::int64_t ReservedIndexBytes(std::uint64_t packets) const;
  Result Fail(const char* action, int error);
  void FreeMuxer();

  OutputFile m_file;
  AVFormatContext* m_muxer = nullptr;
  AVIOContext* m_io = nullptr;
  std::string m_path;
  Container m_container = Container::Mp4;
  std::size_t m_timeZoneBytes = 0;
  std::vector<std::uint64_t> m_packets;  // of each stream
  std::uint64_t m_bytes = 0;
};

}  // namespace vrx::engine
