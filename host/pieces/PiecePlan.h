// The pieces of a movie that are rendered apart from each other, and the commands that render and join them.
// `vrx plan` prints these commands, and `vrx render --jobs` runs them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/EncodingArguments.h"
#include "host/EngineSpans.h"
#include "host/ProjectSource.h"
#include "host/TimeRange.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

/// Paths are absolute, in the system's bytes.
struct PiecePlan {
  std::string project;
  std::string movie;
  std::vector<std::string> options;  // of the command line, that each piece gets
  std::string id;
  std::vector<FrameRange> ranges;  // of the pieces from 1 on
  bool hasSound = false;           // then it is piece 0
  bool isSoundPcm = false;
};

struct PlannedPiece {
  std::uint32_t piece = 0;
  FrameRange range;  // of the picture; empty for the sound
  std::string output;
  std::vector<std::string> command;  // program and arguments
};

/// The options of the command line that every piece gets.
std::vector<std::string> PieceOptions(const EncodingArguments& encoding, bool allowMissing);

/// `options` are those. `count` is at least 1; the plan has fewer pieces where the movie has not so
/// many places to cut. Without spans every frame is taken as encoded.
PiecePlan MakePiecePlan(const ProjectSource& project, const check::ProjectReport& report,
                        const EngineSpans& spans, const std::vector<std::string>& options,
                        std::uint32_t count);

/// Whether a plan of `count` pieces was made with these options of the project as it is now.
bool IsPieceOf(const std::string& plan, const check::ProjectReport& report,
               const std::vector<std::string>& options, std::uint32_t count);

/// The spans of the picture, or one that stands for them where the engine tells none.
std::vector<EngineSpan> PictureSpans(const check::ProjectReport& report, const EngineSpans& spans);

/// "/a/tour" for "/a/tour.mp4".
std::string StemOf(const std::string& movie);

/// The sound first. The files are STEM.piece-K.mp4, .mov for PCM.
std::vector<PlannedPiece> ListPieces(const PiecePlan& plan, const std::string& stem);
std::vector<std::string> JoinCommandOf(const PiecePlan& plan, const std::vector<PlannedPiece>& pieces);

}  // namespace vrx::host
