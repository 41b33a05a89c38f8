// The parts of `vrx gps`, each in a file of its own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/CommandRow.h"

namespace vrx::host {

constexpr const char* kRolloverHelp = "Move dates that a receiver's overflowed count of weeks made too early";

/// Where the options of a log's alignment are stored.
struct AlignmentArguments {
  std::int64_t& offsetSeconds;
  std::optional<int>& zoneMinutes;
  std::string& start;
  bool& correctWeekRollover;
};

/// --offset, --zone, --start and --fix-week-rollover, for all commands that bring a log to a movie.
void AddAlignmentOptions(CLI::App& command, const AlignmentArguments& arguments);

/// `vrx gps import`: writes the log of a receiver into a movie's sidecar.
CommandRun AddGpsImport(CLI::App& gps);

/// `vrx gps show`: what a log holds.
CommandRun AddGpsShow(CLI::App& gps);

}  // namespace vrx::host
