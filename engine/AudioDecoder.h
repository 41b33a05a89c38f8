// The sound stream of one media file: opens it, seeks, and gives the decoded frames with their places on the
// file's clock. Used by AudioSource, which makes a continuous stream of them, and by AudioCopier, which takes
// the packets as they are.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/EngineResult.h"
#include "engine/MediaInput.h"

namespace vrx::engine {

/// Time 0 is the file's start time, the same as for its picture; places are samples at GetRate() from there.
/// Belongs to one thread.
class AudioDecoder {
 public:
  /// No real file has places further than this from time 0: larger timestamps are ignored.
  static constexpr std::int64_t kMaxSeconds = 1'000'000'000;
  /// Stands for a place that is not known.
  static constexpr std::int64_t kNoPlace = INT64_MIN;
  /// In Hz. Rates outside these bounds come from broken headers.
  static constexpr int kMinRate = 1000;
  static constexpr int kMaxRate = 768'000;

  /// A file that has a picture but no sound opens too; see HasSound. On failure one line in the log names the
  /// file and the cause. `stop` must live as long as the decoder; once it is set there are no more frames.
  static Result Open(const std::string& path, const StopSignal& stop, std::unique_ptr<AudioDecoder>& decoder);

  AudioDecoder(const AudioDecoder&) = delete;
  AudioDecoder& operator=(const AudioDecoder&) = delete;
  ~AudioDecoder();

  bool HasSound() const { return m_stream != nullptr; }
  int GetRate() const { return m_rate; }  // Hz; 0 without sound
  /// Of the stream, as far as the file's beginning tells. There must be sound.
  const AVCodecParameters& GetParameters() const { return *m_stream->codecpar; }
  const std::string& GetPath() const { return m_path; }

  /// The stated length of the whole file in microseconds; 0 when it is not known.
  std::int64_t GetFileMicroseconds() const;
  /// Whether the stated length and the places after a seek come from timestamps rather than from a guess by
  /// the bit rate.
  bool HasExactTimes() const;
  /// Length of one unit of the stream's timestamps in samples, rounded up; 1 when it is finer.
  int GetTickSamples() const;
  /// In samples: a timestamp that differs by no more from where the samples before it end means nothing.
  int GetJitter() const;
  /// Place of the stream's first sample.
  std::int64_t GetFirstPlace() const;

  /// Where the container ends the sound within its last packet; kNoPlace when it does not say.
  std::int64_t GetEditedEnd() const;

  /// Goes to a packet at or before `place`, if the container's index is right. False when the file cannot
  /// be read any more; then there are no more frames.
  bool Seek(std::int64_t place);
  /// Goes back to the first packet. False as above.
  bool Rewind();

  /// The next frame, valid until the next call; null at the end. `place` is kNoPlace when the frame has no
  /// usable timestamp.
  const AVFrame* Next(std::int64_t& place);
  /// The next packet in place of the frames of it, and the place of its first sample, in the same way. Only
  /// from the start of the file on, and where no frame was taken.
  const AVPacket* NextPacket(std::int64_t& place);

  /// Whether anything was damaged since the last call.
  bool TakeDamage();

 private:
  AudioDecoder(std::string path, const StopSignal& stop) : m_path(std::move(path)), m_stop(stop) {}

  Refusal OpenFile();
  Refusal OpenCodec();
  void Close();
  std::int64_t PlaceOf(std::int64_t timestamp) const;
  bool ReadPacket();
  bool Restart();

  std::string m_path;
  const StopSignal& m_stop;
  std::unique_ptr<MediaInput> m_input;
  AVFormatContext* m_demuxer = nullptr;  // the input's
  AVCodecContext* m_codec = nullptr;
  AVStream* m_stream = nullptr;  // the demuxer's
  AVPacket* m_packet = nullptr;
  AVFrame* m_frame = nullptr;
  int m_rate = 0;
  bool m_untouched = true;  // no packet read since the file was opened
  bool m_isFed = false;     // the codec has had packets
  bool m_draining = false;
  bool m_failed = false;
  bool m_damaged = false;
};

}  // namespace vrx::engine
