// Where overlays go that are written alone: a movie with transparency, or a picture a frame. Used by the
// overlay sequence.
#pragma once

#include <cstdint>

#include "engine/EngineResult.h"

namespace vrx::engine {

/// Belongs to one thread. Destruction leaves nothing unfinished.
class OverlayOutput {
 public:
  OverlayOutput() = default;
  OverlayOutput(const OverlayOutput&) = delete;
  OverlayOutput& operator=(const OverlayOutput&) = delete;
  virtual ~OverlayOutput() = default;

  /// What the frames show from now on: top-down rows of the movie's size, blue first, straight alpha.
  virtual Result SetPicture(const std::uint32_t* drawing) = 0;
  /// Writes frame `number` of the movie; numbers rise one by one from the first of the render.
  virtual Result Write(std::int64_t number) = 0;
  virtual Result Finish() = 0;
  /// Gives up and removes what is unfinished.
  virtual void Abandon() = 0;
  /// Of all that was written, once it is finished.
  virtual std::uint64_t GetBytes() const = 0;
};

}  // namespace vrx::engine
