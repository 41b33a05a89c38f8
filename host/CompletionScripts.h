// Scripts that teach a shell to complete the program's commands, options and files. `vrx completion` prints
// them.
#pragma once

#include <span>
#include <string>

#include "host/CommandTree.h"

namespace vrx::host {

std::string BashCompletion(std::span<const CommandNode> nodes);
std::string ZshCompletion(std::span<const CommandNode> nodes);
std::string FishCompletion(std::span<const CommandNode> nodes);

}  // namespace vrx::host
