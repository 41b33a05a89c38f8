// A source file on the demuxer's side: opened, its video stream found, its clock and its length known. Used
// by the file video source and by the check of a timeline's sources.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/ExactTime.h"

namespace vrx::engine {

/// Belongs to one thread.
class SourceFile {
 public:
  enum class Purpose { kCheck, kDecode };

  /// kSourceMissing, kSourceUnreadable or kSourceNotMovie with a logged line. Reading ends early when `stop`
  /// becomes true; `stop` must live as long as the file.
  static Result Open(const std::string& path, Purpose purpose, const std::atomic<bool>& stop,
                     std::unique_ptr<SourceFile>& file);
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;
  ~SourceFile();

  const std::string& path() const { return m_path; }
  AVFormatContext& container() const { return *m_container; }
  AVStream& stream() const { return *m_stream; }

  /// Where the source begins on the video stream's clock, in its ticks: with the earliest of its picture and
  /// sound streams. A picture that comes up to one frame (and 50 ms) later counts as simultaneous, for no
  /// frame may be shown twice only because the sound has a few samples of lead.
  std::int64_t OriginTicks() const;
  /// Length of one frame at the stream's average rate, in ticks; at least 1.
  std::int64_t FrameTicks() const;
  /// Length of the video stream in frames of `duration`. Reads packets where the container does not know, and
  /// moves the reading position.
  Result CountFrames(FrameDuration duration, std::int64_t& frames);

 private:
  struct Extent {
    std::int64_t packets = 0;
    std::int64_t first = AV_NOPTS_VALUE;
    std::int64_t end = AV_NOPTS_VALUE;
  };

  SourceFile(std::string path, const std::atomic<bool>& stop) : m_path(std::move(path)), m_stop(stop) {}
  Result OpenContainer();
  Result FindVideo(Purpose purpose);
  Result Fail(Result result, const std::string& cause) const;
  Extent ReadExtent();
  std::int64_t LengthFromTail();

  std::string m_path;
  const std::atomic<bool>& m_stop;
  AVFormatContext* m_container = nullptr;
  AVStream* m_stream = nullptr;
};

}  // namespace vrx::engine
