// A file that holds a piece of a movie, as the join needs to know it: what its label says, and its pictures
// or its sound, ready to be copied.
#pragma once

#include <string>
#include <vector>

#include "engine/CopyPlan.h"
#include "engine/EngineResult.h"
#include "engine/OutputPlan.h"
#include "engine/PieceLabel.h"
#include "engine/SmartPlan.h"
#include "engine/StopSignal.h"

namespace vrx::engine {

struct Piece {
  std::string path;  // native bytes
  PieceLabel label;
  std::string timeZone;  // as OutputPlan has it
  VideoCodec codec{};    // of pictures
  CopiedSource source;   // of pictures
  CopyRun run;           // all pictures; frames are those of the piece
  AudioPlan sound{};     // of piece 0
};

/// Reads all of a file with pictures. The failures of SourceFile::Open; kUnusableSettings for a file that is
/// no piece of a movie, and kSourceUnreadable for one that has not all frames of its label. Each with a
/// logged line that names the file.
Result ReadPiece(const std::string& path, const StopSignal& stop, Piece& piece);

}  // namespace vrx::engine
