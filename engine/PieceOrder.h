// Whether pieces make a whole movie, and in which order. Used by the join.
#pragma once

#include <vector>

#include "engine/EngineResult.h"
#include "engine/Piece.h"

namespace vrx::engine {

/// Sorts the pieces, of which there is at least one: the sound comes first. kUnusableSettings, with a logged
/// line, unless they are all pieces of one movie, each once, with pictures of one kind that follow each other
/// frame by frame.
Result ArrangePieces(std::vector<Piece>& pieces);

}  // namespace vrx::engine
