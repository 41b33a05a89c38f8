// A media file opened for reading: one ordinary file, and nothing that it may point to. Used wherever the
// engine reads a source.
#pragma once

#include <memory>
#include <string>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/StopSignal.h"

namespace vrx::engine {

/// Why a source is not used: its result, and for people the end of a sentence that begins with the path.
struct Refusal {
  Result result = kOk;
  std::string cause;
};

inline bool IsOk(const Refusal& refusal) { return refusal.result == kOk; }

Refusal RefuseForMemory();

/// Logs a refusal as an error about `path`, unless it is none, and gives its result.
Result Report(const std::string& path, const Refusal& refusal);

/// Belongs to one thread.
class MediaInput {
 public:
  /// kSourceMissing, kSourceUnreadable or kSourceNotMovie. Folders, devices, pipes, sockets and playlists are
  /// refused. Reading ends early when `stop` is set, which must live as long as the input.
  static Refusal Open(const std::string& path, const StopSignal& stop, std::unique_ptr<MediaInput>& input);
  MediaInput(const MediaInput&) = delete;
  MediaInput& operator=(const MediaInput&) = delete;
  ~MediaInput();

  AVFormatContext& GetDemuxer() const { return *m_demuxer; }

 private:
  explicit MediaInput(const StopSignal& stop) : m_stop(stop) {}
  Refusal OpenFile(const std::string& path);
  Refusal OpenDemuxer(const std::string& path);
  static int Read(void* input, std::uint8_t* data, int size);
  static std::int64_t Seek(void* input, std::int64_t offset, int whence);
  static int IsInterrupted(void* stop);

  const StopSignal& m_stop;
  int m_descriptor = -1;
  AVIOContext* m_io = nullptr;
  AVFormatContext* m_demuxer = nullptr;
};

}  // namespace vrx::engine
