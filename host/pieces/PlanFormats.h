// How `vrx plan` prints the commands of a plan: for a shell, a makefile, a batch system, or as JSON.
#pragma once

#include <string>
#include <vector>

#include "host/Console.h"
#include "host/pieces/PiecePlan.h"

namespace vrx::host {

enum class PlanFormat { Shell, JsonText, Make, Sbatch };

/// The plan as text that ends with a line end; empty, with the cause, where a name cannot be written in it.
std::string PlanDocument(const PiecePlan& plan, PlanFormat format, std::string& cause);

}  // namespace vrx::host
