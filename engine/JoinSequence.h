// The job that copies the pieces of a movie together, without decoding them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/MovieWriter.h"
#include "engine/OutputPlan.h"
#include "engine/PictureTrack.h"
#include "engine/Piece.h"
#include "engine/RenderSequence.h"
#include "engine/SmartPlan.h"
#include "engine/SoundTrack.h"
#include "vrx/VRXEngineExtras.h"

namespace vrx::engine {

class JoinSequence final : public RenderSequence {
 public:
  /// Reads the pieces and makes the temporary file; a failure leaves none. The failures of ReadPiece and
  /// ArrangePieces; kUnusableSettings, with a logged line, for an output that is one of the pieces or cannot
  /// hold them.
  static Result Create(const VRXPieces& pieces, std::unique_ptr<RenderSequence>& sequence);

 private:
  JoinSequence() = default;
  Result Prepare(const VRXPieces& pieces);
  Result ReadPieces(const std::vector<std::string>& paths);
  Result MakePlan(const std::vector<Piece>& pieces);
  void AddSpan(const Piece& piece, std::size_t number);
  Result OpenSound(const Piece& piece);
  Result OpenOutput();
  Result RenderNext() override;
  Result Finish() override;
  void GiveUp() override { m_writer.Abandon(); }

  OutputPlan m_output{};
  SmartPlan m_plan;  // a span for each piece
  std::size_t m_span = 0;
  MovieWriter m_writer;
  PictureTrack m_pictures;
  std::unique_ptr<SoundTrack> m_sound;  // null for a silent movie
};

}  // namespace vrx::engine
