// Tells plans of pieces apart: by everything that decides what is in the movie, so that pieces of two states
// of a project are never joined.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/TimeRange.h"
#include "src/project/InputFiles.h"

namespace vrx::host {

/// What a plan was made of, as far as a single piece can find it out again.
struct PlanState {
  std::span<const project::InputFile> inputs;  // of the project
  std::vector<std::string> options;            // of the command line
  std::uint32_t pieceCount = 0;
  std::string version;  // of the program
};

/// Hexadecimal digits. Documents count by their bytes; other files by their path, size and time of writing.
std::string StateDigest(const PlanState& state);

/// The digest of the state, and digits for the cuts after it.
std::string PlanId(const PlanState& state, std::span<const FrameRange> ranges);

/// Whether the plan was made of this state.
bool IsPlanOf(const std::string& plan, const PlanState& state);

}  // namespace vrx::host
