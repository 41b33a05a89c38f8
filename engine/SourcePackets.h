// The coded pictures of a source file, one after the other, without decoding them. Used to plan which of them
// can be copied, and to copy them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/AvPointers.h"
#include "engine/SourceFile.h"

namespace vrx::engine {

/// Belongs to one thread.
class SourcePackets {
 public:
  /// As SourceFile::Open. `stop` ends long reads early and must outlive the packets.
  static Refusal Open(const std::string& path, const StopSignal& stop,
                      std::unique_ptr<SourcePackets>& packets);

  const std::string& GetPath() const { return m_path; }
  const SourceFile& GetFile() const { return *m_file; }

  /// Goes to a place from which all pictures follow that are shown from `ticks` on, and those that they need,
  /// as far as the file's index is right. Opens the file again where it has to.
  Refusal GoTo(std::int64_t ticks);
  /// Whether the next picture is the first of the file.
  bool IsAtBeginning() const { return m_isFresh; }
  /// The next picture, valid until the next call; null at the end, or when `stop` is set.
  AVPacket* Next();

 private:
  SourcePackets(std::string path, const StopSignal& stop) : m_path(std::move(path)), m_stop(stop) {}
  Refusal OpenFile();

  std::string m_path;
  const StopSignal& m_stop;
  std::unique_ptr<SourceFile> m_file;
  PacketPtr m_packet;
  bool m_isFresh = false;
};

}  // namespace vrx::engine
