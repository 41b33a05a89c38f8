// The pictures of a source file by time: demultiplexes, decodes and finds the frame on display at a moment.
// Used by the frame pipeline on its decode thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/ExactTime.h"
#include "engine/FrameFitter.h"
#include "engine/SourceFile.h"

namespace vrx::engine {

/// Belongs to one thread. Rising times cost least.
class FileVideoSource {
 public:
  /// As SourceFile::Open, and kSourceNotMovie without a decoder for the picture. `stop` ends a long search
  /// early and must outlive the source.
  static Refusal Open(const std::string& path, const StopSignal& stop,
                      std::unique_ptr<FileVideoSource>& source);

  const std::string& GetPath() const { return m_path; }
  SourceFile& GetFile() { return *m_file; }
  const Orientation& GetOrientation() const { return m_orientation; }
  /// From here to the next call damage is reported once.
  void BeginClip() { m_warned = false; }
  /// The frame on display at `time`: the last one that starts no later than the tick nearest to it; before
  /// the first frame the first, after the last the last. It stays valid until the next call. kSourceNotMovie
  /// when nothing can be decoded.
  Result FrameAt(const ExactTime& time, const AVFrame*& frame);
  /// Differs from call to call of FrameAt exactly when the frame does.
  std::uint64_t GetSerial() const { return m_serial; }
  /// Frees the decoder and its pictures while the source is not needed; the next FrameAt makes a new one.
  void ReleaseDecoder();

 private:
  enum class Step { Frame, End, Stopped };

  FileVideoSource(std::string path, const StopSignal& stop) : m_path(std::move(path)), m_stop(stop) {}
  Refusal OpenFile();
  Refusal OpenDecoder();
  bool NeedsSeek(std::int64_t target) const;
  Result SeekTo(std::int64_t target);
  Result DecodeFirstPicture();
  void ForgetPictures();
  bool SeekDemuxer(std::int64_t ticks);
  Step DecodeNext(AVFrame& frame, std::int64_t& ticks);
  bool FeedDecoder();
  void ChooseSkipping(const AVPacket& packet);
  bool Accept(AVFrame& frame, std::int64_t& ticks);
  Result ReportUnlessStopped(const Refusal& refusal) const;
  bool IsMissing(std::int64_t target) const;
  void Warn(const std::string& cause);

  std::string m_path;
  const StopSignal& m_stop;
  std::unique_ptr<SourceFile> m_file;
  CodecPtr m_codec;
  PacketPtr m_packet;
  FramePtr m_current;  // on display
  FramePtr m_next;     // the one after it
  std::int64_t m_currentTicks = 0;
  std::int64_t m_nextTicks = 0;
  std::int64_t m_origin = 0;  // ticks
  std::int64_t m_frameTicks = 1;
  std::int64_t m_lastTicks = AV_NOPTS_VALUE;  // of the frame that came last from the decoder
  std::int64_t m_keyTicks = AV_NOPTS_VALUE;   // of the key packet that decoding began with
  std::int64_t m_target = 0;                  // the moment asked for, in ticks
  std::int64_t m_sentTicks = INT64_MIN;       // the latest picture that the decoder was sent
  std::int64_t m_newestWanted = INT64_MIN;    // the latest of them up to m_target
  std::uint64_t m_serial = 0;
  Orientation m_orientation;
  bool m_hasCurrent = false;
  bool m_hasNext = false;
  bool m_atBeginning = false;  // m_current is the first frame of the source
  bool m_fresh = true;         // nothing was read since the file was opened
  bool m_waitForKey = true;
  bool m_trustKeys = true;
  bool m_draining = false;
  bool m_ended = false;
  bool m_warned = false;
  bool m_wasDamaged = false;  // since the last jump
  bool m_maySkip = false;
  bool m_hasSkipped = false;  // since the last jump
};

}  // namespace vrx::engine
