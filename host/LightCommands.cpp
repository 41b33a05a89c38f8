#include "host/LightCommands.h"

#include "host/Commands.h"

namespace vrx::host {
namespace {

constexpr CommandRow kLightCommands[] = {
    {"config", "Show or change settings", AddConfig},
    {"logs", "Show the log of the current run", AddLogs},
    {"moff", "Show, check or extract the binary data beside a media file", AddMoff},
};

}  // namespace

std::span<const CommandRow> LightCommands() { return kLightCommands; }

}  // namespace vrx::host
