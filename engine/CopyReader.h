// Takes the packets of copied spans out of their sources. Used by the picture track.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "engine/SmartPlan.h"
#include "engine/SourcePackets.h"
#include "engine/StopSignal.h"

namespace vrx::engine {

/// Belongs to one thread.
class CopyReader {
 public:
  /// `stop` must outlive the reader.
  explicit CopyReader(const StopSignal& stop) : m_stop(stop) {}

  /// The next packet of `span`, without what a container says beside it; a call for another span begins that
  /// one. `number` is the frame that the packet holds. The packet stays valid until the next call.
  /// kSourceUnreadable, with a logged line, when the file is no longer what it was when the plan was made.
  Result Next(const PictureSpan& span, const CopiedSource& source, AVPacket*& packet, std::int64_t& number);

 private:
  Result GoTo(const PictureSpan& span, const CopiedSource& source);
  Result Fail(const CopiedSource& source) const;

  const StopSignal& m_stop;
  std::unique_ptr<SourcePackets> m_packets;
  const PictureSpan* m_span = nullptr;  // at work
  std::size_t m_done = 0;               // of its pictures
};

}  // namespace vrx::engine
