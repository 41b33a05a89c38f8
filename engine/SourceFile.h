// The video stream of a source file before decoding: its clock, its key frames and its length. Used by the
// file video source and by the check of a timeline's sources.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/ExactTime.h"
#include "engine/FrameFitter.h"
#include "engine/MediaInput.h"

namespace vrx::engine {

/// The tick of a clock in steps of `base` nearest to `time`, where the source begins at `origin`.
std::int64_t TicksAt(const ExactTime& time, AVRational base, std::int64_t origin);

/// Belongs to one thread.
class SourceFile {
 public:
  enum class Purpose { Check, Decode };

  /// As MediaInput::Open, and kSourceNotMovie for a file without a picture. `stop` must live as long as the
  /// file.
  static Refusal Open(const std::string& path, Purpose purpose, const StopSignal& stop,
                      std::unique_ptr<SourceFile>& file);

  const std::string& GetPath() const { return m_path; }
  AVFormatContext& GetDemuxer() const { return m_input->GetDemuxer(); }
  AVStream& GetStream() const { return *m_stream; }

  /// Where the source begins on the video stream's clock, in its ticks: with the earliest of its picture and
  /// sound streams. A picture that starts up to one frame (and 50 ms) after the sound counts as simultaneous:
  /// encoders start the sound a few samples early, and that must not show a frame twice.
  std::int64_t OriginTicks() const;
  /// How its pictures are turned for display.
  Orientation GetOrientation() const;
  /// Length of one frame at the stream's average rate, in ticks; at least 1.
  std::int64_t FrameTicks() const;
  /// The last key frame at or before `ticks` in the container's index; it may name the one before that near a
  /// key frame. AV_NOPTS_VALUE where the index does not cover that moment.
  std::int64_t KeyFrameBefore(std::int64_t ticks) const;
  /// Length of the source from its beginning to its picture's end, in frames of `duration`. Reads packets
  /// where the container does not know, and moves the reading position.
  Refusal CountFrames(FrameDuration duration, std::int64_t& frames);

 private:
  struct Extent {
    std::int64_t packets = 0;
    std::int64_t first = AV_NOPTS_VALUE;
    std::int64_t end = AV_NOPTS_VALUE;
  };

  SourceFile(std::string path, const StopSignal& stop) : m_path(std::move(path)), m_stop(stop) {}
  Refusal FindVideo(Purpose purpose);
  Extent ReadExtent();
  std::int64_t LengthFromTail();

  std::string m_path;
  const StopSignal& m_stop;
  std::unique_ptr<MediaInput> m_input;
  AVStream* m_stream = nullptr;
};

}  // namespace vrx::engine
