#include "host/LightCommands.h"

#include "host/Commands.h"

namespace vrx::host {
namespace {

constexpr CommandRow kLightCommands[] = {
    {"config", "Show or change settings", AddConfig},
    {"contents", "Show which files of a folder belong together", AddContents},
    {"edit", "Change dates, rotation, rating or position in pictures", AddEdit},
    {"info", "Show format, sizes and profile of pictures", AddInfo},
    {"logs", "Show the log of the current run", AddLogs},
    {"moff", "Show, check or extract the binary data beside a media file", AddMoff},
    {"mpo", "Show or extract the pictures of a multi-picture file", AddMpo},
    {"probe", "Show what files are, whatever they are called", AddProbe},
    {"raw", "Copy the preview of a RAW file, or replace its position", AddRaw},
    {"tags", "Show the tags of pictures", AddTags},
    {"thumb", "Write small pictures of pictures", AddThumb},
};

}  // namespace

std::span<const CommandRow> LightCommands() { return kLightCommands; }

}  // namespace vrx::host
