// The working log: entries of all processes of one application run in one file a channel. Render control
// writes through it.
#pragma once

#include <cstdint>

#include "foundation/log/LogChannel.h"
#include "foundation/text/XpFormat.h"
#include "vrx/XpString.h"

namespace vrx::log {

/// Where in the source an entry comes from.
struct Origin {
  const char16_t* file;
  const char16_t* function;
  std::int32_t line;
};

/// As SfWriteLog, over packed values.
void WriteEntry(std::uint32_t channel, bool newFolder, const Origin& origin, const char16_t* format,
                std::span<const text::FormatArgument> values) noexcept;

}  // namespace vrx::log

/// Appends one entry: the time, "file->function:line__" and the formatted message on the next line. A channel
/// that does not exist does nothing. `newFolder` starts a new run folder, which all processes then use.
///
/// Never fails or throws: an entry that cannot be written is lost. Text beyond 1023 characters is cut. May be
/// called by any thread. Waits up to a second for another process that writes; after a wait that timed out,
/// later calls do not wait until that process has released the log.
template <class... Values>
void SfWriteLog(std::uint32_t channel, bool newFolder, const char16_t* format, const char16_t* file,
                const char16_t* function, std::int32_t line, const Values&... values) {
  // One more than needed, since an array cannot be empty.
  const vrx::text::FormatArgument packed[] = {vrx::text::PackArgument(values)..., {}};
  vrx::log::WriteEntry(channel, newFolder, {file, function, line}, format,
                       std::span(packed, sizeof...(values)));
}
