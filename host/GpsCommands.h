// The parts of `vrx gps`, each in a file of its own.
#pragma once

#include "host/CommandRow.h"

namespace vrx::host {

constexpr const char* kRolloverHelp = "Move dates that a receiver's overflowed count of weeks made too early";

/// `vrx gps import`: writes the log of a receiver into a movie's sidecar.
CommandRun AddGpsImport(CLI::App& gps);

/// `vrx gps show`: what a log holds.
CommandRun AddGpsShow(CLI::App& gps);

}  // namespace vrx::host
